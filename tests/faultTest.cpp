// The file appenders while the operating system's calls fail, one after the other, and on a disk
// that is full.

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <set>
#include <thread>

#include "appenders/LOGAsyncAppender.h"
#include "appenders/LOGRollingFileAppender.h"
#include "core/LOGLogLog.h"
#include "core/LOGLogger.h"
#include "core/LOGManager.h"
#include "layouts/LOGLayout.h"
#include "support/FaultyCalls.h"
#include "support/Texts.h"
#include "support/Workplace.h"

namespace fs = std::filesystem;

namespace {

using Fault = FaultyCalls::Fault;

constexpr const char* LOST[] = {"Writer::write -- ZEBThrowable exception occurred",
                                "Attempted to append to closed appender named ["};
constexpr const char* CLOSE_FAILED = "LOGQuietWriter::close -- ZEBThrowable exception occurred";
constexpr const char* NOT_RENAMED = "rollOver ---- Could not rename [";
constexpr const char* NOT_REMOVED = "rollOver ---- Could not remove the file: ";
constexpr const char* NOT_OPENED = "LOGGING DISABLED -- UNABLE TO OPEN LOG FILE.";

constexpr std::size_t LINE_SIZE = 22;
constexpr int LINES_IN_FILE = 3;
constexpr int LINES_IN_BUFFER = 2;

/// Through no wrapped call.
std::string diagnosticsSince(std::uintmax_t position) {
  std::ifstream file("log4zeb.log", std::ios::binary);
  file.seekg(static_cast<std::streamoff>(position));
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string lineNumbered(int number) {
  const std::string digits = std::to_string(number);
  return "line " + std::string(4 - digits.size(), '0') + digits + " abcdefghij";
}

int count(const std::string& text, const std::string& part) {
  return static_cast<int>(countOf(part, text));
}

int lossesIn(const std::string& diagnostics) {
  return count(diagnostics, LOST[0]) + count(diagnostics, LOST[1]);
}

/// What is found in log files.
struct Found {
  std::multiset<std::string> lines;
  std::vector<std::string> halves;  // whatever is neither a line nor blank
  bool inOrder = true;

  void add(const std::string& text) {
    std::string last;
    std::size_t begin = 0;
    while (begin < text.size()) {
      const std::size_t end = std::min(text.find("\r\n", begin), text.size());
      const std::string line = text.substr(begin, end - begin);
      const bool isEnded = end != text.size();
      begin = end + 2;
      if (isEnded && line.find_first_not_of(" ") == std::string::npos) {
        continue;
      }
      if (isEnded && line.size() + 2 == LINE_SIZE && line == lineNumbered(std::atoi(&line[5]))) {
        inOrder = inOrder && last < line;
        last = line;
        lines.insert(line);
      } else if (line != "before") {
        halves.push_back(line);
      }
    }
  }
};

struct Scenario {
  const char* name;
  bool isRolling;
  bool isAsync;
  int append;
  int buffered;
  int immediate;
  int backups;
};

void PrintTo(const Scenario& scenario, std::ostream* stream) { *stream << scenario.name; }

std::unique_ptr<LOGFileAppender> fileAppender(const Scenario& scenario, LOGLayout& layout,
                                              const std::string& name) {
  std::unique_ptr<LOGFileAppender> file;
  if (scenario.isRolling) {
    auto rolling = std::make_unique<LOGRollingFileAppender>();
    rolling->setMaximumFileSize(LINE_SIZE * LINES_IN_FILE);
    rolling->setMaxBackupIndex(scenario.backups);
    file = std::move(rolling);
  } else {
    file = std::make_unique<LOGFileAppender>();
  }
  file->setLayout(&layout);
  file->setFile(name);
  file->setAppend(scenario.append);
  file->setBufferedIO(scenario.buffered);
  file->setBufferSize(LINE_SIZE * LINES_IN_BUFFER);
  file->setImmediateFlush(scenario.immediate);
  return file;
}

constexpr int FAULTY_LINES = 10;
constexpr int LINES = 14;
constexpr int MOST_FAILURES = 20 * FAULTY_LINES;  // in a run; some calls for each line

/// A file appender set up as the scenario says that logs in a directory whose files are faulty for
/// the first lines.
class LoggingRun {
 public:
  LoggingRun(const Scenario& scenario, const std::vector<Fault>& plan) : m_scenario(scenario) {
    fs::remove_all("logs");
    fs::create_directory("logs");
    Workplace::write("logs/r.log", "before\r\n");
    Workplace::write("logs/r.log." + std::to_string(scenario.backups), "before\r\n");
    LOGLogLog::debug("begin");
    Workplace::clearDiagnostics();
    FaultyCalls calls(fs::current_path() / "logs", plan);
    log(calls);
    made = calls.made();
    injected = calls.injected();
    destroyed = calls.destroyed();
    diagnostics = Workplace::read("log4zeb.log");
  }

  std::map<std::string, int> made;
  int injected = 0;
  std::vector<FaultyCalls::Destroyed> destroyed;
  std::string diagnostics;
  std::set<std::string> reported;  // lines whose call was followed by the report of a loss

 private:
  void log(FaultyCalls& calls) {
    LOGLayout layout;
    const auto file = fileAppender(m_scenario, layout, "logs/r.log");
    LOGAsyncAppender async;
    LOGLogger* const logger = LOGManager::getLogger("faulty");
    async.addAppender(file.get());
    logger->addAppender(m_scenario.isAsync ? static_cast<LOGAppenderSkeleton*>(&async)
                                           : file.get());
    for (int i = 0; i < LINES; ++i) {
      if (i == FAULTY_LINES / 2 && !m_scenario.isRolling) {
        async.flush(10000);
        file->close();
        file->setFile("logs/r.log", 1, m_scenario.buffered, LINE_SIZE * LINES_IN_BUFFER);
      }
      if (i == FAULTY_LINES) {
        async.flush(10000);
        calls.heal();
      }
      const std::uintmax_t before = fs::file_size("log4zeb.log");
      EXPECT_NO_THROW(logger->info(lineNumbered(i)));
      if (!m_scenario.isAsync && lossesIn(diagnosticsSince(before)) > 0) {
        reported.insert(lineNumbered(i));
      }
    }
    async.flush(10000);
    async.close();
    logger->removeAllAppenders();
    file->close();
  }

  const Scenario& m_scenario;
};

/// Holds the run against the promise, and says what breaks it; empty when nothing does.
class Verdict {
 public:
  Verdict(const Scenario& scenario, const std::vector<Fault>& plan, const LoggingRun& run)
      : m_scenario(scenario), m_plan(plan), m_fault(plan.front()), m_run(run) {
    for (const auto& entry : fs::directory_iterator("logs")) {
      found.add(Workplace::read(entry.path().string()));
    }
    for (const FaultyCalls::Destroyed& destroyed : run.destroyed) {
      found.add(destroyed.content);
      if (destroyed.content != "before\r\n" && !mayDestroy(destroyed)) {
        m_text += " " + destroyed.call + " destroyed " + destroyed.path;
      }
    }
    judgeLines();
    if (plan.size() <= 2) {
      judgeReports();
    }
  }

  Found found;
  std::string text() const {
    std::string text = m_text.empty() ? "" : m_scenario.name;
    for (const Fault& fault : m_text.empty() ? std::vector<Fault>() : m_plan) {
      text += ", " + fault.call + " " + std::to_string(fault.first) + " for " +
              std::to_string(fault.count) + " error " + std::to_string(fault.error);
    }
    return m_text.empty() ? "" : text + ":" + m_text + "\n" + m_run.diagnostics;
  }

 private:
  bool mayDestroy(const FaultyCalls::Destroyed& destroyed) const {
    const std::string oldest = "r.log." + std::to_string(m_scenario.backups);
    const bool isOldest = fs::path(destroyed.path).filename() == oldest;
    const bool isReported = count(m_run.diagnostics, NOT_RENAMED) > 0;
    if (m_fault.call == "stat" && m_fault.error == EACCES) {
      return true;  // where a name may not be looked up, no file can be renamed either
    }
    return destroyed.call == "open" ? m_scenario.backups == 0 || isReported
                                    : isOldest || (destroyed.call == "rename" && isReported);
  }

  void expect(bool held, const std::string& what) { m_text += held ? "" : " " + what; }

  void judgeLines() {
    int missing = 0;
    for (int i = 0; i < LINES; ++i) {
      const std::string line = lineNumbered(i);
      const auto times = found.lines.count(line);
      const bool isReported = m_run.reported.count(line) != 0;
      expect(times <= 1, "twice: " + line);
      expect(times == 0 || !isReported || mayTear(), "reported lost, but there: " + line);
      expect(i < FAULTY_LINES || times == 1, "not there after the fault: " + line);
      missing += times == 0 && !isReported ? 1 : 0;
    }
    int mayMiss = m_scenario.isAsync ? lossesIn(m_run.diagnostics) : 0;
    if (m_scenario.buffered == 1) {
      // With those that a faulty repair took back out of the file.
      mayMiss += static_cast<int>(m_plan.size()) * LINES_IN_BUFFER *
                 count(m_run.diagnostics, CLOSE_FAILED);
    }
    expect(missing <= mayMiss, "missing without report: " + std::to_string(missing));
    expect(found.inOrder, "out of order");
    expect(m_run.injected < MOST_FAILURES, "calls that fail are made again and again");
    for (const std::string& half : found.halves) {
      expect(mayTear() && isReportedHalf(half), "torn: '" + half + "'");
    }
  }

  /// Whether what there is of a lost line could not be taken out of the file.
  bool mayTear() const {
    return std::any_of(m_plan.begin() + 1, m_plan.end(), [](const Fault& fault) {
      return fault.error > 0 && fault.error != EINTR && (fault.count > 1 || fault.call == "lseek");
    });
  }

  bool isReportedHalf(std::string half) const {
    half.erase(half.find_last_not_of(" \r") + 1);  // a part that could be taken out
    const std::string line = half.size() < 9 ? lineNumbered(0) : lineNumbered(std::atoi(&half[5]));
    return line.compare(0, half.size(), half) == 0 && found.lines.count(line) == 0;
  }

  /// Each failing event is reported once, and nothing else is.
  void judgeReports() {
    const bool isHarmless = m_fault.error <= 0 || m_fault.error == EINTR;
    const int failed = isHarmless ? 0 : m_run.injected;
    const struct {
      std::string call;
      const char* text;
      int expected;
    } REPORTS[] = {
        {"open", NOT_OPENED, m_scenario.isRolling ? failed / 2 : 0},  // opening is tried twice
        {"close", CLOSE_FAILED, failed},
        {"rename", NOT_RENAMED, failed},
        {"unlink", NOT_REMOVED, failed}};
    int explained = lossesIn(m_run.diagnostics);
    for (const auto& [call, text, expected] : REPORTS) {
      const int reports = count(m_run.diagnostics, text);
      explained += reports;
      const bool mayFollow = ((call == "rename" || call == "unlink") && m_fault.call == "stat") ||
                             (call == "close" && m_fault.call == "write" && m_scenario.buffered);
      expect(mayFollow || reports == (call == m_fault.call ? expected : 0),
             std::to_string(reports) + " reports of " + call);
    }
    if (isHarmless && m_fault.error != FaultyCalls::SHORT_THEN_FULL &&
        m_fault.error != FaultyCalls::NOTHING) {
      expect(explained == 0, "reports without a failure");
    }
    explained += count(m_run.diagnostics, "LOGQuietWriter::flush -- ZEBThrowable");
    expect(count(m_run.diagnostics, "log4zeb:ERROR ") == explained, "other reports");
  }

  const Scenario& m_scenario;
  const std::vector<Fault>& m_plan;
  const Fault& m_fault;
  const LoggingRun& m_run;
  std::string m_text;
};

/// Judges many runs.
class Tally {
 public:
  void add(const Scenario& scenario, const std::vector<Fault>& plan) {
    const LoggingRun run(scenario, plan);
    const Verdict verdict(scenario, plan, run);
    ++m_runs;
    const int kind = plan.size() > 2 ? m_runs : plan.back().error;
    if (!verdict.text().empty() && m_broken.insert({plan.back().call, kind}).second) {
      ADD_FAILURE() << verdict.text();
    }
  }

 private:
  int m_runs = 0;
  std::set<std::pair<std::string, int>> m_broken;  // of each kind, one is shown
};

constexpr Scenario SCENARIOS[] = {
    {"plain, appending", false, false, 1, 0, 0, 0},
    {"plain, truncating, flushing each line", false, false, 0, 0, 1, 0},
    {"plain, buffered", false, false, 1, 1, 0, 0},
    {"rolling, appending", true, false, 1, 0, 0, 3},
    {"rolling, truncating, flushing each line", true, false, 0, 0, 1, 3},
    {"rolling, buffered", true, false, 1, 1, 0, 3},
    {"rolling, no backups", true, false, 1, 0, 0, 0},
    {"rolling, many backups", true, false, 1, 0, 0, 100},
    {"plain, asynchronous", false, true, 1, 0, 0, 0},
    {"rolling, asynchronous", true, true, 1, 0, 0, 3}};

class FaultTest : public testing::TestWithParam<Scenario> {
 protected:
  Workplace workplace;
  Tally tally;
};

/// A file system of its own in a directory, without any space left.
class FullDisk {
 public:
  static constexpr std::size_t PAGE = 4096;

  explicit FullDisk(const std::string& directory) : m_directory(directory) {
    fs::create_directory(directory);
    const uid_t user = geteuid();
    const gid_t group = getegid();
    const bool isRoot = user == 0;
    if (unshare(isRoot ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER) != 0) {
      m_refusal = std::string("no name space of its own: ") + std::strerror(errno);
      return;
    }
    if (!isRoot) {
      std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
      std::ofstream("/proc/self/setgroups") << "deny";
      std::ofstream("/proc/self/gid_map") << "0 " << group << " 1";
    }
    m_isMounted = mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                  mount("tmpfs", directory.c_str(), "tmpfs", 0, "size=1m") == 0;
    if (!m_isMounted) {
      m_refusal = std::string("no file system of its own: ") + std::strerror(errno);
      return;
    }
    fs::create_directory(directory + "/ballast");
    for (int i = 0; i < 1024; ++i) {
      std::ofstream(pieceNumbered(i)) << std::string(PAGE, 'x');
    }
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;
  ~FullDisk() {
    if (m_isMounted) {
      umount2(m_directory.c_str(), MNT_DETACH);
    }
  }

  /// Why there is none; empty when there is.
  const std::string& refusal() const { return m_refusal; }
  void freeOnePage() { fs::remove(pieceNumbered(m_freed++)); }
  void freeAll() { fs::remove_all(m_directory + "/ballast"); }

 private:
  std::string pieceNumbered(int number) const {
    return m_directory + "/ballast/" + std::to_string(number);
  }

  const std::string m_directory;
  std::string m_refusal;
  bool m_isMounted = false;
  int m_freed = 0;
};

class FullDiskTest : public testing::TestWithParam<Scenario> {
 protected:
  static constexpr int LINES_EACH = 2500;
  static constexpr int FREED_AT = 2000;
  static constexpr int LINES_FOR_EACH_PAGE = 400;  // of 22 bytes, more than fit in

  /// Logs through an appender of its own, into the file that the others write to.
  static void log(const Scenario& scenario, int thread, FullDisk& disk) {
    LOGLayout layout;
    const auto file = fileAppender(scenario, layout, "disk/r.log");
    LOGAsyncAppender async;
    async.addAppender(file.get());
    LOGLogger* const logger = LOGManager::getLogger("thread" + std::to_string(thread));
    logger->addAppender(scenario.isAsync ? static_cast<LOGAppenderSkeleton*>(&async) : file.get());
    for (int i = 0; i < LINES_EACH; ++i) {
      if (thread == 0 && i == FREED_AT) {
        disk.freeAll();
      } else if (thread == 0 && i < FREED_AT && i % LINES_FOR_EACH_PAGE == 0) {
        disk.freeOnePage();
      }
      logger->info(lineNumbered(thread * LINES_EACH + i));
    }
    async.flush(10000);
    async.close();
    logger->removeAllAppenders();
    file->close();
  }

  Workplace workplace;
};

std::string nameOf(const testing::TestParamInfo<Scenario>& info) {
  std::string name;
  for (const char c : std::string(info.param.name)) {
    name += std::isalpha(static_cast<unsigned char>(c)) != 0 ? std::string(1, c) : "";
  }
  return name;
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Files, FaultTest, testing::ValuesIn(SCENARIOS), nameOf);
INSTANTIATE_TEST_SUITE_P(Files, FullDiskTest,
                         testing::Values(SCENARIOS[0], SCENARIOS[2],
                                         Scenario{"rolling", true, false, 1, 0, 0, 3000},
                                         SCENARIOS[8]),
                         nameOf);

TEST_P(FaultTest, LosesOnlyWhatItReportsWhicheverCallFails) {
  const LoggingRun healthy(GetParam(), {});
  ASSERT_GT(healthy.made.at("write"), 0);
  for (const auto& [call, made] : healthy.made) {
    std::vector<int> errors = {ENOSPC, EIO, EACCES, EMFILE, EINTR};
    if (call == "write") {
      errors.insert(errors.end(),
                    {FaultyCalls::SHORT, FaultyCalls::SHORT_THEN_FULL, FaultyCalls::NOTHING});
    }
    for (const int error : errors) {
      for (const int times : {1, 2, 5, error == EINTR ? 20 : FaultyCalls::FOR_EVER}) {
        for (int first = 1; first <= made; ++first) {
          tally.add(GetParam(), {{call, first, times, error}});
        }
      }
    }
  }
}

TEST_P(FaultTest, KeepsLaterLinesWholeWhenTheRepairOfAHalfLineFailsToo) {
  for (const std::string call : {"fstat", "fstatfs", "flock", "lseek", "reopen", "pwrite"}) {
    for (const int error : {EMFILE, EINTR, FaultyCalls::SHORT}) {
      if (error == EMFILE || (error == EINTR && call != "lseek") || call == "pwrite") {
        for (const int repairs : {1, 2, error == EINTR ? 20 : FaultyCalls::FOR_EVER}) {
          for (const int times : {2, 4, FaultyCalls::FOR_EVER}) {
            for (int first = 1; first <= FAULTY_LINES; first += 3) {
              tally.add(GetParam(), {{"write", first, times, FaultyCalls::SHORT_THEN_FULL},
                                     {call, 1, repairs, error}});
            }
          }
        }
      }
    }
  }
}

TEST_P(FullDiskTest, LosesOnlyWhatItReportsUntilThereIsSpaceAgain) {
  FullDisk disk("disk");
  if (!disk.refusal().empty()) {
    GTEST_SKIP() << disk.refusal();
  }
  // Appenders that roll do not share a file.
  const int threads = GetParam().isRolling ? 1 : 2;
  std::thread other;
  if (threads == 2) {
    other = std::thread([&] { log(GetParam(), 1, disk); });
  }
  log(GetParam(), 0, disk);
  if (other.joinable()) {
    other.join();
  }
  Found found;
  for (const auto& entry : fs::directory_iterator("disk")) {
    found.add(Workplace::read(entry.path().string()));
  }
  const std::string diagnostics = diagnosticsSince(0);
  const int reported = lossesIn(diagnostics);
  const int lostAtClosing = threads * LINES_EACH - reported - static_cast<int>(found.lines.size());
  EXPECT_EQ(found.halves, std::vector<std::string>());
  // A thread that is through before there is space again reports its whole buffer at once.
  EXPECT_GE(lostAtClosing, count(diagnostics, CLOSE_FAILED));
  EXPECT_LE(lostAtClosing, count(diagnostics, CLOSE_FAILED) * LINES_IN_BUFFER);
  EXPECT_GT(reported, 0) << "the disk was never full";
  for (int i = 0; i < threads * LINES_EACH; ++i) {
    const auto times = found.lines.count(lineNumbered(i));
    EXPECT_LE(times, 1U) << i;
    EXPECT_TRUE(times == 1 || i < FREED_AT || i >= LINES_EACH) << i << " came after the freeing";
  }
}

TEST(SharedFile, ReceivesALineAnewThatAnotherWriterHasParted) {
  const Workplace workplace;
  fs::create_directory("logs");
  int others = 100;
  const FaultyCalls calls(fs::current_path() / "logs", {{"write", 1, 3, FaultyCalls::SHORT}}, [&] {
    std::ofstream("logs/s.log", std::ios::app) << lineNumbered(others++) << "\r\n";
  });
  LOGLayout layout;
  LOGFileAppender appender(&layout, "logs/s.log");
  LOGLogger* const logger = LOGManager::getLogger("parted");
  logger->addAppender(&appender);
  for (int i = 0; i < 3; ++i) {
    logger->info(lineNumbered(i));
  }
  logger->removeAllAppenders();
  Found found;
  found.add(Workplace::read("logs/s.log"));
  EXPECT_EQ(found.lines,
            (std::multiset<std::string>{lineNumbered(0), lineNumbered(1), lineNumbered(2),
                                        lineNumbered(100), lineNumbered(101), lineNumbered(102)}));
  EXPECT_EQ(found.halves, std::vector<std::string>());
  EXPECT_EQ(lossesIn(diagnosticsSince(0)), 0);
}

TEST(FaultyDiagnostics, NeitherHarmTheLogNorStayAwayAfterwards) {
  const Workplace workplace;
  fs::create_directory("logs");
  for (const std::string call : {"open", "write", "stat", "fstat"}) {
    for (const int error : {EIO, ENOSPC, FaultyCalls::SHORT_THEN_FULL}) {
      for (const int times : {1, 3, FaultyCalls::FOR_EVER}) {
        for (int first = 1; first <= 9 && (error > 0 || call == "write"); first += 2) {
          LOGLogLog::shutdown();
          fs::remove("log4zeb.log");
          FaultyCalls calls("log4zeb.log", {{call, first, times, error}});
          LOGLayout layout;
          LOGRollingFileAppender appender(&layout, "logs/d.log", 0);
          appender.setMaximumFileSize(LINE_SIZE);
          appender.setMaxBackupIndex(5);
          LOGLogger* const logger = LOGManager::getLogger("faulty");
          logger->addAppender(&appender);
          for (int i = 0; i < 5; ++i) {
            EXPECT_NO_THROW(logger->info(lineNumbered(i)));
          }
          logger->removeAllAppenders();
          calls.heal();
          LOGLogLog::warn("later");
          EXPECT_EQ(Workplace::warnings("later"), 1) << call << first << error;
          for (int i = 0; i < 5; ++i) {
            EXPECT_EQ(Workplace::lines("logs/d.log." + std::to_string(5 - i)),
                      std::vector<std::string>{lineNumbered(i)})
                << call << first << error;
          }
        }
      }
    }
  }
}

TEST_P(FaultTest, LosesOnlyWhatItReportsWhenCallsFailAtRandom) {
  constexpr int PLANS = 500;
  std::map<std::string, int> made = LoggingRun(GetParam(), {}).made;
  for (const char* const call : {"flock", "reopen", "pwrite"}) {
    made[call] = 3;
  }
  std::mt19937 random(1);
  const auto below = [&](int end) {
    return static_cast<int>(random() % static_cast<unsigned>(end));
  };
  const std::vector<int> errors = {ENOSPC, EIO, EMFILE, EINTR};
  const std::vector<int> errorsOfWrite = {EIO, FaultyCalls::SHORT, FaultyCalls::SHORT_THEN_FULL};
  for (int i = 0; i < PLANS; ++i) {
    std::vector<Fault> plan;
    for (const auto& [call, times] : made) {
      for (int faults = below(3); faults > 0; --faults) {
        const int error = call == "write" ? errorsOfWrite[below(3)] : errors[below(4)];
        plan.push_back({call, 1 + below(times), 1 + below(4), error});
      }
    }
    plan.resize(std::max<std::size_t>(plan.size(), 3), {"write", 1, 1, EIO});
    tally.add(GetParam(), plan);
  }
}
