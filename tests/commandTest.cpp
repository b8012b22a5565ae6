// The command log4zeb, run as processes, and its parts that read and judge lines.

#include <gtest/gtest.h>
#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#endif

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "core/LOGLevel.h"
#include "support/Command.h"
#include "support/Documents.h"
#include "support/OpenReader.h"
#include "support/Texts.h"
#include "support/Threads.h"
#include "support/Workplace.h"
#include "tools/LineLevel.h"
#include "tools/LineReader.h"

namespace {

constexpr const char* LOG_FILE = "out.log";

/// A document whose root logger has a file appender and the given level.
std::string document(const std::string& pattern, const std::string& level,
                     const std::string& file) {
  return documents::whole(documents::file("FILE", file, documents::pattern(pattern)) +
                          documents::root({"FILE"}, level));
}

void writeDocument(const std::string& pattern = "%p %c|%m%n", const std::string& level = "DEBUG") {
  Workplace::write("log.xml", document(pattern, level, LOG_FILE));
}

/// Puts another document in the place of that one at once, with a later time.
void replaceDocument(const std::string& text) {
  const auto before = std::filesystem::last_write_time("log.xml");
  Workplace::write("new.xml", text);
  std::filesystem::last_write_time("new.xml", before + std::chrono::seconds(1));
  std::filesystem::rename("new.xml", "log.xml");
}

std::string console(const std::string& name) {
  return documents::appender(name, "LOGConsoleAppender", documents::layout("LOGSimpleLayout"));
}

/// A document whose root logger has a console appender. Unused where no test of a lost reader is
/// built.
[[maybe_unused]] std::string consoleDocument() {
  return documents::whole(console("OUT") + documents::root({"OUT"}, "DEBUG"));
}

using Words = std::vector<std::string>;

/// The words of a command line that logs through the document of writeDocument().
Words logCommand(const Words& more = {}) {
  Words words{"log", "--config", "log.xml"};
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

/// Runs the command to its end, with the text as its standard input.
Outcome run(const Words& arguments, const std::string& input = "") {
  Workplace::write("input", input);
  return runProgram(LOG4ZEB_COMMAND, arguments, "input");
}

}  // namespace

TEST(LineLevel, IsTheFirstWholeWordInAnyCase) {
  EXPECT_EQ(LineLevel::firstIn("disk FATAL, then error"), LOGLevel::FATAL_RANK);
  EXPECT_EQ(LineLevel::firstIn("[Warning] hot"), LOGLevel::WARN_RANK);
  EXPECT_EQ(LineLevel::firstIn("level=warn"), LOGLevel::WARN_RANK);
  EXPECT_EQ(LineLevel::firstIn("debug"), LOGLevel::DEBUG_RANK);
  EXPECT_EQ(LineLevel::firstIn("2 errors, gpg_error, error2, informed; Info"), LOGLevel::INFO_RANK);
  EXPECT_EQ(LineLevel::firstIn("\xC3\xA9rror \xC3\xA9"
                               "error"),
            std::nullopt);
  EXPECT_EQ(LineLevel::firstIn(""), std::nullopt);
}

TEST(LineReader, KeepsEveryByteButOneLineEnd) {
  const std::string longLine(3'000'000, 'x');
  std::istringstream in("a\r\n\nb\r\r\n" + std::string("nul\0byte\r", 9) + "\n" + longLine +
                        "\nlast");
  LineReader reader(in);
  Words lines;
  while (reader.next()) {
    lines.emplace_back(reader.line());
  }
  EXPECT_EQ(lines, (Words{"a", "", "b\r", std::string("nul\0byte", 8), longLine, "last"}));
  EXPECT_FALSE(reader.failed());
}

TEST(Command, LogsEachLineAsOneEventAndReports) {
  const Workplace workplace;
  writeDocument();
  const Outcome outcome =
      run(logCommand({"--logger", "kernel", "--level", "warn"}), "one\r\n\nthree error\n\xFFlast");
  EXPECT_EQ(outcome.exitCode, 0);
  // Standard error is no terminal here, so there is nothing but the report.
  EXPECT_EQ(outcome.errors, "log4zeb: 4 lines read, 4 logged\n");
  EXPECT_EQ(Workplace::lines(LOG_FILE),
            (Words{"WARN kernel|one", "WARN kernel|", "WARN kernel|three error",
                   "WARN kernel|\xEF\xBF\xBDlast"}));
}

TEST(Command, TakesTheLevelFromTheLineAndCountsWhatIsEnabled) {
  const Workplace workplace;
  writeDocument("%p|%m%n", "WARN");
  Workplace::write("lines.txt", "an Error\nplain\n<debug> x\nwarning: y\n");
  const Outcome outcome = run(logCommand({"--level-from-line", "lines.txt"}));
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.errors, "log4zeb: 4 lines read, 2 logged\n");
  EXPECT_EQ(Workplace::lines(LOG_FILE), (Words{"ERROR|an Error", "WARN|warning: y"}));
}

