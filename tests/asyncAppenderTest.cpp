// The asynchronous appender: its queue, its dispatcher, and how it ends.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <typeinfo>
#include <vector>

#include "appenders/LOGAsyncAppender.h"
#include "appenders/LOGBoundedFIFO.h"
#include "appenders/LOGFileAppender.h"
#include "core/LOGHierarchy.h"
#include "core/LOGLogLog.h"
#include "core/LOGLogger.h"
#include "core/LOGManager.h"
#include "core/LOGMutex.h"
#include "core/LOGNDC.h"
#include "core/LOGRootLogger.h"
#include "filters/LOGFilter.h"
#include "layouts/LOGPatternLayout.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBThreadGuard.h"
#include "support/CapturingAppender.h"
#include "support/TestEvent.h"
#include "support/Threads.h"
#include "support/Workplace.h"

namespace {

using Messages = std::vector<std::string>;
using std::chrono::milliseconds;

class AsyncAppenderTest : public testing::Test {
 protected:
  AsyncAppenderTest() {
    async.setName("async");
    logger->setAdditivity(0);
    logger->addAppender(&async);
  }
  ~AsyncAppenderTest() override { logger->removeAllAppenders(); }

  static std::ptrdiff_t waitings() {
    return Workplace::debugs("Waiting for free space in buffer, ");
  }

  Workplace workplace;
  LOGLogger* logger = LOGManager::getLogger("async");
  CapturingAppender capture;
  LOGAsyncAppender async;
};

}  // namespace

TEST_F(AsyncAppenderTest, PassesEventsOnWithTheContextOfTheThreadThatLogs) {
  async.addAppender(&capture);
  async.addAppender(&capture);
  std::string context;
  std::string thread;
  capture.onAppend = [&](LOGLoggingEvent* event) {
    context = event->getNDC().toStdString();
    thread = event->getThreadName().toStdString();
  };
  LOGNDC::push("request 7");
  logger->info("1");
  logger->info(static_cast<LOGObject*>(nullptr));
  EXPECT_EQ(async.flush(10000), 1);
  LOGNDC::remove();
  EXPECT_EQ(capture.messages, (Messages{"1", "(null)"}));
  EXPECT_EQ(context, "request 7");
  LOGLoggingEvent here("fqn", logger, nullptr, nullptr);
  EXPECT_EQ(thread, here.getThreadName().toStdString());
}

TEST_F(AsyncAppenderTest, MakesCallersWaitForSpaceAndResizesMeanwhile) {
  async.addAppender(&capture);
  async.setBufferSize(1);
  std::atomic<std::size_t> logged{0};
  const auto log = [&] {
    logger->info("x");
    ++logged;
  };
  Repeating callers({log, log});
  EXPECT_TRUE(eventually([] {
    return waitings() > 0 && Workplace::debugs("Notifying AsyncAppender about freed space.") > 0;
  }));
  for (const int size : {4, 128, 2, 1, 16}) {
    async.setBufferSize(size);
    EXPECT_EQ(async.getBufferSize(), size);
  }
  callers.stop();
  EXPECT_EQ(async.flush(3600 * 1000), 1);
  EXPECT_EQ(capture.messages.size(), logged);
}

TEST_F(AsyncAppenderTest, LetsNobodyWaitUnderALockOfTheProgram) {
  Gate gate;
  capture.onAppend = [&](LOGLoggingEvent*) { gate.pass(); };
  async.addAppender(&capture);
  async.setBufferSize(1);
  logger->info("0");
  ASSERT_TRUE(gate.isReached());
  {
    const LOGMutex lock;
    const ZEBThreadGuard guard(lock);
    for (const char* const message : {"1", "2", "3"}) {
      logger->info(message);
    }
  }
  EXPECT_EQ(capture.messages, Messages{"0"}) << "its delivery goes on only now";
  gate.open();
  EXPECT_EQ(async.flush(10000), 1);
  EXPECT_EQ(capture.messages, (Messages{"0", "1", "2", "3"}));
}

