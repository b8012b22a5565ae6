// Several processes: those that share a log file, and those that a program forks while it logs.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "appenders/LOGAsyncAppender.h"
#include "appenders/LOGFileAppender.h"
#include "config/LOG4ZEBConfigurator.h"
#include "config/LOGFileWatchdog.h"
#include "core/LOGLogger.h"
#include "core/LOGManager.h"
#include "core/LOGNDC.h"
#include "layouts/LOGDate.h"
#include "layouts/LOGISODateFormat.h"
#include "layouts/LOGPatternLayout.h"
#include "platform/ZEBThread.h"
#include "support/CapturingAppender.h"
#include "support/ChildProcess.h"
#include "support/Threads.h"
#include "support/Workplace.h"

using namespace std::chrono_literals;

namespace {
const pid_t TEST_PROCESS = getpid();
}

// Asked by the leak checker. What only the stacks of its parent's threads knew is lost to a child.
extern "C" int __lsan_is_turned_off();
extern "C" int __lsan_is_turned_off() { return getpid() == TEST_PROCESS ? 0 : 1; }

// Neither sanitizer of threads nor of addresses keeps up with a fork while other threads run: the
// one ends a child in which a thread gets a number that one of its parent had, the other leaves it
// a locked allocator.
#if defined(__SANITIZE_THREAD__)
#define SKIP_WHERE_CHILDREN_HAVE_NO_THREADS() \
  GTEST_SKIP() << "the thread sanitizer knows no threads in the child of a fork with threads"
#else
#define SKIP_WHERE_CHILDREN_HAVE_NO_THREADS()
#endif
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
#define SKIP_WHERE_CHILDREN_CANNOT_ALLOCATE() \
  GTEST_SKIP() << "the sanitizers do not renew their own locks in the child of a fork"
#else
#define SKIP_WHERE_CHILDREN_CANNOT_ALLOCATE()
#endif

namespace {

/// What stood in files of lines "WHO NUMBER", where each WHO counts from 0.
class Counted {
 public:
  /// Where processes are killed, the system may end a write of theirs at a page of the file, and
  /// the next line stands behind that beginning of a line.
  explicit Counted(const std::string& fileName, bool areKilled = false) {
    std::size_t offset = 0;
    for (const std::string& line : Workplace::lines(fileName)) {
      const std::size_t page = PAGE - offset % PAGE;
      const bool isCut = areKilled && page <= line.size() && isBeginning(line.substr(0, page));
      if (!count(line) && !(isCut && (page == line.size() || count(line.substr(page))))) {
        ADD_FAILURE() << "torn, lost or doubled: '" << line << '\'';
        return;
      }
      offset += line.size() + 1;
    }
  }
  long of(const std::string& who) const {
    const auto found = m_next.find(who);
    return found == m_next.end() ? 0 : found->second;
  }

 private:
  static constexpr std::size_t PAGE = 4096;

  bool count(const std::string& line) {
    const std::size_t blank = line.find(' ');
    const std::string who = line.substr(0, blank);
    if (blank == std::string::npos || line.substr(blank + 1) != std::to_string(of(who))) {
      return false;
    }
    ++m_next[who];
    return true;
  }
  bool isBeginning(const std::string& text) const {
    return std::any_of(m_next.begin(), m_next.end(), [&text](const auto& next) {
      return (next.first + " " + std::to_string(next.second)).rfind(text, 0) == 0;
    });
  }

  std::map<std::string, long> m_next;
};

void logLines(const std::string& logger, const std::string& who, int lines) {
  for (int number = 0; number < lines; ++number) {
    LOGManager::getLogger(logger)->info(who + " " + std::to_string(number));
  }
}

/// Forks, and has the child run `body`, which ends the process. Returns its number.
pid_t forkAndRun(const std::function<void()>& body) {
  std::fflush(nullptr);  // the child's exit() would write it again
  const pid_t child = fork();
  if (child == 0) {
    body();
    _exit(99);
  }
  return child;
}

/// Waits for the child, which is ended should it hang. Returns how it ended as waitpid() does.
int waitFor(pid_t child) {
  int status = 0;
  const auto end = std::chrono::steady_clock::now() + 15s;
  while (waitpid(child, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > end) {
      kill(child, SIGKILL);
    }
    std::this_thread::sleep_for(1ms);
  }
  return status;
}

}  // namespace