TEST(Command, NamesWhatIsWrongWithTheDocument) {
  const Workplace workplace;
  const auto complaint = [](const std::string& document) {
    Workplace::write("bad.xml", document);
    const Outcome outcome = run({"log", "--config", "bad.xml", "--logger", "a.b"}, "lost\n");
    EXPECT_EQ(outcome.exitCode, 3) << document;
    EXPECT_FALSE(mentions(outcome.errors, "lines read")) << document;
    return outcome.errors;
  };
  EXPECT_TRUE(mentions(complaint("<log4j:configuration><root>"), "log4zeb check bad.xml"));
  EXPECT_TRUE(mentions(complaint("<wrong><root/></wrong>"), "cannot apply"));
  EXPECT_TRUE(mentions(complaint(""), "cannot apply"));
  EXPECT_TRUE(mentions(complaint("<log4j:configuration/>"), "configures nothing"));
  EXPECT_TRUE(
      mentions(complaint(documents::whole(console("A") + "<root/>")), "configures nothing"));
  EXPECT_TRUE(mentions(complaint(documents::whole(console("A") + documents::logger("a.c", {"A"}))),
                       "no appender for the logger 'a.b'"));

  for (const Words& more : {Words{}, Words{"--watch"}}) {
    Words words{"log", "--config", "none.xml"};
    words.insert(words.end(), more.begin(), more.end());
    const Outcome missing = run(words, "lost\n");
    EXPECT_EQ(missing.exitCode, 3);
    EXPECT_TRUE(mentions(missing.errors, "cannot read the configuration document 'none.xml' ("));
  }
}

TEST(Command, RefusesADocumentThatLetsNothingBeLogged) {
  const Workplace workplace;
  using documents::appender;
  const std::string simple = documents::layout("LOGSimpleLayout");
  const std::string upToInfo =
      "<filter class='LOGLevelRangeFilter'>" + documents::param("LevelMax", "INFO") + "</filter>";
  const std::string denyAll = "<filter class='LOGDenyAllFilter'/>";
  const std::string accepting = "<filter class='LOGStringMatchFilter'>" +
                                documents::param("StringToMatch", "x") + "</filter>" + denyAll;
  const std::string queue = documents::async("A", {"B"});
  const std::string type = "LOGConsoleAppender";
  const struct {
    const char* rootAttributes;
    std::string appenders;
    const char* level;
    bool isGood;
  } CASES[] = {
      {"", console("A"), "OFF", false},
      {" threshold='OFF'", console("A"), "DEBUG", false},
      {"", appender("A", type), "DEBUG", false},
      {"", appender("A", type, simple + denyAll), "DEBUG", false},
      {"", appender("A", type, simple + upToInfo), "WARN", false},
      {"", appender("A", "LOGTCPSocketAppender"), "DEBUG", false},
      {"", appender("A", "LOGFileAppender", simple), "DEBUG", false},
      {"", documents::async("A", {}), "DEBUG", false},
      {"", queue + appender("B", type, simple + denyAll), "DEBUG", false},
      {"", queue + appender("B", type, simple + accepting), "FATAL", true},
      {"", appender("A", type, simple + accepting), "FATAL", true},
  };
  for (const auto& [rootAttributes, appenders, level, isGood] : CASES) {
    Workplace::write("log.xml", "<log4j:configuration" + std::string(rootAttributes) + ">" +
                                    appenders + documents::root({"A"}, level) +
                                    "</log4j:configuration>");
    const Outcome outcome = run(logCommand(), "line\n");
    EXPECT_EQ(outcome.exitCode, isGood ? 0 : 3) << rootAttributes << appenders << level;
    EXPECT_EQ(mentions(outcome.errors, "lets no line be written or sent by the root logger"),
              !isGood)
        << outcome.errors;
  }
}