TEST_F(AsyncAppenderTest, WakesItsThreadForAnEventAfterARest) {
  std::atomic<int> delivered{0};
  capture.onAppend = [&](LOGLoggingEvent*) { ++delivered; };
  async.addAppender(&capture);
  logger->info("x");
  std::this_thread::sleep_for(milliseconds(100));  // longer than it looks for events by itself
  logger->info("x");
  EXPECT_TRUE(eventually([&] { return delivered == 2; }));
}

TEST_F(AsyncAppenderTest, HandsOverWhatItHeldBackInOrderAndHoldsBackNothingLoggedFromWithin) {
  LOGPatternLayout layout("%m%n");
  LOGFileAppender file(&layout, "delivered", 1);
  LOGFileAppender other(&layout, "other", 1);
  LOGLogger* const within = LOGManager::getLogger("within");
  within->setAdditivity(0);
  within->addAppender(&other);
  int missing = 0;
  int logged = 0;
  capture.onAppend = [&](LOGLoggingEvent*) {
    ++logged;
    within->info("y");
    missing += Workplace::lines("other").size() == static_cast<std::size_t>(logged) ? 0 : 1;
  };
  async.addAppender(&file);
  async.addAppender(&capture);
  std::vector<std::string> expected;
  for (int i = 0; i < 500; ++i) {
    expected.push_back(std::to_string(i));
    logger->info(std::to_string(i));
  }
  EXPECT_EQ(async.flush(10000), 1);
  EXPECT_EQ(Workplace::lines("delivered"), expected);
  EXPECT_EQ(missing, 0) << "a call that has returned has written its line";
  within->removeAllAppenders();
  logger->removeAllAppenders();
}

TEST_F(AsyncAppenderTest, HandsOverWhatItHeldBackBeforeAnotherAppenderIsAsked) {
  // In the middle of a delivery another appender comes before the file's, and looks at the file.
  struct Attaching : LOGFilter {
    int decide(LOGLoggingEvent*) override {
      if (++asked % 6 == 5) {
        async->addAppender(looking);
        async->removeAppender(file);
        async->addAppender(file);
      }
      return m_NEUTRAL;
    }
    LOGAsyncAppender* async = nullptr;
    LOGAppenderSkeleton* looking = nullptr;
    LOGAppenderSkeleton* file = nullptr;
    int asked = 0;
  };
  LOGPatternLayout layout("%m%n");
  LOGFileAppender file(&layout, "delivered", 1);
  Attaching filter;
  filter.async = &async;
  filter.looking = &capture;
  filter.file = &file;
  file.addFilter(&filter);
  int missing = 0;
  capture.onAppend = [&](LOGLoggingEvent*) {
    missing +=
        Workplace::lines("delivered").size() == static_cast<std::size_t>(filter.asked) ? 0 : 1;
    async.removeAppender(&capture);
  };
  async.addAppender(&file);
  for (int i = 0; i < 120; ++i) {
    logger->info("x");
  }
  EXPECT_EQ(async.flush(10000), 1);
  EXPECT_EQ(capture.messages.size(), 20U);
  EXPECT_EQ(missing, 0);
  logger->removeAllAppenders();
}

TEST_F(AsyncAppenderTest, TakesFromAFullQueueWhatIsLoggedFromWithin) {
  LOGAsyncAppender next;
  next.setName("next");
  capture.onAppend = [&](LOGLoggingEvent*) {
    if (capture.messages.back() == "x") {
      logger->info("y");  // takes the lock that a thread waiting for space holds
    }
  };
  async.setBufferSize(2);
  next.setBufferSize(2);
  async.addAppender(&next);
  next.addAppender(&capture);
  constexpr int THREADS = 3;
  constexpr int EVENTS = 150;
  Threads(THREADS, [this](int) {
    for (int i = 0; i < EVENTS; ++i) {
      logger->info("x");
    }
  }).join();
  for (LOGAsyncAppender* const flushed : {&async, &next, &async, &next}) {
    EXPECT_EQ(flushed->flush(20000), 1);
  }
  EXPECT_EQ(capture.messages.size(), 2U * THREADS * EVENTS);
  async.close();
  next.close();
}

