// The services that the library stands on, with real threads, files and processes.

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "platform/ZEBAssertError.h"
#include "platform/ZEBDatagramSocket.h"
#include "platform/ZEBFileLockRW.h"
#include "platform/ZEBFmDir.h"
#include "platform/ZEBFmHold.h"
#include "platform/ZEBList.h"
#include "platform/ZEBSocketAddress.h"
#include "platform/ZEBSystemError.h"
#include "platform/ZEBThread.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBThreadRWGuard.h"
#include "platform/ZEBTranslate.h"
#include "platform/ZEBUtConvert.h"
#include "platform/ZEBUtProcess.h"
#include "support/Threads.h"
#include "support/Workplace.h"

namespace fs = std::filesystem;

namespace {

using namespace std::chrono_literals;

#ifdef _WIN32
constexpr int NO_SUCH_DIRECTORY = ERROR_PATH_NOT_FOUND;
constexpr int NO_PERMISSION = ERROR_ACCESS_DENIED;
#else
constexpr int NO_SUCH_DIRECTORY = ENOENT;
constexpr int NO_PERMISSION = EACCES;
#endif

/// Runs a function as a thread of the library's.
class Running : public ZEBThread {
 public:
  template <typename Body>
  explicit Running(Body body) : m_body(std::move(body)) {
    start();
  }
  ~Running() override { join(); }
  void run() override { m_body(); }

 private:
  std::function<void()> m_body;
};

std::vector<int> elements(const ZEBList<int>& list) {
  std::vector<int> found;
  for (const int value : list) {
    found.push_back(value);
  }
  return found;
}

ZEBList<int> listOf(const std::vector<int>& values) {
  ZEBList<int> list;
  for (const int value : values) {
    list.add(value);
  }
  return list;
}

#ifndef _WIN32
/// Runs the body in a child process, which must end by itself with all it checks true.
template <typename Body>
void expectInChild(Body body) {
  EXPECT_EXIT(std::exit(body() ? 0 : 1), ::testing::ExitedWithCode(0), "");
}

/// The same in a process with other threads: what these have allocated counts as lost in the child,
/// so the child ends without looking for leaks.
template <typename Body>
void expectInChildBesideThreads(Body body) {
  EXPECT_EXIT(std::_Exit(body() ? 0 : 1), ::testing::ExitedWithCode(0), "");
}
#endif

class Files : public ::testing::Test {
 protected:
  static std::int64_t writeText(ZEBFmFile& file, const std::string& text) {
    return file.write(text.data(), text.size());
  }

 private:
  Workplace m_workplace;
};

using FmFile = Files;
using FmDir = Files;

}  // namespace

TEST(List, KeepsPositionsValidWhileOthersComeAndGo) {
  ZEBList<int> list = listOf({1, 2, 3, 4});
  ZEBListIterator<int> second = ++list.begin();
  ZEBListIterator<int> position = list.remove(list.begin());
  EXPECT_EQ(position, second);
  position = list.remove(++position);
  EXPECT_EQ(*position, 4);
  list.add(5);
  EXPECT_EQ(*second, 2);
  EXPECT_EQ(elements(list), (std::vector<int>{2, 4, 5}));
  EXPECT_EQ(list.size(), 3U);
  while (!position.atEnd()) {
    position = list.remove(position);
  }
  EXPECT_EQ(position, list.end());
  ++position;
  EXPECT_TRUE(position.atEnd());
  EXPECT_EQ(elements(list), std::vector<int>{2});
}

TEST(List, FreesItsElementsAlsoWhenACopyFails) {
  struct Fragile {
    std::shared_ptr<int> copiesLeft;
    explicit Fragile(std::shared_ptr<int> left) : copiesLeft(std::move(left)) {}
    Fragile(Fragile&&) = default;
    Fragile(const Fragile& other) : copiesLeft(other.copiesLeft) {
      if (--*copiesLeft < 0) {
        throw std::runtime_error("no more copies");
      }
    }
  };
  const auto left = std::make_shared<int>(2);
  {
    ZEBList<Fragile> list;
    for (int i = 0; i < 3; ++i) {
      list.add(Fragile(left));
    }
    EXPECT_THROW(ZEBList<Fragile>(list).clear(), std::runtime_error);
    EXPECT_EQ(left.use_count(), 4);
  }
  EXPECT_EQ(left.use_count(), 1);
}

