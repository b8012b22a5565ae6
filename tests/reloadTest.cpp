// Watchdogs, and documents that change while the program logs.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#ifndef _WIN32
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#endif

#include "appenders/LOGAsyncAppender.h"
#include "config/LOG4ZEBConfigurator.h"
#include "config/LOGXMLWatchdog.h"
#include "core/LOGDefaultRepositorySelector.h"
#include "core/LOGHierarchy.h"
#include "core/LOGLogger.h"
#include "core/LOGManager.h"
#include "core/LOGRootLogger.h"
#include "platform/ZEBThreadGuard.h"
#include "support/CapturingAppender.h"
#include "support/Documents.h"
#include "support/OpenSockets.h"
#include "support/Threads.h"
#include "support/Workplace.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* DOCUMENT = "watched.xml";

constexpr const char* ALONE = "additivity='false'";

std::string document(const std::string& rootLevel = "DEBUG") {
  return documents::whole(documents::file("F", "f.log") + documents::logger("a", {"F"}, ALONE) +
                          documents::root({"F"}, rootLevel));
}

/// Writes the document so that its time advances even on a coarse clock.
void edit(const std::string& text) {
  static int edits = 0;
  Workplace::write(DOCUMENT, text);
  fs::last_write_time(DOCUMENT, fs::file_time_type::clock::now() + std::chrono::seconds(++edits));
}

int rootRank() { return LOGManager::getRootLogger()->getLevel()->toInt(); }

}  // namespace

TEST(Watchdog, AppliesTheDocumentAtOnceAndAfterEveryChange) {
  Workplace workplace;
  edit(document());
  LOGXMLWatchdog watchdog(DOCUMENT);
  EXPECT_EQ(watchdog.wasApplied(), 1);
  LOGManager::getLogger("a")->info("1");
  EXPECT_EQ(Workplace::lines("f.log").size(), 1U);
  LOGXMLWatchdog::setDelay(5);
  watchdog.start();
  edit(document("ERROR"));
  EXPECT_TRUE(eventually([] { return rootRank() == LOGLevel::ERROR_RANK; }));
  edit("<log4j:configuration><root><level value='OFF'/>");
  EXPECT_TRUE(eventually([] { return Workplace::noted("Could not parse the document") == 1; }));
  edit(document("WARN"));
  EXPECT_TRUE(eventually([] { return rootRank() == LOGLevel::WARN_RANK; }));
  Workplace::write(DOCUMENT, document("FATAL"));
  fs::last_write_time(DOCUMENT, fs::file_time_type::clock::now() - std::chrono::hours(1));
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(rootRank(), LOGLevel::WARN_RANK) << "an older copy is no change";
  fs::remove(DOCUMENT);
  EXPECT_TRUE(eventually([] {
    return Workplace::warnings(
               "Was not allowed to read check file existance, file:[watched.xml].") == 1;
  }));
  watchdog.join();
}

TEST(Watchdog, WatchesAgainWhenItIsStartedAfterItsEnd) {
  struct Counting : LOGFileWatchdog {
    using LOGFileWatchdog::LOGFileWatchdog;
    Counting(const Counting&) = delete;
    Counting& operator=(const Counting&) = delete;
    ~Counting() override { stop(); }
    void doOnChange() override {
      ++changes;
      if (stopsItself) {
        stop();
      }
    }
    std::atomic<int> changes{0};
    std::atomic<bool> stopsItself{false};
  };
  Workplace workplace;
  edit("");
  Counting watchdog(DOCUMENT);
  LOGFileWatchdog::setDelay(5);
  watchdog.stop();
  for (int round = 1; round <= 4; ++round) {
    watchdog.stopsItself = round % 2 == 0;
    watchdog.start();
    edit("");
    ASSERT_TRUE(eventually([&] { return watchdog.changes == round; })) << round;
    if (!watchdog.stopsItself) {
      watchdog.stop();
    }
  }
}