TEST_F(AsyncAppenderTest, ResizesDuringADeliveryAndTakesACapacityBelowOneAsOne) {
  Gate delivery;
  capture.onAppend = [&](LOGLoggingEvent*) { delivery.pass(); };
  async.addAppender(&capture);
  logger->info("x");
  async.setBufferSize(0);
  delivery.open();
  for (int i = 0; i < 100; ++i) {
    logger->info("x");
  }
  EXPECT_EQ(async.flush(10000), 1);
  EXPECT_EQ(capture.messages.size(), 101U);
}

TEST_F(AsyncAppenderTest, KeepsTheOrderOfCallersThatWaitAndFlushesThemToo) {
  Gate delivery;
  capture.onAppend = [&](LOGLoggingEvent*) { delivery.pass(); };
  async.setBufferSize(1);
  async.addAppender(&capture);
  const Messages expected{"0", "1", "2", "3", "4"};
  std::atomic<int> returned{0};
  Threads callers;
  for (int i = 0; i < 5; ++i) {
    callers.add([&, i] {
      logger->info(expected[i]);
      ++returned;
    });
    // The first is being delivered, the second has room, the others wait.
    EXPECT_TRUE(eventually(
        [&] { return i < 2 ? returned == i + 1 && delivery.isReached() : waitings() == i - 1; }));
  }
  EXPECT_EQ(returned, 2);
  callers.add([&] {
    EXPECT_EQ(async.flush(10000), 1);
    EXPECT_EQ(capture.messages, expected);
  });
  delivery.open();
}

TEST_F(AsyncAppenderTest, LetsCallersGoOnThatHaveRoomBeforeADelivery) {
  constexpr int ROUNDS = 30;
  constexpr int CALLERS = 3;
  std::atomic<bool> mayBegin{false};
  std::atomic<int> taken{0};
  std::atomic<int> gone{0};
  capture.onAppend = [&](LOGLoggingEvent*) {
    if (taken++ == 0) {
      EXPECT_TRUE(eventually([&] { return mayBegin.load(); }));
    } else {
      // Of the size, one, there is room for as many callers as events were taken out since.
      // Not only when they look again by themselves, to report that they wait.
      EXPECT_TRUE(eventually([&] { return gone >= std::min(taken - 1, CALLERS); },
                             std::chrono::seconds(5)));
    }
  };
  async.setBufferSize(1);
  async.addAppender(&capture);
  for (int round = 1; round <= ROUNDS; ++round) {
    taken = gone = 0;
    mayBegin = false;
    logger->info("first");
    EXPECT_TRUE(eventually([&] { return taken == 1; }));
    logger->info("second");
    Threads callers(CALLERS, [&](int) {
      logger->info("waited");
      ++gone;
    });
    EXPECT_TRUE(eventually([&] { return waitings() == CALLERS * round; }));
    mayBegin = true;
    EXPECT_EQ(async.flush(60 * 1000), 1);
    callers.join();
    ASSERT_EQ(waitings(), CALLERS * round) << "each has waited once";
  }
}