TEST(Thread, RunsOnceAndSurvivesWhatItsBodyThrows) {
  std::atomic<int> runs{0};
  Running thread([&] {
    ++runs;
    throw std::runtime_error("ends the thread only");
  });
  thread.start();
  thread.join();
  thread.join();
  EXPECT_EQ(runs, 1);
}

TEST(Thread, MayJoinAndDestroyItself) {
  class Itself : public ZEBThread {
   public:
    explicit Itself(std::atomic<bool>& done) : ZEBThread(262144), m_done(done) {}
    void run() override {
      join();
      std::atomic<bool>& done = m_done;
      delete this;
      done = true;
    }

   private:
    std::atomic<bool>& m_done;
  };
  std::atomic<bool> done{false};
  (new Itself(done))->start();
  while (!done) {
    ZEBThread::sleep(1);
  }
}

#ifdef _WIN32
TEST(Thread, HasTheNumberThatTheSystemShows) {
  EXPECT_EQ(ZEBUtProcess::currentProcessId(), static_cast<int>(GetCurrentProcessId()));
  EXPECT_EQ(ZEBThread::currentThreadId(), GetCurrentThreadId());
  std::uint64_t inside = 0;
  Running([&] { inside = ZEBThread::currentThreadId(); }).join();
  EXPECT_NE(inside, ZEBThread::currentThreadId());
}
#else
TEST(Thread, HasTheNumberThatTheSystemShows) {
  EXPECT_EQ(ZEBThread::currentThreadId(), static_cast<std::uint64_t>(getpid()));
  EXPECT_EQ(ZEBUtProcess::currentProcessId(), getpid());
  std::uint64_t inside = 0;
  bool isTask = false;
  Running([&] {
    inside = ZEBThread::currentThreadId();
    isTask = ZEBFmDir::exists("/proc/self/task/" + std::to_string(inside), ZEBFmDir::DIRECTORY);
  }).join();
  EXPECT_NE(inside, ZEBThread::currentThreadId());
  EXPECT_TRUE(isTask);
  // A forked child is a new thread of a new process.
  expectInChild(
      [] { return ZEBThread::currentThreadId() == static_cast<std::uint64_t>(getpid()); });
}
#endif

TEST(CriticalSection, IsHeldUntilItsOwnerLeftAsOftenAsItEntered) {
  static ZEBThreadCriticalSection section(0);
  std::atomic<bool> entered{false};
  section.enter();
  EXPECT_TRUE(section.tryEnter()) << "again";
  Running other([&] {
    const ZEBThreadGuard guard(section);
    entered = true;
  });
  section.leave();
  Running([] { EXPECT_FALSE(section.tryEnter()); }).join();
  ZEBThread::sleep(30);
  EXPECT_FALSE(entered);
  section.leave();
  other.join();
  EXPECT_TRUE(entered);
}

TEST(FileLock, LetsWritersInOneAtATime) {
  ZEBFmFile file;
  ZEBFileLockRW lock;
  ZEBFileLockRW ofSameFile;
  lock.setFile(&file);
  ofSameFile.setFile(&file);
  std::atomic<bool> written{false};
  auto writing = std::make_unique<ZEBThreadRWGuard>(lock, ZEBThreadRWGuard::WRITING);
  Running writer([&] {
    const ZEBThreadRWGuard alone(ofSameFile, ZEBThreadRWGuard::WRITING);
    written = true;
  });
  EXPECT_THROW(ZEBThreadRWGuard(lock, ZEBThreadRWGuard::WRITING), ZEBSystemError)
      << "one thread cannot write twice at once";
  ZEBThread::sleep(30);
  EXPECT_FALSE(written);
  writing.reset();
  writer.join();
  EXPECT_TRUE(written);
}