#ifndef _WIN32
TEST(Watchdog, DoesNotWaitForWhoeverWritesToAPipe) {
  Workplace workplace;
  edit(document());
  LOGXMLWatchdog watchdog(DOCUMENT);
  LOGXMLWatchdog::setDelay(5);
  watchdog.start();
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  fs::rename("pipe", DOCUMENT);
  fs::last_write_time(DOCUMENT, fs::file_time_type::clock::now() + std::chrono::hours(1));
  EXPECT_TRUE(eventually([&watchdog] { return watchdog.wasApplied() == 0; }));
  watchdog.stop();
  EXPECT_EQ(Workplace::errors("Could not parse the document"), 1);
}

TEST(Reload, TakesADocumentFromAPipeAlsoWhenSignalsCome) {
  Workplace workplace;
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  static std::atomic<int> signals{0};
  struct sigaction action {};
  action.sa_handler = [](int) { ++signals; };
  sigaction(SIGUSR1, &action, nullptr);
  std::atomic<int> result{-1};
  std::thread reading([&] { result = LOG4ZEBConfigurator::initialize("pipe"); });
  const auto disturb = [&] {
    for (const int before = signals; signals < before + 20 && result == -1;) {
      pthread_kill(reading.native_handle(), SIGUSR1);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  };
  disturb();
  const std::string text = document("WARN");
  int writer = -1;
  while (writer < 0 && result == -1) {
    writer = open("pipe", O_WRONLY | O_NONBLOCK);
  }
  EXPECT_EQ(write(writer, text.data(), 100), 100);
  disturb();
  EXPECT_EQ(write(writer, &text[100], text.size() - 100), static_cast<ssize_t>(text.size() - 100));
  close(writer);
  reading.join();
  EXPECT_EQ(result, 1);
  EXPECT_EQ(rootRank(), LOGLevel::WARN_RANK);
}
#endif

TEST(Reload, LeavesNoSocketOpen) {
  Workplace workplace;
  const auto log = [] {
    Workplace::configure(
        documents::appender("U", "LOGLocalUDPAppender") +
        documents::appender("S", "LOGSyslogAppender", documents::layout("LOGSimpleLayout")) +
        documents::appender("", "LOGLocalUDPAppender") + documents::root({"U", "S", ""}));
    LOGManager::getLogger("a")->info("1");
    return OpenSockets::count().open;
  };
  const long first = log();
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(log(), first);
  }
}

TEST(Reload, PassesAnAppenderOnToALoggerThatIsReadFirst) {
  Workplace workplace;
  const std::string appenders = documents::file("F", "F.log") + documents::file("G", "G.log");
  Workplace::configure(appenders + documents::root({"F"}));
  LOGManager::getLogger("x")->warn("1");
  Workplace::configure(appenders + documents::logger("x", {"F"}, ALONE) + documents::root({"G"}));
  LOGManager::getLogger("x")->warn("2");
  EXPECT_EQ(Workplace::lines("F.log"), (std::vector<std::string>{"1", "2"}));
}

TEST(Reload, ClosesNoAppenderThatTheProgramRemovesMeanwhile) {
  Workplace workplace;
  CapturingAppender slow("slow");
  slow.onAppend = [](LOGLoggingEvent*) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  };
  LOGAsyncAppender queue;
  queue.setName("queue");
  queue.addAppender(&slow);
  CapturingAppender removed("removed");
  CapturingAppender left("left");
  auto deleted = std::make_unique<CapturingAppender>("deleted");
  LOGLogger* const logger = LOGManager::getLogger("x");
  for (LOGAppenderSkeleton* const appender :
       {static_cast<LOGAppenderSkeleton*>(&queue), static_cast<LOGAppenderSkeleton*>(&removed),
        static_cast<LOGAppenderSkeleton*>(&left),
        static_cast<LOGAppenderSkeleton*>(deleted.get())}) {
    logger->addAppender(appender);
  }
  for (int i = 0; i < 10; ++i) {
    logger->info("queued");
  }
  std::thread reading([] { Workplace::configure("<logger name='x'/>"); });
  EXPECT_TRUE(eventually([logger] { return logger->snapshotOfAppenders().empty(); }));
  logger->removeAppender(&removed);
  logger->removeAppender(deleted.get());
  deleted.reset();
  EXPECT_FALSE(queue.isClosedForGood());
  reading.join();
  EXPECT_TRUE(queue.isClosedForGood());
  EXPECT_EQ(slow.messages.size(), 10U) << "what was queued is passed on";
  EXPECT_EQ(removed.closings, 0);
  EXPECT_EQ(left.closings, 1);
}