TEST_F(AsyncAppenderTest, LetsWaitingCallersGoWhenClosedAndRefusesLaterEvents) {
  constexpr int CALLERS = 4;
  std::atomic<bool> stop{false};
  std::atomic<bool> isDelivering{false};
  std::atomic<int> gone{0};
  capture.onAppend = [&](LOGLoggingEvent*) {
    isDelivering = true;
    EXPECT_TRUE(eventually([&] { return gone == CALLERS; })) << "they do not wait for this";
  };
  async.setBufferSize(1);
  async.addAppender(&capture);
  logger->info("delivered");
  ASSERT_TRUE(eventually([&] { return isDelivering.load(); }));
  Threads callers(CALLERS, [&](int) {
    while (!stop) {
      logger->info("x");
    }
    ++gone;
  });
  EXPECT_TRUE(eventually([] { return waitings() == CALLERS; }));
  EXPECT_EQ(logger->getAppender("async"), &async) << "the logger's lock is free";
  stop = true;
  async.close();
  EXPECT_EQ(capture.messages, Messages{"delivered"});
  callers.join();
  EXPECT_GT(Workplace::warnings("AsyncAppender interrupted."), 0);
  logger->info("refused");
  async.close();
  EXPECT_EQ(capture.messages.size(), 1U);
  EXPECT_EQ(capture.closings, 0);
  EXPECT_EQ(Workplace::errors("Attempted to append to closed appender named [async]."), 1);
  EXPECT_THROW(async.setBufferSize(1), ZEBAssertError);
}

TEST_F(AsyncAppenderTest, DropsWhatIsQueuedWhenClosedBeforeItEverStarted) {
  LOGAsyncAppender never;
  never.close();
  never.activateOptions();
  EXPECT_EQ(never.getBufferSize(), 0);
  EXPECT_EQ(never.flush(1000), 1);
}

TEST_F(AsyncAppenderTest, TakesMessagesThatLogWhileTheyAreCloned) {
  class LoggingMessage : public LOGObject {
   public:
    explicit LoggingMessage(LOGLogger& logger) : LOGObject("outer"), m_logger(logger) {}
    LOGObject* clone() const override {
      m_logger.info("inner");
      return new LoggingMessage(*this);
    }

   private:
    LOGLogger& m_logger;
  };
  async.addAppender(&capture);
  LoggingMessage message(*logger);
  logger->info(&message);
  EXPECT_EQ(async.flush(10000), 1);
  EXPECT_EQ(capture.messages, (Messages{"inner", "outer"})) << "cloned once, for event and queue";
}

TEST_F(AsyncAppenderTest, SurvivesWhatAttachedAppendersThrowAndEvenTheirClosingIt) {
  async.addAppender(&capture);
  int deliveries = 0;
  capture.onAppend = [&](LOGLoggingEvent*) {
    if (++deliveries == 1) {
      throw std::runtime_error("broken");
    }
    if (deliveries == 3) {
      async.close();
    }
  };
  for (int i = 0; i < 3; ++i) {
    logger->info("x");
    ASSERT_TRUE(eventually([&] { return async.flush(1000) == 1; }));
  }
  logger->info("refused");
  EXPECT_EQ(capture.messages.size(), 3U);
  EXPECT_EQ(Workplace::errors("LOGDispatcher::run --- An unknown exception has occurred."), 1);
}

TEST_F(AsyncAppenderTest, IsClosedByItsFilterAndByTheMessageThatIsBeingRendered) {
  struct ClosingFilter : LOGFilter {
    int decide(LOGLoggingEvent*) override {
      closed->close();
      return m_NEUTRAL;
    }
    LOGAsyncAppender* closed = nullptr;
  };
  ActingMessage message("closes", [this] { async.close(); });
  logger->info(&message);
  LOGAsyncAppender filtered;
  ClosingFilter filter;
  filter.closed = &filtered;
  filtered.addFilter(&filter);
  logger->addAppender(&filtered);
  logger->info("x");
  logger->info("x");
  EXPECT_EQ(async.getBufferSize() + filtered.getBufferSize(), 0);
  logger->removeAppender(&filtered);
}

TEST_F(AsyncAppenderTest, IsClosedUnderALockThatADeliveryWaitsFor) {
  Gate delivery;
  capture.onAppend = [&](LOGLoggingEvent*) {
    delivery.pass();
    logger->info("from within");
  };
  async.addAppender(&capture);
  logger->info("x");
  EXPECT_TRUE(delivery.isReached());
  logger->removeAllAppenders();  // closes it with the logger's lock, and does not wait
  delivery.open();
  async.close();  // waits for the delivery, now that it can end
  EXPECT_EQ(capture.messages, Messages{"x"});
  EXPECT_EQ(async.getBufferSize(), 0);
}