#ifndef _WIN32
TEST(CriticalSection, IsFreeInTheChildOfAForkThatALostThreadHolds) {
#ifdef __SANITIZE_THREAD__
  GTEST_SKIP() << "the thread sanitizer takes the lock for the lost thread's";
#endif
  ZEBThreadCriticalSection section;
  ZEBFileLockRW file;
  ZEBThreadCriticalSection own;
  const ZEBThreadGuard ownGuard(own);
  Gate held;
  Running holder([&] {
    const ZEBThreadGuard guard(section);
    const ZEBThreadGuard again(section);
    const ZEBThreadRWGuard writing(file, ZEBThreadRWGuard::WRITING);
    held.pass();
  });
  ASSERT_TRUE(held.isReached());
  expectInChildBesideThreads([&] {
    alarm(10);  // which ends it, should it wait
    bool isRight = !section.isHeldElsewhere() && own.isHeldHere() && section.tryEnter();
    section.leave();
    for (int round = 0; round < 2; ++round) {
      const ZEBThreadRWGuard writing(file, ZEBThreadRWGuard::WRITING);
      const ZEBThreadGuard guard(section);
      isRight = isRight && section.isHeldHere();
    }
    return isRight && !section.isHeldHere();  // however often the lost thread had taken it
  });
  held.open();
  holder.join();
}

TEST(ForkGate, HasAForkWaitForAThreadThatHoldsALock) {
  ZEBThreadCriticalSection section;
  int first = 0;
  int second = 0;  // the same as the first, whenever the lock is free
  const Repeating writer({[&] {
    const ZEBThreadGuard guard(section);
    ++first;
    ZEBThread::sleep(1);
    ++second;
  }});
  for (int round = 0; round < 20; ++round) {
    expectInChildBesideThreads([&] { return first == second; });
  }
}
#endif

TEST_F(FmFile, OpensAsItsModesSay) {
  Workplace::write("log", "old\n");
  ZEBFmFile file;
  EXPECT_EQ(file.isOpen(), 0);
  for (const int mode : {ZEBFmFile::WRITE, ZEBFmFile::APPEND}) {
    EXPECT_EQ(file.open("log", mode), 1);
    EXPECT_EQ(file.seek(0, ZEBFmFile::ORIGIN_BEGIN), 0);
    EXPECT_EQ(writeText(file, "more\n"), 5) << "every write goes to the end";
  }
  EXPECT_EQ(file.size(), 14);
  EXPECT_EQ(Workplace::read("log"), "old\nmore\nmore\n");
  EXPECT_EQ(file.open("log", ZEBFmFile::TRUNCATE), 1);
  EXPECT_EQ(file.size(), 0);
  EXPECT_EQ(file.open("new", ZEBFmFile::WRITE), 1);
  EXPECT_EQ(file.getName(), "new");
  EXPECT_EQ(ZEBFmDir::exists("new", ZEBFmDir::READ_WRITE_FILE), 1);
  EXPECT_EQ(file.open("absent/log", ZEBFmFile::APPEND), 0);
  EXPECT_EQ(file.getLastError(), NO_SUCH_DIRECTORY);
  EXPECT_EQ(file.isOpen(), 0);
  EXPECT_EQ(writeText(file, "x"), -1);
  EXPECT_EQ(file.seek(0, ZEBFmFile::ORIGIN_END), -1);
  EXPECT_EQ(file.close(), 0) << "closing what is not open fails and harms nothing";
}

TEST_F(FmFile, CutsItsBufferOnlyBetweenRecords) {
  ZEBFmFile file;
  ASSERT_EQ(file.open("log", ZEBFmFile::APPEND), 1);
  file.setBufferSize(10);
  writeText(file, "aaaa");
  writeText(file, "bbbb");
  EXPECT_EQ(Workplace::read("log"), "");
  EXPECT_EQ(file.size(), 8);
  writeText(file, "cccc");
  EXPECT_EQ(Workplace::read("log"), "aaaabbbb");
  writeText(file, "longer than the buffer");
  EXPECT_EQ(Workplace::read("log"), "aaaabbbbcccclonger than the buffer");
  writeText(file, "d");
  EXPECT_EQ(file.flush(), 1);
  EXPECT_EQ(file.size(), 35);
  writeText(file, "e");
  file.setBufferSize(0);
  writeText(file, "f");
  EXPECT_EQ(Workplace::read("log"), "aaaabbbbcccclonger than the bufferdef");
  file.setBufferSize(10);
  writeText(file, "g");
  EXPECT_EQ(file.close(), 1);
  EXPECT_EQ(Workplace::read("log").back(), 'g');
}