#ifndef _WIN32
TEST(Command, TellsWhyAGoodDocumentIsNotUsed) {
  const Workplace workplace;
  writeDocument();
  const std::string notUtf8 = "log\xFF.xml";
  std::filesystem::copy_file("log.xml", notUtf8);
  Workplace::write("early.xml", Workplace::read("log.xml"));
  const timespec beginning[2] = {};
  ASSERT_EQ(utimensat(AT_FDCWD, "early.xml", beginning, 0), 0);
  ASSERT_EQ(mkfifo("pipe.xml", 0600), 0);
  const struct {
    Words arguments;
    int exitCode;
    const char* reason;
  } CASES[] = {
      {{"log", "--config", notUtf8}, 3, "its name is not UTF-8"},
      {{"check", notUtf8}, 2, "the name of the file is not UTF-8"},
      {{"log", "--watch", "--config", "early.xml"}, 3, "not after 1970-01-01"},
      {{"log", "--watch", "--config", "pipe.xml"}, 3, "a pipe or a device is not watched"},
      {{"log", "--config", "early.xml"}, 0, ""},
  };
  for (const auto& [arguments, exitCode, reason] : CASES) {
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.exitCode, exitCode) << reason;
    const std::string said = outcome.output + outcome.errors;
    EXPECT_TRUE(mentions(said, reason)) << said;
    EXPECT_FALSE(mentions(said, "well-formed")) << said;
  }
}

TEST(Command, EndsWhenNobodyReadsItsConsoleAnyMore) {
  const auto shell = [](const std::string& line) {
    runProgram("/bin/sh", {"-c", line, LOG4ZEB_COMMAND});
  };
  for (const std::string input : {"yes", "(echo y; sleep 2)"}) {
    const Workplace workplace;
    Workplace::write("log.xml", consoleDocument());
    shell(input + " | (timeout 10 \"$0\" log --config log.xml 2>errors; echo $? >code) | head -1");
    EXPECT_EQ(Workplace::read("code"), "5\n");
    EXPECT_TRUE(mentions(Workplace::read("errors"), "nobody reads standard output any more\n"));
    EXPECT_TRUE(mentions(Workplace::read("errors"), " logged\n"));

    // Without a console appender, the end of the reader of standard output does not matter.
    writeDocument("%m%n");
    shell("(sleep 0.3; echo late) | (\"$0\" log --config log.xml; echo $? >code) | true");
    EXPECT_EQ(Workplace::read("code"), "0\n");
    EXPECT_EQ(Workplace::lines(LOG_FILE), Words{"late"});
  }
}