TEST_F(AsyncAppenderTest, IsClosedByADeliveryWhileItsOwnWaitsForRoomThere) {
  CapturingAppender nextCapture("next capture");
  LOGAsyncAppender next;
  next.addAppender(&nextCapture);
  LOGLogger* const nextLogger = LOGManager::getLogger("next");
  nextLogger->setAdditivity(0);
  nextLogger->addAppender(&next);
  async.setBufferSize(1);
  async.addAppender(&capture);
  std::atomic<bool> isDelivering{false};
  std::atomic<int> delivered{0};
  nextCapture.onAppend = [&](LOGLoggingEvent*) {
    isDelivering = true;
    logger->info("fills the queue");
    logger->info("waits");
  };
  capture.onAppend = [&](LOGLoggingEvent*) {
    if (delivered++ == 0) {
      nextLogger->info("y");
      EXPECT_TRUE(eventually([&] { return isDelivering.load(); }));
      next.close();
    }
  };
  logger->info("x");
  EXPECT_TRUE(eventually([&] { return delivered == 3; }));
  nextLogger->removeAllAppenders();
}

#ifndef _WIN32
TEST_F(AsyncAppenderTest, IsClosedAgainByWhatItsThreadHasLeftToItsEnd) {
  struct ClosingAtEnd {
    LOGAsyncAppender* closed = nullptr;
    ~ClosingAtEnd() {
      std::this_thread::sleep_for(milliseconds(100));  // while the first close() waits
      closed->close();
    }
  };
  std::atomic<bool> isDelivered{false};
  capture.onAppend = [&](LOGLoggingEvent*) {
    static thread_local ClosingAtEnd atEnd;
    atEnd.closed = &async;
    isDelivered = true;
  };
  async.addAppender(&capture);
  logger->info("x");
  EXPECT_TRUE(eventually([&] { return isDelivered.load(); }));
  async.close();
  EXPECT_EQ(async.getBufferSize(), 0);
}
#endif

TEST_F(AsyncAppenderTest, ForwardsItsListAndReportsWhatIsRefused) {
  async.addAppender(nullptr);
  EXPECT_EQ(Workplace::errors("LOGAsyncAppender::addAppender --- "), 1);
  async.addAppender(&capture);
  EXPECT_EQ(async.getAppender("capture"), &capture);
  EXPECT_EQ(async.isAttached(&capture), 1);
  async.removeAppender("capture");
  EXPECT_TRUE(async.getAllAppenders().atEnd());
}

TEST_F(AsyncAppenderTest, RemovesAndClosesAllAppendersThoughSomeCannotBeClosed) {
  struct Refusing : CapturingAppender {
    using CapturingAppender::CapturingAppender;
    void close() override {
      isKnownFailure ? throw ZEBAssertError("refused", "test", 1)
                     : throw std::runtime_error("refused");
    }
    bool isKnownFailure = false;
  };
  Refusing known("known");
  known.isKnownFailure = true;
  Refusing unknown("unknown");
  async.addAppender(&known);
  async.addAppender(&capture);
  async.removeAllAppenders();
  EXPECT_EQ(capture.closings, 1);
  EXPECT_TRUE(async.getAllAppenders().atEnd());
  async.addAppender(&unknown);
  async.addAppender(&known);
  async.addAppender(&capture);
  EXPECT_THROW(async.removeAllAppenders(), std::runtime_error);
  EXPECT_EQ(capture.closings, 2);
  EXPECT_TRUE(async.getAllAppenders().atEnd());
  const std::string source = "LOGAsyncAppender::removeAllAppenders --- ";
  EXPECT_EQ(Workplace::errors(source), 1);
  EXPECT_EQ(Workplace::errors(source + "An unknown exception has occurred."), 1);
}

