// Appenders that a program removes and deletes while other threads use them, and messages whose
// rendering is code of the program: neither may crash or hang what logs.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "appenders/LOGAsyncAppender.h"
#include "appenders/LOGBoundedFIFO.h"
#include "appenders/LOGDispatcher.h"
#include "appenders/LOGErrorHandler.h"
#include "appenders/LOGFileAppender.h"
#include "core/LOGCallScope.h"
#include "core/LOGHierarchy.h"
#include "core/LOGLogger.h"
#include "core/LOGManager.h"
#include "core/LOGRootLogger.h"
#include "layouts/LOGPatternLayout.h"
#include "platform/ZEBThreadGuard.h"
#include "rendering/LOGObjectRenderer.h"
#include "rendering/LOGRendererMap.h"
#include "support/CapturingAppender.h"
#include "support/TestEvent.h"
#include "support/Threads.h"
#include "support/Workplace.h"

namespace {

using Messages = std::vector<std::string>;
using std::chrono::milliseconds;

/// How long tests run whose threads race: longer where the environment says so.
milliseconds duration() {
  const char* const seconds = std::getenv("LOG4ZEB_TEST_SECONDS");
  return seconds == nullptr ? milliseconds(300) : std::chrono::seconds(std::atoi(seconds));
}

/// Runs each operation again and again, on a thread of its own, for the time of duration().
void repeatBesideEachOther(const std::vector<std::function<void()>>& operations) {
  const Repeating repeating(operations);
  std::this_thread::sleep_for(duration());
}

/// An appender of the program that is full of holes once it is deleted.
class OwnAppender : public LOGAppenderSkeleton {
 public:
  explicit OwnAppender(const I18NString& name) { setName(name); }
  ~OwnAppender() override { m_text.assign(1000, 'x'); }
  bool isClosed() const { return m_closed == 1; }
  void append(LOGLoggingEvent*) override { m_text += m_text.size() < 100 ? "x" : ""; }
  void close() override {
    m_text = "closed";
    m_closed = 1;
  }

 private:
  std::string m_text;
};

class RemovedAppenders : public testing::Test {
 protected:
  RemovedAppenders() {
    for (LOGLogger* const logger : {shop, other}) {
      logger->setAdditivity(0);
    }
  }
  ~RemovedAppenders() override {
    shop->removeAllAppenders();
    other->removeAllAppenders();
  }

  /// Adds one, logs, removes it and deletes it at once.
  void useOnce(LOGLogger* logger) const {
    auto appender = std::make_unique<OwnAppender>("own");
    logger->addAppender(appender.get());
    logger->info("x");
    logger->removeAppender(appender.get());
  }

  Workplace workplace;
  LOGLogger* shop = LOGManager::getLogger("shop");
  LOGLogger* other = LOGManager::getLogger("other");
};

}  // namespace

TEST_F(RemovedAppenders, AreAllClosedAndGoneThoughOneCannotBeClosed) {
  struct Refusing : OwnAppender {
    using OwnAppender::OwnAppender;
    void close() override { throw std::runtime_error("refused"); }
  };
  Refusing refusing("refusing");
  OwnAppender beside("beside");
  OwnAppender elsewhere("elsewhere");
  LOGAppenderSkeleton* const appenders[] = {&refusing, &beside, &elsewhere};
  for (LOGAppenderSkeleton* const appender : appenders) {
    (appender == &elsewhere ? other : shop)->addAppender(appender);
  }
  EXPECT_THROW(LOGLogger::shutdown(), std::runtime_error);
  for (LOGAppenderSkeleton* const appender : appenders) {
    EXPECT_EQ(shop->isAttached(appender) + other->isAttached(appender), 0);
  }
  EXPECT_TRUE(beside.isClosed() && elsewhere.isClosed());
}

TEST_F(RemovedAppenders, AreTouchedNeitherByIsAttachedNorByAShutdown) {
  OwnAppender asked("asked");
  repeatBesideEachOther({[&] { EXPECT_EQ(shop->isAttached(&asked), 0); }, [&] { useOnce(shop); }});
  repeatBesideEachOther({[] { LOGManager::shutdown(); }, [&] { useOnce(shop); },
                         [&] {
                           OwnAppender behind("behind");
                           LOGAsyncAppender async;
                           async.setName("async");
                           async.addAppender(&behind);
                           other->addAppender(&async);
                           other->info("x");
                           other->removeAppender("async");
                           async.removeAllAppenders();
                         },
                         [] { LOGManager::resetConfiguration(); }});
}

