// File appenders and rolling file appenders on real files.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#endif

#include "appenders/LOGOnlyOnceErrorHandler.h"
#include "appenders/LOGRollingFileAppender.h"
#include "core/LOGLogger.h"
#include "core/LOGManager.h"
#include "layouts/LOGLayout.h"
#include "platform/IZEBConfiguration.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBConfigurationFactory.h"
#include "platform/ZEBFmHold.h"
#include "support/TestEvent.h"
#include "support/Threads.h"
#include "support/Workplace.h"

namespace fs = std::filesystem;

namespace {

using Lines = std::vector<std::string>;

constexpr const char* CLOSED = "Attempted to append to closed appender named [";

class FileAppenderTest : public testing::Test {
 protected:
  /// One event by the way that a logger's list takes.
  static void append(LOGAppenderSkeleton& appender, LOGObject& message) {
    TestEvent event("file", "INFO", &message);
    appender.activateOptions();
    appender.doAppend(&event);
  }
  static void append(LOGAppenderSkeleton& appender, const std::string& text) {
    LOGObject message{I18NString(text)};
    append(appender, message);
  }

  Workplace workplace;
  LOGLayout layout;
};

class RollingFileAppenderTest : public FileAppenderTest {
 protected:
  RollingFileAppenderTest() {
    appender.setLayout(&layout);
    appender.setFile("r.log");
    appender.setMaximumFileSize(5);  // one line of three characters fills the file
  }
  LOGRollingFileAppender appender;
};

/// A resolver of file names that first does something, in force while it lives.
class ActingResolver : public IZEBConfiguration {
 public:
  explicit ActingResolver(std::function<void()> act, const std::string& directory = "")
      : m_act(std::move(act)), m_directory(directory) {
    ZEBConfigurationFactory::setInstance(this);
  }
  ActingResolver(const ActingResolver&) = delete;
  ActingResolver& operator=(const ActingResolver&) = delete;
  ~ActingResolver() override { ZEBConfigurationFactory::setInstance(nullptr); }
  I18NString resolvePath(const I18NString& name) const override {
    m_act();
    return m_directory + name;
  }

 private:
  const std::function<void()> m_act;
  const I18NString m_directory;
};

/// A rolling appender that does something while it opens its file again.
class ActingRollingAppender : public LOGRollingFileAppender {
 public:
  using LOGRollingFileAppender::LOGRollingFileAppender;
  void setQWForFiles() override {
    s_act();
    LOGRollingFileAppender::setQWForFiles();
  }
  static std::function<void()> s_act;
};

std::function<void()> ActingRollingAppender::s_act;

#ifndef _WIN32
/// Memory whose beginning or end can be taken away: the next access restores it and calls a
/// function.
class InterruptingMemory {
 public:
  explicit InterruptingMemory(std::function<void()> onUse) : m_onUse(std::move(onUse)) {
    s_current = this;
    struct sigaction action {};
    action.sa_handler = [](int) {
      s_current->giveBack();
      s_current->m_onUse();
    };
    sigaction(SIGSEGV, &action, &m_before);
  }
  ~InterruptingMemory() {
    sigaction(SIGSEGV, &m_before, nullptr);
    munmap(m_memory, 2 * m_page);
  }

  /// The place for an object whose beginning has so many bytes.
  void* placeWith(std::size_t bytes) { return end() - bytes; }
  void takeBeginning() { mprotect(m_memory, m_page, PROT_NONE); }
  void takeEnd() { mprotect(end(), m_page, PROT_NONE); }
  void giveBack() { mprotect(m_memory, 2 * m_page, PROT_READ | PROT_WRITE); }

 private:
  char* end() { return static_cast<char*>(m_memory) + m_page; }