TEST(Command, ExitsWith5WhenStandardOutputCannotBeWritten) {
  const Workplace workplace;
  writeDocument();
  Workplace::write("lines", "a line\n");
  Workplace::write("console.xml", consoleDocument());
  Workplace::write("queued.xml",
                   documents::whole(console("OUT") + documents::async("QUEUE", {"OUT"}) +
                                    documents::root({"QUEUE"}, "DEBUG")));
  const auto run = [](const std::string& arguments, const std::string& output) {
    // Nobody reads what is written to 4.
    return runProgram("/bin/sh", {"-c",
                                  "rm -f pipe; mkfifo pipe; exec 3<>pipe 4>pipe 3>&-; \"$0\" " +
                                      arguments + " " + output,
                                  LOG4ZEB_COMMAND});
  };
  const std::string fullDisk = std::string(">") + Workplace::FULL_DISK;
  for (const std::string& output : {fullDisk, std::string(">&4"), std::string(">&-")}) {
    for (const char* const arguments :
         {"check log.xml", "check --json log.xml", "--help", "log --help"}) {
      const Outcome outcome = run(arguments, output);
      EXPECT_EQ(outcome.exitCode, 5) << arguments << output;
      EXPECT_EQ(outcome.errors, "log4zeb: cannot write to standard output\n")
          << arguments << output;
    }
    const Outcome page = run("page -", output);
    EXPECT_EQ(page.exitCode, 5) << output;
    EXPECT_TRUE(mentions(page.errors, "cannot write the page (")) << page.errors;
    for (const char* const document : {"console.xml", "queued.xml"}) {
      const Outcome log = run(std::string("log lines --config ") + document, output);
      EXPECT_EQ(log.exitCode, 5) << document << output;
      EXPECT_TRUE(mentions(log.errors, "standard output")) << log.errors;
      EXPECT_TRUE(mentions(log.errors, "1 lines read, 1 logged\n")) << log.errors;
    }
    EXPECT_EQ(run("log lines --config log.xml", output).exitCode, 0) << output;
  }
  EXPECT_EQ(run("log lines --config queued.xml", ">out").exitCode, 0);
  EXPECT_EQ(Workplace::lines("out"), Words{"a line"});
}
#endif

TEST(Command, NamesWhatIsWrongWithTheInput) {
  const Workplace workplace;
  writeDocument();
  std::filesystem::create_directory("directory");
  for (const char* const name : {"missing.txt", "directory"}) {
    const Outcome outcome = run(logCommand({name}));
    EXPECT_EQ(outcome.exitCode, 4);
    EXPECT_TRUE(mentions(outcome.errors, std::string("cannot read the input file '") + name));
  }
  EXPECT_EQ(runProgram(LOG4ZEB_COMMAND, logCommand(), "directory").exitCode, 4);
}

TEST(Command, RefusesBadArguments) {
  const Workplace workplace;
  writeDocument();
  for (const Words& arguments :
       {Words{}, Words{"nonsense"}, Words{"log"}, logCommand({"--level", "LOUD"}),
        logCommand({"a", "b"}), logCommand({"--watch-delay", "5"}),
        logCommand({"--watch", "--watch-delay", "0"})}) {
    EXPECT_EQ(run(arguments, "lost\n").exitCode, 2);
  }
  EXPECT_TRUE(mentions(run({"nonsense"}).errors, "no subcommand 'nonsense'"));
  EXPECT_TRUE(mentions(run({"--bogus"}).errors, "no option '--bogus'; see log4zeb --help"));
  for (const Words& arguments :
       {Words{"log", "--confg", "x"}, Words{"log", "--confg=x"}, logCommand({"--confg", "x"})}) {
    EXPECT_TRUE(mentions(run(arguments).errors, "no option '--confg'; see log4zeb log --help"));
  }
  EXPECT_TRUE(mentions(run(logCommand({"--level", "LOUD"})).errors, "'LOUD' is not a level"));
  EXPECT_FALSE(std::filesystem::exists(LOG_FILE));
}

#ifndef _WIN32
TEST(Command, AnswersAStopSignalWhileTheInputIsSilent) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const Workplace workplace;
    // The console shows when the lines have been logged.
    Workplace::write("log.xml", consoleDocument());
    ChildProcess command(LOG4ZEB_COMMAND, logCommand({"--watch"}), "");
    command.send("one\ntwo\nnot yet a li");
    EXPECT_EQ(command.receive(10), "one\r\ntwo\r\n");
    command.signal(signal);
    // The input stays open, so only the signal can end the process; it closes its output then.
    EXPECT_EQ(command.receive(), "one\r\ntwo\r\n");
    EXPECT_EQ(command.wait().exitCode, 128 + signal);
    EXPECT_EQ(command.errors(), "log4zeb: stopped by signal " + std::to_string(signal) +
                                    "\nlog4zeb: 2 lines read, 2 logged\n");
  }
}
#endif