TEST_F(RemovedAppenders, AreNotTouchedByADelivery) {
  LOGAsyncAppender async;
  shop->addAppender(&async);
  OwnAppender asked("asked");
  repeatBesideEachOther({[&] { shop->info("x"); }, [&] { EXPECT_EQ(async.isAttached(&asked), 0); },
                         [&] {
                           OwnAppender own("own");
                           async.addAppender(&own);
                           std::this_thread::sleep_for(std::chrono::microseconds(100));
                           async.removeAppender(&own);
                         },
                         [&] {
                           auto named = std::make_unique<OwnAppender>("named");
                           async.addAppender(named.get());
                           async.removeAppender("named");
                         }});
  shop->removeAllAppenders();
}

TEST_F(RemovedAppenders, DoNotWaitForTheFlushOfOthersOrForTheirOwnDelivery) {
  CapturingAppender slow("slow");
  OwnAppender plain("plain");
  LOGAsyncAppender async;
  Gate delivery;
  slow.onAppend = [&](LOGLoggingEvent*) {
    delivery.pass();
    async.removeAppender(&slow);  // in a delivery: without waiting for it
  };
  async.addAppender(&slow);
  shop->addAppender(&async);
  shop->addAppender(&plain);
  shop->info("x");
  ASSERT_TRUE(delivery.isReached());
  Threads others;
  others.add([] { LOGManager::shutdown(); });
  std::this_thread::sleep_for(milliseconds(50));
  shop->removeAppender(&plain);  // while the shutdown flushes
  std::atomic<bool> isRemoved{false};
  others.add([&] {
    async.removeAppender(&slow);  // from outside: waits for the delivery
    isRemoved = true;
  });
  std::this_thread::sleep_for(milliseconds(50));
  EXPECT_FALSE(isRemoved);
  delivery.open();
  others.join();
}

TEST_F(RemovedAppenders, MayRemoveThemselvesFromAQueueThatIsBeingEmptied) {
  struct LockingAppender : CapturingAppender {
    void close() override {
      isClosing = true;
      const ZEBThreadGuard guard(getCriticalSection());
      CapturingAppender::close();
    }
    std::atomic<bool> isClosing{false};
  } own;
  LOGAsyncAppender async;
  std::atomic<bool> isDelivering{false};
  own.onAppend = [&](LOGLoggingEvent*) {
    isDelivering = true;
    EXPECT_TRUE(eventually([&] { return own.isClosing.load(); }));
    async.removeAppender(&own);
  };
  async.addAppender(&own);
  shop->addAppender(&async);
  shop->info("x");
  EXPECT_TRUE(eventually([&] { return isDelivering.load(); }));
  async.removeAllAppenders();
  EXPECT_EQ(own.closings, 1);
  EXPECT_EQ(async.isAttached(&own), 0);
  shop->removeAllAppenders();
}

TEST_F(RemovedAppenders, AreComparedWithoutWaitingForWhatTheyAreDoing) {
  CapturingAppender own("");
  CapturingAppender same("");
  CapturingAppender third("");
  for (CapturingAppender* const appender : {&same, &third}) {
    appender->setErrorHandler(new LOGErrorHandler);  // all else is equal, so that they are compared
  }
  LOGAsyncAppender async;
  Gate delivery;
  own.onAppend = [&](LOGLoggingEvent*) {
    delivery.pass();
    async.removeAppender(&own);
  };
  async.addAppender(&own);
  shop->addAppender(&async);
  shop->info("x");
  EXPECT_TRUE(delivery.isReached());
  async.addAppender(&same);
  async.addAppender(&third);
  EXPECT_EQ(async.isAttached(&third), 1) << "equal handlers make equal appenders";
  async.removeAppender(&same);
  delivery.open();
  EXPECT_EQ(async.flush(10000), 1);
  EXPECT_EQ(async.isAttached(&own) + async.isAttached(&third), 0);
  shop->removeAllAppenders();
}