#ifdef _WIN32
TEST_F(FmFile, AttachesToNothingInAProcessWithoutStandardStreams) {
  const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  ZEBFmFile attached;
  for (const HANDLE none : {static_cast<HANDLE>(nullptr), INVALID_HANDLE_VALUE,
                            reinterpret_cast<HANDLE>(std::intptr_t{0xFFFFFC})}) {
    SetStdHandle(STD_OUTPUT_HANDLE, none);
    EXPECT_EQ(attached.attachStandard(ZEBFmFile::STANDARD_OUTPUT), 0);
    EXPECT_EQ(attached.getLastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(writeText(attached, "x"), -1);
  }
  SetStdHandle(STD_OUTPUT_HANDLE, output);
}
#else
TEST_F(FmFile, WritesItsBufferAtTheEndOfTheProcess) {
  expectInChild([] {
    static ZEBFmFile* const neverClosed = new ZEBFmFile;
    neverClosed->open("log", ZEBFmFile::APPEND);
    neverClosed->setBufferSize(1000);
    return writeText(*neverClosed, "last words") == 10 && Workplace::read("log").empty();
  });
  EXPECT_EQ(Workplace::read("log"), "last words");
}

TEST_F(FmFile, IsNotWaitedForAtTheEndOfTheProcessByMoreThanSeconds) {
  expectInChild([] {
    alarm(60);  // ends the process where waiting does not
    static ZEBFmFile* const stuck = new ZEBFmFile;
    static ZEBFmFile* const other = new ZEBFmFile;
    bool held = mkfifo("pipe", 0600) == 0;
    const int reader = open("pipe", O_RDONLY | O_NONBLOCK);  // which never reads
    held = held && stuck->open("pipe", ZEBFmFile::APPEND) == 1;
    held = held && other->open("log", ZEBFmFile::APPEND) == 1;
    stuck->setBufferSize(10);
    other->setBufferSize(1000);
    held = held && writeText(*other, "last words") == 10;
    const int capacity = fcntl(reader, F_GETPIPE_SZ);
    std::thread([=] { writeText(*stuck, std::string(2 * capacity, 'x')); }).detach();
    for (int size = 0; size < capacity; ioctl(reader, FIONREAD, &size)) {
      ZEBThread::sleep(1);
    }
    return held;
  });
  EXPECT_EQ(Workplace::read("log"), "last words");
}

TEST_F(FmFile, NeitherClosesNorTakesTheStandardStreams) {
  expectInChild([] {
    bool held = std::freopen("stdout", "w", stdout) != nullptr;
    ZEBFmFile attached;
    held = held && attached.attachStandard(ZEBFmFile::STANDARD_OUTPUT) == 1;
    held = held && writeText(attached, "library ") == 8 && attached.close() == 1;
    std::fputs("program", stdout);
    held = held && std::fflush(stdout) == 0 && Workplace::read("stdout") == "library program";
    close(STDOUT_FILENO);
    held = held && attached.attachStandard(ZEBFmFile::STANDARD_OUTPUT) == 0;
    ZEBFmFile file;
    held = held && file.open("log", ZEBFmFile::APPEND) == 1;
    ZEBDatagramSocket socket;
    held = held && socket.open(ZEBSocketAddress("127.0.0.1")) == 1 && dup(STDOUT_FILENO) == -1;
    return held && ::write(STDOUT_FILENO, "x", 1) == -1;
  });
}

TEST_F(FmFile, FollowsAStandardStreamThatTheProgramLeadsElsewhere) {
  expectInChild([] {
    const auto lead = [](int descriptor) {
      return dup2(descriptor, STDOUT_FILENO) == STDOUT_FILENO && close(descriptor) == 0;
    };
    ZEBFmFile attached;
    const auto append = [&](const std::string& text) {
      return attached.seek(0, ZEBFmFile::ORIGIN_END) == 0 && writeText(attached, text) >= 0;
    };
    bool held = true;
    for (const auto& [first, flags] :
         {std::pair("before", 0), {"before", O_APPEND}, {"/dev/null", 0}}) {
      held = held && lead(open(first, flags | O_CREAT | O_WRONLY, 0600)) &&
             attached.attachStandard(ZEBFmFile::STANDARD_OUTPUT) == 1 && append("1");
      int ends[2];
      char piped = 0;
      held = held && pipe(ends) == 0 && lead(ends[1]) && append("2") &&
             read(ends[0], &piped, 1) == 1 && piped == '2' && close(ends[0]) == 0;
      held = held && !append("lost") && attached.getLastError() == EPIPE;
    }
    sigset_t blocked;
    pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    held = held && sigismember(&blocked, SIGPIPE) == 0;
    Workplace::write("after", "kept");
    return held && lead(open("after", O_WRONLY)) && append("3") &&
           Workplace::read("after") == "kept3";
  });
}

TEST_F(FmFile, IsNotInheritedByOtherPrograms) {
  ZEBFmFile file;
  ASSERT_EQ(file.open("uninherited", ZEBFmFile::APPEND), 1);
  EXPECT_NE(std::system("ls -l /proc/self/fd | grep -q uninherited"), 0);
}
#endif

#ifndef _WIN32
TEST_F(FmFile, LosesOfHeldRecordsOnlyThoseThatCannotBeWritten) {
  expectInChild([] {
    const rlimit limit{30, 100};
    ZEBFmFile file;
    file.setLateFailureText("late");
    bool held = setrlimit(RLIMIT_FSIZE, &limit) == 0 && file.open("log", ZEBFmFile::APPEND) == 1;
    ZEBFmHold hold;
    hold.begin(file);
    for (const char* const record : {"aaaaaaa\n", "far too long for what is left of it\n", "c\n"}) {
      held = held && writeText(file, record) == static_cast<int>(std::strlen(record));
    }
    held = held && Workplace::read("log").empty() && file.size() == 46;
    const ZEBFmFile::Losses losses = hold.handOver();
    return held && losses.records == 2 && losses.error == EFBIG && losses.fileName == "log" &&
           losses.text == std::string("late") && file.takeLostBytes() == 38 &&
           file.takeLostBytes() == 0 && hold.handOver().records == 0;
  });
  const std::string blank(20, ' ');
  EXPECT_EQ(Workplace::read("log"), "aaaaaaa\n" + blank + "\r\n")
      << "a blank line stands for the part that there was room for";
}

TEST_F(FmFile, WritesHeldRecordsAtTheLatestWhenItIsUsedOtherwise) {
  ZEBFmHold hold;
  {
    ZEBFmFile file;
    const auto holdRecord = [&](const char* record) {
      hold.begin(file);
      return writeText(file, record) > 0 && file.size() > 0;
    };
    ASSERT_TRUE(file.open("log", ZEBFmFile::APPEND) == 1 && holdRecord("1"));
    EXPECT_EQ(Workplace::read("log"), "");
    hold.handOver();
    EXPECT_EQ(Workplace::read("log"), "1");
    writeText(file, "2");
    EXPECT_EQ(Workplace::read("log"), "12") << "what follows is not held";
    holdRecord("3");
    file.endHold();
    writeText(file, "4");
    EXPECT_EQ(Workplace::read("log"), "1234") << "held records come first";
    expectInChild([&] { return Workplace::read("log") == "1234" && file.size() == 4; });
    holdRecord("5");
    expectInChild([&] { return Workplace::read("log") == "12345" && file.close() == 1; });
    holdRecord(std::string(65536, '6').c_str());
    EXPECT_EQ(Workplace::read("log").size(), 5U) << "a buffer full";
    holdRecord("7");
    EXPECT_EQ(Workplace::read("log").size(), 65541U);
  }
  EXPECT_EQ(Workplace::read("log").size(), 65542U);
  EXPECT_EQ(hold.handOver().records, 0) << "of a file that is no more";
}

#endif

TEST_F(FmDir, TestsTypeAndPermissions) {
  Workplace::write("file", "");
  EXPECT_EQ(ZEBFmDir::exists("file", ZEBFmDir::READ_WRITE_FILE), 1);
  EXPECT_EQ(ZEBFmDir::exists("file", ZEBFmDir::DIRECTORY), 0);
  EXPECT_EQ(ZEBFmDir::exists(".", ZEBFmDir::DIRECTORY), 1);
  EXPECT_EQ(ZEBFmDir::exists(".", ZEBFmDir::READ_WRITE_FILE), 0);
  EXPECT_EQ(ZEBFmDir::exists("absent", ZEBFmDir::READ_WRITE_FILE), 0);
  fs::permissions("file", fs::perms::owner_read);
  EXPECT_EQ(ZEBFmDir::exists("file", ZEBFmDir::READ_WRITE_FILE), 0);
  fs::permissions("file", fs::perms::owner_all);
}

TEST_F(FmDir, RenamesReplacingRemovesAndLists) {
  Workplace::write("from", "new");
  Workplace::write("to", "old");
  EXPECT_NE(ZEBFmDir::renameFile("from", "to"), 0);
  EXPECT_EQ(Workplace::read("to"), "new");
  EXPECT_EQ(ZEBFmDir::renameFile("from", "to"), 0);
  EXPECT_EQ(ZEBFmDir::list("."), std::vector<std::string>{"to"});
  EXPECT_NE(ZEBFmDir::removeFile("to"), 0);
  EXPECT_EQ(ZEBFmDir::removeFile("to"), 0);
  EXPECT_TRUE(ZEBFmDir::list("absent").empty());
}

TEST_F(FmDir, TakesNamesInEveryScriptAndOfAnyLength) {
  std::string name = "\xD0\xBB\xD0\xBE\xD0\xB3-\xE6\x97\xA5-\xF0\x9F\x98\x80";
  for (int depth = 0; depth < 12; ++depth) {
    name += "/" + std::string(30, 'd');
    // The name of the longest of these directories is longer than plain names may be on Windows.
    fs::create_directories(fs::u8path(ZEBFmDir::absolutePath(name.substr(0, 200)).toStdString()));
  }
  const std::string directory = name.substr(0, 200);
  ZEBFmFile file;
  ASSERT_EQ(file.open(directory + "/" + std::string(100, 'f'), ZEBFmFile::APPEND), 1);
  EXPECT_EQ(ZEBFmDir::list(directory), std::vector<std::string>{std::string(100, 'f')});
}

TEST_F(FmDir, MovesWhatIsOpen) {
  ZEBFmFile moved;
  ZEBFmFile replaced;
  ASSERT_EQ(moved.open("log", ZEBFmFile::APPEND) + replaced.open("log.1", ZEBFmFile::APPEND), 2);
  EXPECT_EQ(ZEBFmDir::renameFile("log", "log.1"), 1);
  EXPECT_EQ(ZEBFmDir::renameFile("log.1", "log.2"), 1);
  EXPECT_EQ(writeText(moved, "moved") + writeText(replaced, "gone"), 9);
  EXPECT_EQ(Workplace::read("log.2"), "moved");
  EXPECT_EQ(ZEBFmDir::removeFile("log.2"), 1);
  Workplace::write("log.2", "a new file");
  EXPECT_EQ(Workplace::read("log.2"), "a new file") << "the name is free at once";
  moved.close();
  replaced.close();
  EXPECT_EQ(ZEBFmDir::list("."), std::vector<std::string>{"log.2"});
}

TEST_F(FmDir, SplitsAndCompletesNames) {
  const auto split = [](const I18NString& name) {
    const auto [directory, file] = ZEBFmDir::splitPath(name);
    return directory + "|" + file;
  };
  EXPECT_EQ(split("file"), "|file");
  EXPECT_EQ(split("a/b/file"), "a/b|file");
  EXPECT_EQ(split("/file"), "/|file");
  EXPECT_EQ(split("a/"), "a|");
  Workplace::write("file", "");
  EXPECT_EQ(ZEBFmDir::exists(ZEBFmDir::absolutePath("file"), ZEBFmDir::READ_WRITE_FILE), 1);
#ifdef _WIN32
  EXPECT_EQ(split("C:file"), "C:|file");
  EXPECT_EQ(split("C:\\file"), "C:\\|file");
  EXPECT_EQ(split("C:\\a\\b/file"), "C:\\a\\b|file");
  EXPECT_EQ(ZEBFmDir::absolutePath("file").substring(1, 3), ":\\");
  EXPECT_EQ(ZEBFmDir::absolutePath("C:\\a\\..\\b"), "C:\\b");
#else
  EXPECT_TRUE(ZEBFmDir::absolutePath("file").startsWith("/"));
  EXPECT_EQ(ZEBFmDir::absolutePath("/a/../b"), "/a/../b");
  fs::create_directory("caf\xe9");
  fs::current_path("caf\xe9");
  EXPECT_EQ(ZEBFmDir::absolutePath("file"), "file") << "a directory that is not UTF-8";
#endif
}

TEST(Convert, SaturatesAndStopsAtTheFirstOtherCharacter) {
  constexpr std::int32_t MOST = std::numeric_limits<std::int32_t>::max();
  constexpr std::int32_t LEAST = std::numeric_limits<std::int32_t>::min();
  const std::pair<const char*, std::int32_t> cases[] = {{" \t42MB", 42},
                                                        {"-7", -7},
                                                        {"+7", 7},
                                                        {"", 0},
                                                        {"x1", 0},
                                                        {"- 1", 0},
                                                        {"010", 10},
                                                        {"2147483647", MOST},
                                                        {"2147483648", MOST},
                                                        {"-2147483649", LEAST},
                                                        {"99999999999999999999999", MOST},
                                                        {"-99999999999999999999999", LEAST}};
  for (const auto& [text, number] : cases) {
    EXPECT_EQ(ZEBUtConvert::toInt(text), number) << text;
  }
  using Limits = std::numeric_limits<std::int64_t>;
  EXPECT_EQ(ZEBUtConvert::handleCvt(Limits::min()), std::to_string(Limits::min()));
  EXPECT_EQ(ZEBUtConvert::handleCvt(UINT64_MAX), std::to_string(UINT64_MAX));
  EXPECT_EQ(ZEBUtConvert::padded(7, 3), "007");
  EXPECT_EQ(ZEBUtConvert::padded(1234, 3), "1234");
}

TEST(Translate, MakesEveryStandardExceptionOneOfTheLibrarys) {
  EXPECT_EQ(zebTranslate("here", 1, [] { return 5; }), 5);
  EXPECT_THROW(zebTranslate("here", 1, [] { throw std::bad_alloc(); }), ZEBOutOfMemoryError);
  EXPECT_THROW(zebTranslate("here", 1, [] { throw 5; }), int);
  try {
    zebTranslate("outer", 2,
                 [] { zebTranslate("inner", 1, [] { throw std::runtime_error("a reason"); }); });
    FAIL() << "nothing was thrown";
  } catch (const ZEBStdExceptionError& error) {
    EXPECT_STREQ(error.what(), "a reason");
    EXPECT_EQ(error.getSource(), "inner");
    ASSERT_EQ(error.getBackTrace().size(), 2U);
    EXPECT_EQ(error.getBackTrace()[1].source, "outer");
    EXPECT_EQ(error.getBackTrace()[1].line, 2);
  }
}

TEST(Throwable, RaisesItsFullType) {
  const std::unique_ptr<ZEBThrowable> error =
      std::make_unique<ZEBSystemError>("a file", NO_PERMISSION, "here", 3);
  EXPECT_THROW(error->raise(), ZEBSystemError);
  EXPECT_TRUE(error->getDescription().startsWith("a file: "));
  EXPECT_NE(error->getDescription().indexOf("denied"), I18NString::NOT_FOUND);
  try {
    const int* const event = nullptr;
    ZEB_ASSERT(event, "there", 4);
    FAIL() << "nothing was thrown";
  } catch (const ZEBAssertError& failed) {
    EXPECT_STREQ(failed.what(), "ZEB_ASSERT(event);");
    EXPECT_EQ(failed.getLine(), 4);
  }
}