TEST(BoundedFIFO, CountsAndRefusesWhatDoesNotFit) {
  Workplace workplace;
  const LOGBoundedFIFO bad(0);
  LOGBoundedFIFO fifo(2);
  fifo.put(new LOGLoggingEvent);
  EXPECT_EQ(fifo.wasEmpty(), 1);
  fifo.put(new LOGLoggingEvent);
  EXPECT_EQ(fifo.isFull(), 1);
  LOGLoggingEvent refused;
  fifo.put(&refused);
  const std::unique_ptr<LOGLoggingEvent> oldest(fifo.get());
  EXPECT_EQ(fifo.wasFull(), 1);
  EXPECT_EQ(fifo.length(), 1);
  fifo.put(new LOGLoggingEvent);
  fifo.resize(1);
  const std::unique_ptr<LOGLoggingEvent> next(fifo.get());
  EXPECT_EQ(fifo.isFull(), 1) << "a shrunk queue stays full until enough has gone";
  fifo.resize(3);
  fifo.put(nullptr);
  const std::unique_ptr<LOGLoggingEvent> last(fifo.get());
  EXPECT_NE(last, nullptr);
  EXPECT_EQ(fifo.get(), nullptr);
  EXPECT_EQ(fifo.length(), 0) << "null is an event, too";
  fifo.resize(2);
  EXPECT_EQ(fifo.add(refused) + fifo.add(refused), 0U);
  EXPECT_GT(fifo.add(refused), 0U) << "who comes to a full queue has to wait";
  EXPECT_EQ(Workplace::diagnostics(),
            (Messages{"log4zeb:ERROR LOGBoundedFIFO::LOGBoundedFIFO --- The maxSize argument is "
                      "not a positive integer.",
                      "log4zeb:ERROR LOGBoundedFIFO:put --- The list of LOGEventLogger is full."}));
}

TEST(BoundedFIFO, WakesItsThreadAlsoAfterAnEventThatWasGoneWhenItLooked) {
  LOGBoundedFIFO fifo(8);
  std::atomic<int> interrupted{0};
  Threads threads(1, [&](int) {
    while (fifo.waitForEvent(interrupted)) {
      const std::unique_ptr<LOGLoggingEvent> taken(fifo.get());
    }
  });
  const LOGLoggingEvent event;
  for (int i = 0; i < 5; ++i) {
    std::this_thread::sleep_for(milliseconds(50));  // until it sleeps
    fifo.add(event);
    const std::unique_ptr<LOGLoggingEvent> gone(fifo.get());
    std::this_thread::sleep_for(milliseconds(5));
    fifo.add(event);
    EXPECT_TRUE(eventually([&] { return fifo.length() == 0; }));
  }
  interrupted = 1;
  fifo.wakeAll();
}