TEST_F(RemovedAppenders, AreReplacedSoThatAnEventMeetsTheOneOrTheOther) {
  CapturingAppender first("first");
  CapturingAppender old("old");
  CapturingAppender live("live");
  LOGAsyncAppender async;
  const auto replace = [&](LOGLoggingEvent*) {
    const ZEBThreadGuard guard(async.getAAI()->getCriticalSection());
    async.getAAI()->replaceAppender(old, live);
  };
  first.onAppend = replace;
  old.onAppend = replace;
  async.addAppender(&first);
  async.addAppender(&old);
  shop->addAppender(&async);
  shop->info("1");  // replaced before it came to the old one
  EXPECT_EQ(async.flush(10000), 1);
  first.onAppend = nullptr;
  async.removeAppender(&live);
  async.addAppender(&old);
  shop->info("2");  // replaced while the old one has it
  EXPECT_EQ(async.flush(10000), 1);
  EXPECT_EQ(first.messages, (Messages{"1", "2"}));
  EXPECT_EQ(live.messages, Messages{"1"});
  EXPECT_EQ(old.messages, Messages{"2"});
  shop->removeAllAppenders();
}

TEST_F(RemovedAppenders, AppendingLastCountsAsAnAppender) {
  LOGRootLogger root(nullptr);
  CapturingAppender once("once");
  once.onAppend = [&](LOGLoggingEvent*) { root.removeAppender(&once); };
  root.addAppender(&once);
  LOGHierarchy hierarchy(&root);
  root.info("x");
  EXPECT_EQ(once.messages, Messages{"x"});
  EXPECT_EQ(Workplace::warnings("No appenders could be found for logger (root)."), 0);
}

namespace {

/// A message that logs to another logger while it is rendered, cloned or destroyed.
class LoggingMessage : public LOGObject {
 public:
  explicit LoggingMessage(LOGLogger& logger) : LOGObject("order"), m_logger(logger) {}
  const I18NString& toString() const override {
    m_logger.info("rendered");
    return LOGObject::toString();
  }
  LOGObject* clone() const override {
    m_logger.info("cloned");
    return new LoggingMessage(m_logger);
  }
  ~LoggingMessage() override { m_logger.info("destroyed"); }

 private:
  LOGLogger& m_logger;
};

class MessagesThatLog : public RemovedAppenders {
 protected:
  MessagesThatLog() { LOGManager::getRootLogger()->setLevel(LOGLevel::toLevel("INFO")); }
  ~MessagesThatLog() override { LOGManager::getRootLogger()->removeAllAppenders(); }

  /// One thread logs the message at `shop`, one logs text at `other`.
  void logCrosswise() {
    LoggingMessage order(*LOGManager::getLogger("db"));
    repeatBesideEachOther({[&] { shop->info(&order); }, [&] { other->info("plain"); }});
  }
};

}  // namespace

TEST_F(MessagesThatLog, DoNotHangOnALoggersAnAppendersOrALayoutsLockOrAQueue) {
  LOGPatternLayout layout("%m%n");
  LOGFileAppender file(&layout, "orders", 1);
  file.setName("file");
  LOGFileAppender second(&layout, "others", 1);
  second.setName("second");
  LOGManager::getRootLogger()->addAppender(&file);
  other->setAdditivity(1);
  shop->addAppender(&file);
  logCrosswise();
  shop->removeAppender(&file);
  shop->addAppender(&second);
  logCrosswise();
  shop->removeAppender(&second);
  LOGAsyncAppender async;
  async.addAppender(&second);
  shop->addAppender(&async);
  logCrosswise();
  shop->removeAppender(&async);
  LOGManager::getRootLogger()->removeAppender(&file);
}

TEST_F(MessagesThatLog, AreDestroyedByADispatcherThatWaitsForNothing) {
  static std::function<void()> onEnd;
  struct EndingMessage : LOGObject {
    LOGObject* clone() const override { return new EndingMessage(*this); }
    ~EndingMessage() override {
      const LOGCallScope* const call = LOGCallScope::outermost();
      if (call != nullptr && call->dispatcher() != nullptr) {
        onEnd();
      }
    }
  };
  CapturingAppender blocked;
  Gate delivery;
  blocked.onAppend = [&](LOGLoggingEvent*) { delivery.pass(); };
  LOGAsyncAppender full;
  full.setBufferSize(1);
  full.addAppender(&blocked);
  other->addAppender(&full);
  LOGAsyncAppender async;
  shop->addAppender(&async);
  std::atomic<bool> hasEnded{false};
  onEnd = [&] {
    for (int i = 0; i < 3; ++i) {
      other->info("beyond the size of the queue");
    }
    EXPECT_EQ(full.flush(10000), 0);
    async.close();
    hasEnded = true;
  };
  EndingMessage message;
  shop->info(&message);
  EXPECT_TRUE(eventually([&] { return hasEnded.load(); }));
  delivery.open();
  shop->removeAllAppenders();
  EXPECT_EQ(full.flush(10000), 1);
  other->removeAllAppenders();
  EXPECT_EQ(blocked.messages.size(), 3U);
}