  static InterruptingMemory* s_current;
  const std::size_t m_page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  void* const m_memory =
      mmap(nullptr, 2 * m_page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  const std::function<void()> m_onUse;
  struct sigaction m_before {};
};

InterruptingMemory* InterruptingMemory::s_current = nullptr;
#endif

}  // namespace

TEST_F(FileAppenderTest, OpensWithTheFirstEventAndNotAgain) {
  Workplace::write("a.log", "old\r\n");
  LOGFileAppender appender;
  appender.setLayout(&layout);
  appender.setFile("a.log");
  appender.setAppend(0);
  EXPECT_EQ(Workplace::read("a.log"), "old\r\n");
  append(appender, "1");
  append(appender, "2");
  EXPECT_EQ(Workplace::lines("a.log"), (Lines{"1", "2"}));
  appender.setFile("b.log", 1, 0, 1);
  append(appender, "3");
  EXPECT_FALSE(fs::exists("b.log")) << "an open appender does not change its file";
  EXPECT_EQ(Workplace::lines("a.log").size(), 3U);
}

TEST_F(FileAppenderTest, StaysClosedAfterCloseUntilToldToOpen) {
  LOGFileAppender appender(&layout, "a.log");
  append(appender, "1");
  appender.close();
  appender.close();
  EXPECT_TRUE(appender.getFile().isEmpty());
  appender.setFile("a.log");
  append(appender, "refused");
  EXPECT_EQ(Workplace::noted(CLOSED), 1);
  appender.setFile("a.log", 1, 0, 1);
  append(appender, "2");
  EXPECT_EQ(Workplace::lines("a.log"), (Lines{"1", "2"}));

  LOGFileAppender neverOpened;
  neverOpened.setLayout(&layout);
  neverOpened.setFile("n.log");
  neverOpened.close();
  append(neverOpened, "refused");
  EXPECT_FALSE(fs::exists("n.log"));
}

TEST_F(FileAppenderTest, TriesAMissingDirectoryAgainWithEveryEvent) {
  LOGFileAppender appender(&layout, "later/a.log", 1, 1, 4096);
  EXPECT_EQ(appender.getBufferSize(), 4096);
  append(appender, "lost");
  fs::create_directory("later");
  append(appender, "1");
  appender.close();
  EXPECT_EQ(Workplace::lines("later/a.log"), (Lines{"1"}));
  EXPECT_EQ(Workplace::debugs("LOGFileAppender::setFile -- later directory does not exist"), 2);
  EXPECT_EQ(Workplace::noted(CLOSED), 1);
}

TEST_F(FileAppenderTest, ReportsAFullDiskOnceAnEventAndGoesOn) {
  LOGFileAppender appender(&layout, Workplace::FULL_DISK);
  append(appender, "1");
  append(appender, "2");
  EXPECT_EQ(Workplace::errors("LOGQuietWriter::write -- ZEBThrowable exception occurred"), 2);
  fs::create_directory("directory");
  LOGRollingFileAppender rolling(&layout, "directory");
  EXPECT_EQ(Workplace::errors(
                "LOGRollingFileAppender::setFile -- LOGGING DISABLED -- UNABLE TO OPEN LOG FILE."),
            1);
}

TEST_F(FileAppenderTest, ReportsBufferedRecordsThatAreLost) {
  LOGFileAppender appender(&layout, Workplace::FULL_DISK, 1, 1, 4096);
  append(appender, "buffered");
  EXPECT_TRUE(Workplace::noted("ERROR") == 0);
  appender.close();
  { LOGFileAppender(&layout, Workplace::FULL_DISK, 1, 1, 4096).setFile("other"); }
  EXPECT_EQ(Workplace::noted("ERROR"), 1) << "nothing is lost where nothing was logged";
  for (const bool isRolling : {false, true}) {
    const std::unique_ptr<LOGFileAppender> dying(isRolling ? new LOGRollingFileAppender
                                                           : new LOGFileAppender);
    dying->setLayout(&layout);
    dying->setFile(Workplace::FULL_DISK, 1, 1, 4096);
    append(*dying, "buffered");
  }
  EXPECT_EQ(Workplace::errors("LOGQuietWriter::close -- ZEBThrowable exception occurred"), 3);
}

TEST_F(FileAppenderTest, TriesAgainWithTheNextEventAfterAnExceptionInOpening) {
  for (const bool isRolling : {false, true}) {
    SCOPED_TRACE(isRolling ? "rolling" : "plain");
    Workplace::write("t.log", "old");
    int failures = 1;
    const ActingResolver resolver([&] {
      if (failures-- > 0) {
        ZEBAssertError::fail("not now", "test", 1);
      }
    });
    const std::unique_ptr<LOGFileAppender> constructed(
        isRolling ? new LOGRollingFileAppender(&layout, "c.log", 0)
                  : new LOGFileAppender(&layout, "c.log", 0, 0, 1));
    append(*constructed, "1");
    EXPECT_EQ(Workplace::lines("c.log"), (Lines{"1"}));
    failures = 2;
    const std::unique_ptr<LOGFileAppender> told(isRolling ? new LOGRollingFileAppender
                                                          : new LOGFileAppender);
    told->setLayout(&layout);
    told->setFile("t.log", 0, 1, 4096);
    EXPECT_EQ(told->getFile(), I18NString("t.log"));
    append(*told, "lost");
    append(*told, "2");
    EXPECT_EQ(Workplace::read("t.log"), "") << "emptied and buffered, as was said";
    EXPECT_EQ(told->getBufferSize(), 4096);
    told->close();
    EXPECT_EQ(Workplace::lines("t.log"), (Lines{"2"}));
  }
}

TEST_F(FileAppenderTest, TakesAnEarlierErrorHandlerBackIntoUse) {
  LOGFileAppender appender;
  auto* const first = new LOGOnlyOnceErrorHandler;
  auto* const second = new LOGOnlyOnceErrorHandler;
  for (LOGErrorHandler* const handler : {first, second, first, first, second}) {
    appender.setErrorHandler(handler);
    EXPECT_EQ(appender.getErrorHandler(), handler);
  }
}

TEST_F(FileAppenderTest, KeepsItsFileWhenTheProgramChangesDirectoryOrResolvesNames) {
  fs::create_directory("sub");
  const ActingResolver relocating([] {}, "sub/");
  LOGRollingFileAppender appender(&layout, "r.log");
  EXPECT_EQ(appender.getFile(), I18NString("sub/r.log"));
  fs::create_directory("other");
  const fs::path before = fs::current_path();
  fs::current_path("other");
  appender.setMaximumFileSize(1);
  append(appender, "1");
  append(appender, "2");
  fs::current_path(before);
  EXPECT_EQ(Workplace::lines("sub/r.log.1"), (Lines{"2"}));
  EXPECT_TRUE(fs::is_empty("other"));
}

TEST_F(FileAppenderTest, ResolvesItsNameOnceInRetriesAndCopies) {
  const ActingResolver relocating([] {}, "sub/");
  LOGRollingFileAppender rolling;
  LOGFileAppender plain;
  for (LOGFileAppender* const appender : {&plain, static_cast<LOGFileAppender*>(&rolling)}) {
    appender->setLayout(&layout);
    appender->setFile("a.log");
    for (int i = 0; i < 2; ++i) {
      append(*appender, "lost");
      EXPECT_EQ(appender->getFile(), I18NString("sub/a.log")) << "the directory is missing";
    }
  }
  fs::create_directory("sub");
  append(plain, "1");
  append(rolling, "2");
  rolling.setMaximumFileSize(5);
  rolling.setMaxBackupIndex(2);
  append(rolling, "3");
  LOGFileAppender copy(plain);
  EXPECT_EQ(copy.getFile(), I18NString("sub/a.log"));
  append(copy, "4");
  fs::rename("sub", "away");
  append(rolling, "567");  // rolls over without its directory
  fs::rename("away", "sub");
  append(rolling, "8");
  EXPECT_EQ(Workplace::lines("sub/a.log.2"), (Lines{"1", "2", "3"}));
  EXPECT_EQ(Workplace::lines("sub/a.log.1"), (Lines{"4", "567", "8"}));
  plain.close();
  plain.setFile("sub/a.log", 1, 0, 1);
  EXPECT_EQ(plain.getFile(), I18NString("sub/sub/a.log")) << "a name that the program gives";
}

TEST_F(FileAppenderTest, RefusesWhatAResolverLogsThroughTheAppenderBeingOpened) {
  for (const int backups : {0, 1}) {
    fs::remove("r.log");
    LOGRollingFileAppender rolling;
    LOGFileAppender plain;
    for (LOGFileAppender* const appender : {&plain, static_cast<LOGFileAppender*>(&rolling)}) {
      int resolved = 0;
      const ActingResolver resolver([&] {
        ++resolved;
        append(*appender, "resolving");
      });
      const auto refused = Workplace::noted(CLOSED);
      appender->setLayout(&layout);
      appender->setFile(appender == &plain ? "p.log" : "r.log");
      rolling.setMaximumFileSize(5);
      rolling.setMaxBackupIndex(backups);
      append(*appender, "a");
      append(*appender, "b");
      append(*appender, "c");
      EXPECT_EQ(Workplace::noted(CLOSED), refused + 1);
      EXPECT_EQ(resolved, 1);
      if (appender == &rolling) {
        appender->setFile(
            "r2.log");  // resolved by the rollover, which without backups is open then
        append(*appender, "d");
        EXPECT_EQ(resolved, 2);
        EXPECT_EQ(appender->getFile(), I18NString("r2.log"));
      }
    }
  }
}

TEST_F(FileAppenderTest, LetsOthersRollTheFileOverWhileAResolverRuns) {
  LOGRollingFileAppender one(&layout, "s.log");
  LOGRollingFileAppender other(&layout, "s.log");
  Threads threads;
  std::atomic<int> written{0};
  int resolved = 0;
  const ActingResolver resolver([&] {
    ++resolved;
    threads.add([&] {
      append(other, "other");
      ++written;
    });
    EXPECT_TRUE(eventually([&] { return written == resolved; })) << "the file's turn is taken";
  });
  one.close();
  one.setMaximumFileSize(5);
  other.setMaximumFileSize(5);
  one.setFile("s.log", 1, 0, 1);
  append(one, "one");
  threads.join();
  EXPECT_EQ(resolved, 1);
  EXPECT_EQ(Workplace::lines("s.log.1"), (Lines{"one"}));
}

TEST_F(FileAppenderTest, PassesOnWhatAResolverThrows) {
  const ActingResolver resolver([] { throw std::runtime_error("of the program"); });
  LOGFileAppender plain;
  LOGRollingFileAppender rolling;
  EXPECT_THROW(plain.setFile("a.log", 1, 0, 1), std::runtime_error);
  EXPECT_THROW(rolling.setFile("a.log", 1, 0, 1), std::runtime_error);
}

TEST_F(FileAppenderTest, SurvivesMessagesThatLogOrCloseWhileTheyAreRendered) {
  LOGRollingFileAppender appender(&layout, "m.log");
  appender.setMaximumFileSize(1);
  bool nested = false;
  ActingMessage logging("acted", [&] {
    if (!nested) {
      nested = true;
      append(appender, "nested");
    }
  });
  append(appender, logging);
  EXPECT_EQ(Workplace::lines("m.log.1"), (Lines{"acted"}));
  ActingMessage closing("acted", [&] { appender.close(); });
  append(appender, closing);
  EXPECT_EQ(Workplace::read("m.log"), "") << "nothing is written to a closed file";
}

TEST_F(RollingFileAppenderTest, KeepsThreeBackupsAfterFourRollovers) {
  appender.setMaxBackupIndex(3);
  for (const char* const text : {"aaa", "bbb", "ccc", "ddd", "e"}) {
    append(appender, text);
  }
  EXPECT_EQ(Workplace::lines("r.log"), (Lines{"e"}));
  EXPECT_EQ(Workplace::lines("r.log.1"), (Lines{"ddd"}));
  EXPECT_EQ(Workplace::lines("r.log.2"), (Lines{"ccc"}));
  EXPECT_EQ(Workplace::lines("r.log.3"), (Lines{"bbb"}));
  EXPECT_FALSE(fs::exists("r.log.4"));
  EXPECT_EQ(Workplace::debugs("LOGRollingFileAppender::rollOver count 5"), 4);
  EXPECT_EQ(Workplace::debugs("LOGRollingFileAppender::rollOver maxBackupIndex 3"), 4);
  EXPECT_EQ(appender.getAppend(), 0);
}

TEST_F(RollingFileAppenderTest, TruncatesWithoutBackups) {
  appender.setMaxBackupIndex(0);
  append(appender, "aaa");
  EXPECT_EQ(Workplace::read("r.log"), "");
  EXPECT_FALSE(fs::exists("r.log.1"));
}

TEST_F(RollingFileAppenderTest, CountsWhatAnAppendedFileHeldBefore) {
  Workplace::write("r.log", "ab\r\n");
  append(appender, "");
  EXPECT_EQ(Workplace::lines("r.log.1"), (Lines{"ab", ""}));
  Workplace::write("t.log", std::string(100, 'x'));
  LOGRollingFileAppender truncating(&layout, "t.log", 0);
  truncating.setMaximumFileSize(50);
  append(truncating, "1");
  EXPECT_EQ(Workplace::lines("t.log"), (Lines{"1"}));
  truncating.setMaxFileSize("1");
  EXPECT_EQ(truncating.getMaximumFileSize(), 50U);
}

TEST_F(RollingFileAppenderTest, ReportsABackupThatCannotBeRenamedAndGoesOn) {
  appender.setMaxBackupIndex(2);
  append(appender, "aaa");
  fs::create_directories("r.log.2/full");
  append(appender, "bbb");
  EXPECT_EQ(Workplace::errors(
                "LOGRollingFileAppender::rollOver ---- Could not rename [r.log.1] to [r.log.2]"),
            1);
  EXPECT_EQ(Workplace::lines("r.log.1"), (Lines{"bbb"}));
  append(appender, "c");
  EXPECT_EQ(Workplace::lines("r.log"), (Lines{"c"}));
  fs::create_directory("directory");
  appender.setFile("directory");
  append(appender, "d");
  EXPECT_TRUE(fs::is_directory("directory"));
  EXPECT_EQ(
      Workplace::errors(
          "LOGRollingFileAppender::rollOver ---- Could not rename [directory] to [directory.1]"),
      1);
}

#ifndef _WIN32
TEST_F(RollingFileAppenderTest, RenamesNoDevice) {
  fs::create_symlink("/dev/null", "device");  // renamed in place of the device itself
  appender.setFile("device");
  append(appender, "aaa");
  append(appender, "bbb");
  EXPECT_TRUE(fs::is_symlink("device"));
  EXPECT_EQ(Workplace::errors(
                "LOGRollingFileAppender::rollOver ---- Could not rename [device] to [device.1]"),
            2);
  // As /dev/stdout, whatever the stream leads to.
  const int stream = open("redirected", O_WRONLY | O_CREAT, 0600);
  fs::create_symlink("/proc/self/fd/" + std::to_string(stream), "link");
  fs::create_symlink("link", "stream");
  LOGRollingFileAppender onStream(&layout, "stream");
  onStream.setMaximumFileSize(5);
  append(onStream, "aaa");
  close(stream);
  EXPECT_TRUE(fs::is_symlink("stream") && fs::is_symlink("link"));
  EXPECT_FALSE(fs::exists(fs::symlink_status("stream.1")));
  fs::create_symlink("redirected", "alias");
  LOGRollingFileAppender onAlias(&layout, "alias");
  onAlias.setMaximumFileSize(5);
  append(onAlias, "aaa");
  EXPECT_TRUE(fs::is_symlink("alias.1")) << "a link of the user's own moves";
}

TEST_F(RollingFileAppenderTest, RefusesNoEventDuringTheRolloverOfAnotherThread) {
  // The appender stands where one part of it after the other is out of reach of the thread that
  // logs, so that the rollover begins, or comes to its end, between any two looks at it.
  const auto soon = [](const std::atomic<bool>& condition) {  // what holds a lock may keep it false
    for (int i = 0; i < 20 && !condition; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  };
  const auto wait = [](const std::atomic<bool>& condition) {
    while (!condition) {
      std::this_thread::yield();
    }
  };
  constexpr std::size_t STEP = sizeof(void*);
  for (std::size_t i = 2; i < 2 * sizeof(LOGAppenderSkeleton) / STEP; ++i) {
    const bool isUnderWay = i % 2 == 0;
    std::atomic<bool> mayBegin{isUnderWay};
    std::atomic<bool> mayEnd{true};
    std::atomic<bool> isReopening{false};
    std::atomic<bool> isOver{false};
    std::atomic<bool> isLogged{false};
    ActingRollingAppender::s_act = [&] {
      isReopening = true;
      wait(mayEnd);
    };
    InterruptingMemory memory([&] {
      (isUnderWay ? mayEnd : mayBegin) = true;
      soon(isUnderWay ? isOver : isReopening);
    });
    auto* const rolling = new (memory.placeWith(i / 2 * STEP)) ActingRollingAppender(&layout, "i");
    rolling->setMaximumFileSize(5);
    mayEnd = false;
    isReopening = false;
    std::thread rollingOver([&] {
      wait(mayBegin);
      append(*rolling, "aaa");
      isOver = true;
    });
    if (isUnderWay) {
      wait(isReopening);
    }
    TestEvent event("file", "INFO", "b");
    isUnderWay ? memory.takeEnd() : memory.takeBeginning();
    std::thread logging([&] {
      rolling->LOGAppenderSkeleton::doAppend(&event);  // which does not use the beginning
      isLogged = true;
    });
    soon(isLogged);
    memory.giveBack();
    mayBegin = true;
    mayEnd = true;
    rollingOver.join();
    logging.join();
    const Lines now = Workplace::lines("i");
    const Lines before = Workplace::lines("i.1");
    EXPECT_EQ(
        std::count(now.begin(), now.end(), "b") + std::count(before.begin(), before.end(), "b"), 1)
        << i;
    rolling->~ActingRollingAppender();
    fs::remove("i");
    fs::remove("i.1");
  }
  EXPECT_EQ(Workplace::noted(CLOSED), 0);
}

TEST_F(FileAppenderTest, ReportsHeldLinesThatAreLostWhenItIsClosed) {
  constexpr rlim_t LIMIT = 100000;
  Workplace::write("log", std::string(LIMIT - 4, 'x'));
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit limit{LIMIT, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &limit);
  LOGFileAppender appender(&layout, "log");
  TestEvent event("file", "INFO", "does not fit");
  ZEBFmHold hold;
  event.setHold(&hold);
  appender.doAppend(&event);
  EXPECT_EQ(Workplace::noted("ERROR"), 0);
  appender.close();
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(Workplace::errors("LOGQuietWriter::write -- ZEBThrowable exception occurred"), 1);
}
#endif

TEST_F(RollingFileAppenderTest, TakesOtherOptionsWhileAThreadLogs) {
  append(appender, "aaa");
  std::atomic<int> rollovers{0};
  const Repeating logging({[&] {
    append(appender, "aaa");
    ++rollovers;
  }});
  for (int i = 1; rollovers < 500; ++i) {
    appender.setMaximumFileSize(static_cast<unsigned>(4 + i % 2));
    appender.setMaxBackupIndex(i % 4);
    appender.setFile("r.log");
    appender.setAppend(i % 2);
    appender.setBufferedIO(i % 2);
    appender.setBufferSize(i);
    EXPECT_EQ(appender.getFileCopy(), I18NString("r.log"));
    EXPECT_EQ(appender.getBufferSize(), i) << "a rollover has set back what was set during it";
    EXPECT_EQ(appender.getBufferedIO(), i % 2);
    EXPECT_EQ(appender.getMaxBackupIndex() + appender.getMaximumFileSize(), i % 4 + 4 + i % 2);
    EXPECT_LE(appender.getAppend(), 1);
  }
}

TEST_F(RollingFileAppenderTest, RollsOverTheFileThatItsNameIs) {
  append(appender, "a");
  Workplace::write("n2.log", "found\r\n");
  appender.setFile("n2.log");
  append(appender, "b");  // fills r.log
  EXPECT_EQ(Workplace::lines("r.log"), (Lines{"a", "b"}));
  EXPECT_EQ(Workplace::lines("n2.log.1"), (Lines{"found"}));
  EXPECT_EQ(Workplace::read("n2.log"), "");
  LOGRollingFileAppender other(&layout, "n2.log");
  appender.setFile("n3.log");
  other.rollOver();
  append(appender, "ccc");
  EXPECT_EQ(Workplace::errors(
                "LOGRollingFileAppender::rollOver ---- Could not rename [n3.log] to [n3.log.1]"),
            0)
      << "it has followed to the other name before";
  EXPECT_EQ(Workplace::lines("n3.log.1"), (Lines{"ccc"}));

  appender.close();
  Workplace::clearDiagnostics();
  appender.rollOver();  // of a file without a name
  EXPECT_TRUE(fs::exists("n3.log"));
  EXPECT_EQ(Workplace::lines("n3.log.1"), (Lines{"ccc"}));
  EXPECT_EQ(Workplace::errors("LOGRollingFileAppender::rollOver ---- Could not rename [] to [.1]"),
            1);
  append(appender, "refused");
  EXPECT_EQ(Workplace::noted(CLOSED), 1);
  appender.setFile("n3.log", 1, 0, 1);
  append(appender, "d");
  EXPECT_EQ(Workplace::lines("n3.log"), (Lines{"d"}));
}

TEST_F(RollingFileAppenderTest, FindsTheBackupsOfAHugeIndexByReadingTheDirectory) {
  appender.setMaxBackupIndex(2000000000);
  Workplace::write("r.log.07", "not a backup");
  Workplace::write("r.log.41", "41");
  for (const char* const text : {"aaa", "bbb", "ccc"}) {
    append(appender, text);
  }
  EXPECT_EQ(Workplace::read("r.log.44"), "41");
  EXPECT_EQ(Workplace::lines("r.log.3"), (Lines{"aaa"}));
  EXPECT_TRUE(fs::exists("r.log.07"));
}

TEST_F(RollingFileAppenderTest, RollsAFileOverThatIsBeyondCounting) {
  Workplace::write("r.log", "");
  fs::resize_file("r.log", std::uintmax_t{5} << 30);  // sparse
  append(appender, "a");
  EXPECT_EQ(fs::file_size("r.log"), 0U);
  EXPECT_GT(fs::file_size("r.log.1"), std::uintmax_t{5} << 30);
}

TEST_F(RollingFileAppenderTest, GoesOnInTheFileThatAnotherAppenderHasBegun) {
  LOGRollingFileAppender other(appender);
  other.setFile("./r.log");  // the same file
  append(other, "1");
  append(appender, "aaa");
  append(appender, "b");
  append(other, "");  // fills it, because it counts what it finds there
  append(appender, "c");
  EXPECT_EQ(Workplace::lines("r.log.1"), (Lines{"b", ""}));
  EXPECT_EQ(Workplace::lines("r.log"), (Lines{"c"}));
}

TEST_F(RollingFileAppenderTest, ResolvesANewNameBeforeItsTurnAtTheFile) {
  LOGRollingFileAppender other(appender);
  append(other, "1");
  append(appender, "b");
  bool hasActed = false;
  // Another thread rolls the file over while the name is resolved.
  const ActingResolver resolver([&] {
    if (!std::exchange(hasActed, true)) {
      std::thread([&] { append(other, "aaa"); }).join();
    }
  });
  appender.setFile("r.log");
  append(appender, "aaa");
  EXPECT_TRUE(hasActed);
  append(appender, "c");
  EXPECT_EQ(Workplace::lines("r.log"), (Lines{"c"}));
}

TEST_F(RollingFileAppenderTest, StaysClosedWhenClosedDuringRollovers) {
  appender.setMaximumFileSize(1);
  std::thread logging([this] {
    for (int i = 0; i < 300; ++i) {
      append(appender, "x");
    }
  });
  while (!fs::exists("r.log.1")) {
    std::this_thread::yield();
  }
  appender.close();
  const auto written = fs::last_write_time("r.log.1");
  logging.join();
  append(appender, "refused");
  EXPECT_EQ(fs::last_write_time("r.log.1"), written);
  EXPECT_EQ(Workplace::read("r.log"), "");
}

TEST_F(RollingFileAppenderTest, AppendsAfterAFailedReopening) {
  for (const int configured : {0, 1}) {
    fs::create_directory("d");
    LOGRollingFileAppender moving(&layout, "d/r.log", configured);
    moving.setMaximumFileSize(5);
    fs::rename("d", "away");
    append(moving, "aaa");  // rolls over without its directory
    append(moving, "lost");
    fs::create_directory("d");
    Workplace::write("d/r.log", "x\r\n");  // of another appender or process
    append(moving, "b");
    EXPECT_EQ(Workplace::lines("d/r.log.1"), (Lines{"x", "b"})) << configured;
    moving.close();
    fs::remove_all("d");
    fs::remove_all("away");
  }
}