TEST(Reload, KeepsWhatIsBehindAnAsynchronousAppenderAtWork) {
  Workplace workplace;
  using documents::async;
  using documents::root;
  const auto logWith = [](const std::string& text, const std::string& appenders) {
    Workplace::configure(documents::file("F", "f.log") + appenders);
    LOGManager::getLogger("behind")->info(text);
  };
  const std::string chained =
      async("A", {"F"}) + async("B", {"A"}) + async("C", {"B"}) + root({"C"});
  logWith("1", chained);
  logWith("2", root({"F"}));
  logWith("3", chained);  // A is used again, and F was taken from the root meanwhile
  logWith("4", async("A", {"F"}) + root({"A"}));
  logWith("5", async("A", {"B"}) + async("B", {"F"}) + root({"A"}));
  EXPECT_TRUE(eventually([] {
    return Workplace::noted("Attempted to append to closed appender named [A]") == 1;
  })) << "B, used again as it is, does not pass events back to A";
  LOG4ZEBConfigurator::shutdown();
  EXPECT_EQ(Workplace::lines("f.log").size(), 4U);
}

/// An appender of the program behind an asynchronous one of the document, which has forty events
/// queued for it when the document is read again.
class OldQueue : public testing::Test {
 protected:
  static constexpr std::size_t QUEUED = 40;

  static LOGAsyncAppender* async() {
    return dynamic_cast<LOGAsyncAppender*>(LOGManager::getRootLogger()->getAppender("A"));
  }
  static void configure() {
    Workplace::configure(documents::async("A", {}) + documents::root({"A"}));
  }

  OldQueue() {
    configure();
    m_old = async();
    // Most of a delivery's time passes without the appender's lock, so that the two queues take
    // turns.
    m_pause.onAppend = [](LOGLoggingEvent*) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    };
    m_own.onAppend = [this](LOGLoggingEvent*) {
      ++m_taken;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    };
    m_old->addAppender(&m_pause);
    m_old->addAppender(&m_own);
    for (std::size_t i = 0; i < QUEUED; ++i) {
      LOGManager::getRootLogger()->info("old");
    }
    m_reading = std::thread(&OldQueue::configure);
    EXPECT_TRUE(eventually([this] { return async() != nullptr && async() != m_old; }));
  }

  Workplace m_workplace;
  LOGAsyncAppender* m_old;
  std::atomic<std::size_t> m_taken{0};
  CapturingAppender m_pause{"pause"};
  CapturingAppender m_own{"own"};
  std::thread m_reading;
};

TEST_F(OldQueue, CallsNothingThatWasRemovedFromItsSuccessor) {
  async()->removeAppender(&m_own);
  const std::size_t taken = m_taken;
  EXPECT_LT(taken, QUEUED);
  async()->removeAppender(&m_pause);
  m_reading.join();
  EXPECT_EQ(m_taken, taken);
  EXPECT_EQ(m_old->getAllAppenders().atEnd(), true);
}

TEST_F(OldQueue, LetsAnAppenderGoThatRemovesItselfFromTheSuccessorInADelivery) {
  std::atomic<std::size_t> takenAtRemoval{0};
  {
    const ZEBThreadGuard guard(m_own.getCriticalSection());
    m_own.onAppend = [&, slow = m_own.onAppend](LOGLoggingEvent* event) {
      slow(event);
      if (m_own.messages.back() == "new") {
        async()->removeAppender(&m_own);
        takenAtRemoval = m_taken.load();
      }
    };
  }
  async()->addAppender(&m_own);
  LOGManager::getRootLogger()->info("new");
  m_reading.join();
  EXPECT_TRUE(eventually([&] { return takenAtRemoval != 0; }));
  EXPECT_LT(takenAtRemoval, QUEUED);
  EXPECT_LE(m_taken, takenAtRemoval + 1) << "the old queue may have been on its way in";
}