TEST(Processes, LoseTearAndDoubleNoLineOfOneFileWhenTheyAreKilled) {
  constexpr int PROCESSES = 16;
  constexpr int KILLED_EARLY = 6;
  const Workplace workplace;
  std::vector<std::unique_ptr<ChildProcess>> processes;
  std::vector<std::thread> readers;
  for (int i = 0; i < PROCESSES; ++i) {
    const std::string document = "process" + std::to_string(i) + ".xml";
    Workplace::write(document,
                     "<log4j:configuration><appender name='F' class='LOGFileAppender'>"
                     "<param name='File' value='shared.log'/><layout class='LOGPatternLayout'>"
                     "<param name='ConversionPattern' value='" +
                         std::to_string(i) +
                         "%m%n'/></layout></appender><root><appender-ref ref='F'/></root>"
                         "</log4j:configuration>");
    processes.push_back(std::make_unique<ChildProcess>(LOG4ZEB_ACKNOWLEDGING_LOGGER,
                                                       std::vector<std::string>{document}));
    // Acknowledgements are taken all the time, because a full pipe would stop the process.
    readers.emplace_back([&process = *processes.back()] { process.receive(); });
  }
  std::mt19937 random(std::random_device{}());
  std::this_thread::sleep_for(500ms);
  processes.back()->signal(SIGSTOP);
  for (int i = 0; i < KILLED_EARLY; ++i) {
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 200'000));
    processes[static_cast<std::size_t>(i)]->kill();
  }
  processes.back()->signal(SIGCONT);
  std::this_thread::sleep_for(500ms);
  for (const auto& process : processes) {
    process->kill();
  }
  long acknowledged = 0;
  std::vector<long> returned;
  for (std::size_t i = 0; i < processes.size(); ++i) {
    readers[i].join();
    EXPECT_EQ(processes[i]->wait().signal, SIGKILL);
    const std::string& received = processes[i]->receive();
    returned.push_back(std::count(received.begin(), received.end(), '\n'));
    acknowledged += returned.back();
  }

  const Counted found("shared.log", true);
  for (int i = 0; i < PROCESSES; ++i) {
    const long lines = found.of(std::to_string(i) + "line");
    EXPECT_GE(lines, returned[static_cast<std::size_t>(i)]) << "of process " << i;
    EXPECT_LE(lines, returned[static_cast<std::size_t>(i)] + 1) << "one more was under way";
  }
  EXPECT_GT(acknowledged, 1000);
}

namespace {

/// Where a program logs to that forks.
struct Destination {
  const char* name;
  int bufferedIO;
  int files;
  bool isAsynchronous;
};

class ForkingProgram : public testing::TestWithParam<Destination> {
 protected:
  ForkingProgram() {
    auto* const root = LOGManager::getRootLogger();
    for (int i = 0; i < GetParam().files; ++i) {
      m_files.push_back(std::make_unique<LOGFileAppender>(&m_layout, fileName(i), 1,
                                                          GetParam().bufferedIO, 8192));
      m_files.back()->setName(fileName(i));
      if (GetParam().isAsynchronous) {
        m_async.addAppender(m_files.back().get());
      } else {
        root->addAppender(m_files.back().get());
      }
    }
    if (GetParam().isAsynchronous) {
      root->addAppender(&m_async);
    }
  }

  ~ForkingProgram() override { LOGManager::getRootLogger()->removeAllAppenders(); }

  static std::string fileName(int number) { return "forks" + std::to_string(number) + ".log"; }

  /// What each child does: it logs through a logger that the parent's threads use, and, on another
  /// thread, through one of its own. Two of three children end in an orderly way.
  static constexpr int LINES = 50;
  static void runChild(int round) {
    const std::string who = "child" + std::to_string(round);
    std::thread other(logLines, "only.in." + who, who + "b", LINES);
    logLines("shared", who, LINES);
    other.join();
    if (isOrderly(round)) {
      LOG4ZEBConfigurator::shutdown();
    }
    if (skipsDestructors(round)) {
      _exit(0);
    }
    exit(0);
  }
  static bool isOrderly(int round) { return round % 3 != 2; }
  static bool skipsDestructors(int round) { return round % 3 == 1; }
  /// What is queued needs an orderly end, which leaves the files of an asynchronous appender open;
  /// what is buffered in an open file needs exit().
  static bool mayLose(int round) {
    return GetParam().isAsynchronous &&
           (!isOrderly(round) || (GetParam().bufferedIO != 0 && skipsDestructors(round)));
  }

  const Workplace m_workplace;
  LOGPatternLayout m_layout{"%m%n"};
  std::vector<std::unique_ptr<LOGFileAppender>> m_files;
  LOGAsyncAppender m_async;
};

}  // namespace