TEST(BoundedFIFO, GivesEventsOfEveryKindBackAsTheyWere) {
  LOGObject tagged("tagged");
  tagged.instance("Tag");
  ActingMessage ownClass("own class", [] {});
  std::vector<std::unique_ptr<LOGLoggingEvent>> events;
  LOGNDC::push("request 7");
  for (const std::string& text :
       {std::string(), std::string("ascii"), std::string("h\xC3\xA9"), std::string(32, 's'),
        std::string(33, 't'), std::string(104, 'u'), std::string(105, 'v'), std::string(900, 'x'),
        std::string(5000, 'y'), std::string("a\0b", 3)}) {
    events.push_back(std::make_unique<TestEvent>("fifo", "WARN", text));
    events.back()->getThreadName();
    events.back()->getNDC();
  }
  LOGNDC::remove();
  events.push_back(std::make_unique<TestEvent>("fifo", "INFO", &tagged));
  events.push_back(std::make_unique<TestEvent>("fifo", "INFO", &ownClass));
  events.push_back(std::make_unique<TestEvent>("fifo", "INFO", static_cast<LOGObject*>(nullptr)));
  events.push_back(std::make_unique<TestEvent>(std::string(300, 'n'), "INFO", "long name"));
  LOGBoundedFIFO fifo(1);
  // Some are taken out in between, and the queue's memory grows and is used again.
  for (int round = 0; round < 50; ++round) {
    for (std::size_t i = 0; i < events.size(); ++i) {
      fifo.add(*events[i]);
    }
    EXPECT_EQ(fifo.length(), static_cast<int>(events.size()));
    for (const auto& event : events) {
      const std::unique_ptr<LOGLoggingEvent> got(fifo.get());
      const auto messageOf = [](const LOGLoggingEvent& e) {
        const LOGObject* const message = e.getMessage();
        return message == nullptr
                   ? std::string("none")
                   : message->toString().toStdString() + " " + message->instanceOf().toStdString() +
                         " " + typeid(*message).name();
      };
      EXPECT_EQ(messageOf(*got), messageOf(*event));
      EXPECT_EQ(got->getLoggerName(), event->getLoggerName());
      EXPECT_EQ(got->getThreadName(), event->getThreadName());
      EXPECT_EQ(got->getNDC(), event->getNDC());
      EXPECT_EQ(got->getTimeStamp(), event->getTimeStamp());
      EXPECT_EQ(got->getLevel(), event->getLevel());
      EXPECT_EQ(got->getLogger(), event->getLogger());
    }
    EXPECT_EQ(fifo.length(), 0);
  }
}

TEST(AsyncShutdown, LosesNothingOfABurst) {
  Workplace workplace;
  CapturingAppender slow;
  slow.onAppend = [](LOGLoggingEvent*) {
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  };
  LOGAsyncAppender inner;
  LOGAsyncAppender outer;
  inner.setName("inner");
  inner.addAppender(&slow);
  outer.addAppender(&inner);
  LOGRootLogger root(nullptr);
  LOGHierarchy hierarchy(&root);
  root.addAppender(&inner);  // comes first, and has to be delivered last
  root.addAppender(&outer);
  for (int i = 0; i < 500; ++i) {
    root.info("x");
  }
  hierarchy.shutdown();
  EXPECT_EQ(slow.messages.size(), 1000U);
}

class AsyncThroughput : public testing::TestWithParam<int> {};

TEST_P(AsyncThroughput, DeliversEverythingInEachProducersOrder) {
  constexpr int PRODUCERS = 4;
  constexpr int EVENTS = 100000;
  Workplace workplace;
  LOGLogLog::shutdown();
  std::filesystem::remove("../configuration/logdebug.ini");  // the waiting would be told too often
  LOGAsyncAppender async;
  async.setBufferSize(GetParam());
  CapturingAppender slow("slow");
  CapturingAppender fast("fast");
  slow.onAppend = [&](LOGLoggingEvent*) {
    if (slow.messages.size() % 100 == 0) {
      std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
  };
  async.addAppender(&slow);
  async.addAppender(&fast);
  LOGLogger* const loggers[] = {LOGManager::getLogger("p0"), LOGManager::getLogger("p1")};
  for (LOGLogger* const logger : loggers) {
    logger->setAdditivity(0);
    logger->addAppender(&async);
  }
  Threads(PRODUCERS, [&](int producer) {
    for (int i = 0; i < EVENTS; ++i) {
      loggers[producer % 2]->info(std::to_string(producer * EVENTS + i));
    }
  }).join();
  EXPECT_EQ(async.flush(60000), 1);
  EXPECT_EQ(slow.messages, fast.messages);
  std::vector<int> next(PRODUCERS, 0);
  for (const std::string& message : fast.messages) {
    const int value = std::stoi(message);
    ASSERT_EQ(value % EVENTS, next[value / EVENTS]++) << message;
  }
  EXPECT_EQ(next, std::vector<int>(PRODUCERS, EVENTS));
  for (LOGLogger* const logger : loggers) {
    logger->removeAllAppenders();
  }
}

INSTANTIATE_TEST_SUITE_P(Buffers, AsyncThroughput, testing::Values(1, 4, 128));