TEST(Command, AppliesEditsOfAWatchedDocumentWhileItLogs) {
  const Workplace workplace;
  writeDocument("%m%n");
  ChildProcess command(LOG4ZEB_COMMAND, logCommand({"--watch", "--watch-delay", "5"}), "");
  Words sent;
  // Sends lines, one at a time, until one arrives in that file, and says whether one did.
  const auto logsTo = [&](const std::string& file) {
    const std::size_t before = Workplace::lines(file).size();
    for (int i = 0; i < 1000 && Workplace::lines(file).size() == before; ++i) {
      sent.push_back("line " + std::to_string(sent.size()));
      command.send(sent.back() + "\n");
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return Workplace::lines(file).size() > before;
  };
  EXPECT_TRUE(logsTo(LOG_FILE));
  replaceDocument(document("%m%n", "DEBUG", "second.log"));
  EXPECT_TRUE(logsTo("second.log"));
  command.endInput();
  EXPECT_EQ(command.wait().exitCode, 0);
  const std::string count = std::to_string(sent.size());
  EXPECT_EQ(command.errors(), "log4zeb: " + count + " lines read, " + count + " logged\n");
  Words logged;
  for (const char* const file : {LOG_FILE, "second.log"}) {
    const Words lines = Workplace::lines(file);
    logged.insert(logged.end(), lines.begin(), lines.end());
  }
  EXPECT_EQ(logged, sent);
}

TEST(Command, FourProcessesLoseNoLineOfAFileThatIsRolledOverWhileItIsRead) {
  constexpr int PROCESSES = 4;
  constexpr int ROUNDS = 50;
  constexpr int LINES_A_ROUND = 100;
  const Workplace workplace;
  writeDocument("%c|%m%n");
  std::string rolling = document("%c|%m%n", "DEBUG", LOG_FILE);
  rolling.replace(rolling.find("LOGFileAppender'>"), 17,
                  "LOGRollingFileAppender'><param name='MaximumFileSize' value='4000'/>"
                  "<param name='MaxBackupIndex' value='1000'/>");
  Workplace::write("rolling.xml", rolling);
  std::vector<std::unique_ptr<ChildProcess>> processes;
  const auto start = [&](const std::string& configuration) {
    const std::string name = std::to_string(processes.size());
    processes.push_back(std::make_unique<ChildProcess>(
        LOG4ZEB_COMMAND, Words{"log", "--config", configuration, "--logger", name}, ""));
  };
  int sent = 0;  // to each process
  const auto send = [&](int lines) {
    std::string text;
    for (const int end = sent + lines; sent < end; ++sent) {
      text += std::to_string(sent) + "\n";
    }
    for (const auto& process : processes) {
      process->send(text);
    }
  };

  // Those that only append have the file open before the first rollover, and keep it afterwards.
  for (int process = 1; process < PROCESSES; ++process) {
    start("log.xml");
  }
  send(1);
  while (Workplace::lines(LOG_FILE).size() < PROCESSES - 1) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  start("rolling.xml");
  processes.back()->send("0\n");
  std::atomic<std::size_t> bytesRead{0};
  Repeating reader({[&] {
    OpenReader open(LOG_FILE);
    bytesRead += open.isOpen() ? open.readOn().size() : 0;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }});
  for (int round = 0; round < ROUNDS; ++round) {
    send(LINES_A_ROUND);
  }
  for (const auto& process : processes) {
    EXPECT_EQ(process->wait().exitCode, 0);
  }
  reader.stop();
  EXPECT_GT(bytesRead, 0U);

  std::vector<std::string> files{LOG_FILE};
  for (int backup = 1; std::filesystem::exists(LOG_FILE + ("." + std::to_string(backup)));
       ++backup) {
    files.insert(files.begin(), LOG_FILE + ("." + std::to_string(backup)));
  }
  EXPECT_GT(files.size(), 5U);
  std::vector<int> next(PROCESSES, 0);
  for (const std::string& file : files) {
    for (const std::string& line : Workplace::lines(file)) {
      const auto process = static_cast<std::size_t>(line.at(0) - '0');
      ASSERT_EQ(line, std::to_string(process) + "|" + std::to_string(next.at(process)++)) << file;
    }
  }
  EXPECT_EQ(next, std::vector<int>(PROCESSES, sent));
}