TEST(Reload, ChangesAdditivityTogetherWithTheAppenders) {
  Workplace workplace;
  fs::remove("../configuration/logdebug.ini");
  const auto document = [](const std::string& logger) {
    // The others take their time, in which the logger has its old appenders.
    std::string others;
    std::vector<std::string> names;
    for (int i = 0; i < 50; ++i) {
      names.push_back("S" + std::to_string(i));
      others += documents::file(names.back(), names.back());
    }
    return documents::file("F", "f.log") + others + documents::logger("slow", names) +
           documents::root({"F"}) + logger;
  };
  const std::string texts[] = {document(documents::logger("a", {})),
                               document(documents::logger("a", {"F"}, ALONE))};
  ASSERT_EQ(Workplace::configure(texts[0]), 1);
  std::size_t logged = 0;
  Repeating logging({[&] {
    LOGManager::getLogger("a")->info("line");
    ++logged;
  }});
  for (int i = 1; i < 30; ++i) {
    EXPECT_EQ(Workplace::configure(texts[i % 2]), 1);
  }
  logging.stop();
  LOG4ZEBConfigurator::shutdown();
  EXPECT_GE(Workplace::lines("f.log").size(), logged) << "no line is lost";
}

TEST(Reload, TakesItsAppendersFromEveryRepositoryThatItWasReadInto) {
  Workplace workplace;
  Workplace::write(DOCUMENT, document());
  ASSERT_EQ(LOG4ZEBConfigurator::initialize(DOCUMENT), 1);
  LOGLogger* const first = LOGManager::getRootLogger();
  LOGRootLogger secondRoot(nullptr);
  {
    LOGHierarchy second(&secondRoot);
    LOGDefaultRepositorySelector selector(&second);
    LOGObject guard;
    LOGManager::setRepositorySelector(&selector, &guard);
    EXPECT_EQ(LOG4ZEBConfigurator::initialize(DOCUMENT), 1);
    EXPECT_EQ(secondRoot.snapshotOfAppenders().size(), 1U);
    LOGManager::setRepositorySelector(nullptr, &guard);
  }
  EXPECT_TRUE(secondRoot.snapshotOfAppenders().empty()) << "its repository is gone";
  LOG4ZEBConfigurator::shutdown();
  EXPECT_TRUE(first->snapshotOfAppenders().empty());
  first->info("to nobody");
}

class AsyncReload : public testing::TestWithParam<bool> {};

TEST_P(AsyncReload, LosesNoLineBehindAnAsynchronousAppender) {
  Workplace workplace;
  fs::remove("../configuration/logdebug.ini");
  const std::string root = documents::root({"A"});
  const std::string logger = documents::logger("x", {"F"}, ALONE);
  const std::string text = documents::file("F", "f.log") + documents::async("A", {"F"}) +
                           (GetParam() ? root + logger : logger + root);
  ASSERT_EQ(Workplace::configure(text), 1);
  std::atomic<std::size_t> logged{0};
  const auto logTo = [&logged](const char* name) {
    return [&logged, target = LOGManager::getLogger(name)] {
      target->info("line");
      ++logged;
    };
  };
  Repeating logging({logTo("x"), logTo("y"), logTo("z")});
  for (int i = 0; i < 30; ++i) {
    EXPECT_EQ(Workplace::configure(text), 1);
  }
  logging.stop();
  LOG4ZEBConfigurator::shutdown();
  EXPECT_EQ(Workplace::lines("f.log").size(), logged);
}

INSTANTIATE_TEST_SUITE_P(Orders, AsyncReload, testing::Bool());