TEST_F(MessagesThatLog, AreRenderedOnceAndAlwaysGiveWhatThatGave) {
  CapturingAppender first("first");
  CapturingAppender second("second");
  CapturingAppender queued("queued");
  LOGAsyncAppender async;
  async.addAppender(&queued);
  for (LOGAppenderSkeleton* const appender :
       {static_cast<LOGAppenderSkeleton*>(&first), static_cast<LOGAppenderSkeleton*>(&second),
        static_cast<LOGAppenderSkeleton*>(&async)}) {
    shop->addAppender(appender);
  }
  int renderings = 0;
  ActingMessage counted("text", [&] { ++renderings; });
  shop->info(&counted);
  EXPECT_EQ(async.flush(10000), 1);
  EXPECT_EQ(renderings, 1) << "for all appenders, also behind a queue";

  struct OddRenderer : LOGObjectRenderer {
    I18NString* doRender(LOGObject* object) override {
      if (object->toString() == "null") {
        return nullptr;
      }
      if (object->toString() == "throws") {
        throw std::runtime_error("broken");
      }
      return new I18NString(object->toString() == "empty" ? "" : "rendered");
    }
  };
  LOGRendererMap().put("Odd", new OddRenderer);
  for (const char* text : {"null", "empty", "x"}) {
    LOGObject odd(text);
    odd.instance("Odd");
    shop->info(&odd);
  }
  EXPECT_EQ(async.flush(10000), 1);
  const Messages expected{"text", "(null)", "", "rendered"};
  EXPECT_EQ(first.messages, expected);
  EXPECT_EQ(second.messages, expected);
  EXPECT_EQ(queued.messages, expected);

  LOGObject odd("throws");
  odd.instance("Odd");
  shop->info(&odd);
  EXPECT_EQ(async.flush(10000), 1);
  EXPECT_EQ(Workplace::errors("LOGAppenderSkeleton::doAppend -- ZEB Exception occured"), 3)
      << "each appender meets what rendering threw";
  TestEvent own("shop", "INFO", &counted);
  first.doAppend(&own);
  second.doAppend(&own);
  EXPECT_EQ(renderings, 3) << "an event that the program makes is rendered by each";
  LOGRendererMap().clear();
  shop->removeAllAppenders();
}

TEST(ADispatcherOfAProgram, DeliversWhatIsQueuedWhenItIsClosedAndLeavesTheQueueToTheNext) {
  Workplace workplace;
  CapturingAppender capture;
  LOGAsyncAppender container;
  container.addAppender(&capture);
  LOGBoundedFIFO queue(5);
  for (int i = 0; i < 5; ++i) {
    queue.put(new TestEvent("own", "INFO", std::to_string(i)));
  }
  queue.resize(2);
  {
    LOGDispatcher dispatcher(&queue, &container);
    dispatcher.close();
    dispatcher.start();
    dispatcher.join();
  }
  EXPECT_EQ(capture.messages, (Messages{"0", "1", "2", "3", "4"}));
  LOGDispatcher second(&queue, &container);
  second.start();
  queue.put(new TestEvent("own", "INFO", "5"));
  second.close();
  second.join();
  EXPECT_EQ(capture.messages.size(), 6U);
}

#ifdef __SANITIZE_THREAD__
TEST(TheThreadSanitizer, SeesLocksThatAreTakenInOppositeOrders) {
  // The process in which it does, and fails, begins anew, with options of its own.
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  setenv("TSAN_OPTIONS", "exitcode=66", 1);
  EXPECT_EXIT(
      {
        ZEBThreadCriticalSection first;
        ZEBThreadCriticalSection second;
        const auto takeBoth = [](ZEBThreadCriticalSection& one, ZEBThreadCriticalSection& other) {
          const ZEBThreadGuard outer(one);
          const ZEBThreadGuard inner(other);
        };
        takeBoth(first, second);
        takeBoth(second, first);
        std::exit(0);
      },
      testing::ExitedWithCode(66), "lock-order-inversion");
}
#endif