TEST_P(ForkingProgram, AndItsChildrenGoOnLoggingWithoutLosingOrDoublingALine) {
  SKIP_WHERE_CHILDREN_CANNOT_ALLOCATE();
  constexpr int ROUNDS = 30;
  std::array<long, 3> logged{};
  const auto logAs = [&logged](std::size_t i) {
    return [&count = logged[i], i] {
      LOGManager::getLogger(i == 0 ? "other" : "shared")
          ->info("parent" + std::to_string(i) + " " + std::to_string(count));
      ++count;
    };
  };
  Repeating parent({logAs(0), logAs(1), logAs(2)});
  for (int round = 0; round < ROUNDS; ++round) {
    EXPECT_EQ(waitFor(forkAndRun([round] { runChild(round); })), 0) << "round " << round;
  }
  parent.stop();
  LOG4ZEBConfigurator::shutdown();
  for (const auto& file : m_files) {
    file->close();
  }

  for (int file = 0; file < GetParam().files; ++file) {
    const Counted found(fileName(file));
    for (std::size_t i = 0; i < logged.size(); ++i) {
      EXPECT_EQ(found.of("parent" + std::to_string(i)), logged[i]);
      EXPECT_GT(logged[i], 0);
    }
    for (int round = 0; round < ROUNDS; ++round) {
      for (const char* const thread : {"", "b"}) {
        const long lines = found.of("child" + std::to_string(round) + thread);
        EXPECT_TRUE(lines == LINES || mayLose(round)) << round << ": " << lines;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Destinations, ForkingProgram,
                         testing::Values(Destination{"File", 0, 1, false},
                                         Destination{"BufferedFile", 1, 1, false},
                                         Destination{"AsyncToFile", 0, 1, true},
                                         Destination{"AsyncToTwoFiles", 0, 2, true},
                                         Destination{"AsyncToBufferedFile", 1, 1, true}),
                         [](const auto& test) { return test.param.name; });

// An appender waits under the library's locks for something that the forking thread never gives it.
// The fork does not wait for the appender, and in the child its locks are free.
TEST(ForkedChild, LogsThoughAnotherThreadIsStuckInAnAppender) {
  SKIP_WHERE_CHILDREN_HAVE_NO_THREADS();
  for (const bool isAsynchronous : {false, true}) {
    const Workplace workplace;
    CapturingAppender stuck;
    LOGAsyncAppender async;
    async.setBufferSize(1);
    async.addAppender(&stuck);
    LOGManager::getRootLogger()->addAppender(
        isAsynchronous ? static_cast<LOGAppenderSkeleton*>(&async) : &stuck);
    Gate delivery;
    const pid_t parent = getpid();
    stuck.onAppend = [&](LOGLoggingEvent*) {
      if (getpid() == parent) {
        delivery.pass();
      }
    };
    Threads threads(4, [](int i) { logLines("thread" + std::to_string(i), "parent", 1); });
    ASSERT_TRUE(delivery.isReached());
    std::this_thread::sleep_for(100ms);  // the queue is full, and the others wait, by now

    const pid_t child = forkAndRun([&] {
      stuck.messages.clear();
      logLines("thread0", "child", 3);
      LOGManager::getRootLogger()->removeAppender("nobody");
      async.flush(20'000);
      LOG4ZEBConfigurator::shutdown();
      const std::vector<std::string> expected{"child 0", "child 1", "child 2"};
      _exit(stuck.messages == expected ? 0 : 1);
    });
    EXPECT_EQ(waitFor(child), 0) << isAsynchronous;
    delivery.open();
    threads.join();
    async.flush(20'000);
    EXPECT_EQ(stuck.messages, std::vector<std::string>(4, "parent 0"));
    LOGManager::getRootLogger()->removeAllAppenders();
  }
}

TEST(ForkedChild, WritesDatesThoughOtherThreadsWereWritingSome) {
  SKIP_WHERE_CHILDREN_CANNOT_ALLOCATE();
  const Workplace workplace;
  const auto write = [] {
    LOGISODateFormat format;
    LOGDate date;
    for (int i = 0; i < 50; ++i) {
      date.setTime(i * 1000);
      format.format(&date);
    }
  };
  const Repeating writers({write, write});
  for (int round = 0; round < 300 && !HasFailure(); ++round) {
    const pid_t child = forkAndRun([&] {
      write();
      _exit(0);
    });
    EXPECT_EQ(waitFor(child), 0) << "round " << round;
  }
}

TEST(ForkedChild, IsNotHeldUpByWhatIsQueuedForASlowAppender) {
  SKIP_WHERE_CHILDREN_HAVE_NO_THREADS();
  const Workplace workplace;
  CapturingAppender slow;
  LOGAsyncAppender async;
  std::atomic<int> delivered{0};
  slow.onAppend = [&](LOGLoggingEvent*) {
    std::this_thread::sleep_for(10ms);
    ++delivered;
  };
  async.addAppender(&slow);
  LOGManager::getRootLogger()->addAppender(&async);
  constexpr int EVENTS = 100;  // a second for the dispatcher, twice as long as a fork waits
  logLines("thread0", "parent", EVENTS);
  const pid_t child = forkAndRun([] { _exit(0); });
  EXPECT_LT(delivered, EVENTS / 3) << "the fork has waited";
  EXPECT_EQ(waitFor(child), 0);
  EXPECT_EQ(async.flush(20'000), 1);
  EXPECT_EQ(slow.messages.size(), static_cast<std::size_t>(EVENTS));
  LOGManager::getRootLogger()->removeAllAppenders();
}

TEST(ForkedChild, StartsItsOwnWatchdogThread) {
  SKIP_WHERE_CHILDREN_HAVE_NO_THREADS();
  struct Watchdog : LOGFileWatchdog {
    using LOGFileWatchdog::LOGFileWatchdog;
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;
    ~Watchdog() override { stop(); }
    void doOnChange() override { changed.set_value(); }
    std::promise<void> changed;
  };
  const Workplace workplace;
  Workplace::write("watched", "");
  auto watchdog = std::make_unique<Watchdog>("watched");
  LOGFileWatchdog::setDelay(10);
  watchdog->start();
  std::this_thread::sleep_for(30ms);
  for (const bool isStopped : {false, true}) {
    if (isStopped) {
      watchdog->stop();
    }
    const pid_t child = forkAndRun([&] {
      if (!isStopped) {
        watchdog->start();
        watchdog->stop();
      }
      watchdog->start();
      const auto time = std::filesystem::last_write_time("watched");
      std::filesystem::last_write_time("watched", time + 10s);
      const bool hasChanged =
          watchdog->changed.get_future().wait_for(20s) == std::future_status::ready;
      watchdog.reset();
      _exit(hasChanged ? 0 : 1);
    });
    EXPECT_EQ(waitFor(child), 0) << isStopped;
    watchdog->changed = std::promise<void>();
  }
}

// Linux gives the next thread the number after the one that is written there, where that is
// allowed.
TEST(ForkedChild, KeepsTheContextOfAThreadThatHasTheNumberOfItsParent) {
  SKIP_WHERE_CHILDREN_HAVE_NO_THREADS();
  constexpr const char* LAST_NUMBER = "/proc/sys/kernel/ns_last_pid";
  constexpr int NOT_ALLOWED = 77;
  int result[2];
  ASSERT_EQ(pipe(result), 0);
  const pid_t parent = forkAndRun([&] {
    const pid_t number = getpid();
    LOGNDC::push("parent");
    forkAndRun([&] {
      while (getppid() == number) {
        std::this_thread::sleep_for(1ms);
      }
      std::this_thread::sleep_for(50ms);  // the parent is gone and was waited for
      char answer = NOT_ALLOWED;
      for (int attempt = 0; attempt < 200 && answer == NOT_ALLOWED; ++attempt) {
        std::this_thread::sleep_for(1ms);
        std::ofstream last(LAST_NUMBER);
        if (!(last << number - 1 << std::flush)) {
          break;
        }
        std::promise<bool> pushed;
        std::promise<void> removed;
        std::thread thread([&] {
          const bool isSame = ZEBThread::currentThreadId() == static_cast<std::uint64_t>(number);
          LOGNDC::push("thread");
          pushed.set_value(isSame);
          removed.get_future().wait();
          if (isSame) {
            answer = LOGNDC::get() == "thread" ? 0 : 1;
          }
        });
        if (pushed.get_future().get()) {
          LOGNDC::remove();  // what was pushed before the fork, by that number
        }
        removed.set_value();
        thread.join();
      }
      static_cast<void>(!write(result[1], &answer, 1));
      _exit(0);
    });
    _exit(0);
  });
  EXPECT_EQ(waitFor(parent), 0);
  close(result[1]);
  char answer = 2;
  EXPECT_EQ(read(result[0], &answer, 1), 1) << "the child has crashed";
  close(result[0]);
  if (answer == NOT_ALLOWED) {
    GTEST_SKIP() << "the number of the next thread cannot be chosen";
  }
  EXPECT_EQ(answer, 0);
}
