// The examples, each run as a process in a fresh directory. What they print and the files that they
// write are what their output.txt shows, which the documentation quotes.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/Workplace.h"

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

const std::string EXAMPLES = LOG4ZEB_SOURCES "/examples/";

/// A folder of examples/, and the arguments of each run of its program, which finds the documents
/// of the folder in its working directory, and an empty directory logs.
struct Example {
  const char* name;
  std::vector<Words> runs;
  bool areLinesInAnyOrder = false;  // where several threads log
};

const Example TABLE[] = {
    {"asynchronous", {{"asynchronous.xml"}}},
    {"custom_appender", {{"custom_appender.xml"}}},
    {"custom_filter", {{"custom_filter.xml"}}},
    {"custom_layout", {{"custom_layout.xml"}}},
    {"first", {{"first.xml"}}},
    {"library", {{"library.xml"}}},
    {"logger_factory", {{"logger_factory.xml"}}},
    {"patterns", {{}}},
    {"processes", {{"processes.xml", "north", "2"}, {"processes.xml", "south", "2"}}},
    {"reload", {{"reload.xml"}}},
    {"renderer", {{"renderer.xml"}, {"renderer.xml", "own"}, {"loaded.xml"}}},
    {"server", {{"server.xml", "1"}}, true},
    {"untrusted", {{"untrusted.xml"}}},
};

std::ostream& operator<<(std::ostream& stream, const Example& example) {
  return stream << example.name;
}

/// The text without what differs from run to run: times, numbers of threads and of processes, and
/// the carriage returns.
std::string normalised(std::string text) {
  static const std::pair<const char*, const char*> SAME[] = {
      {"\r", ""},
      {R"(\d\d? (Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec)[a-z]* \d{4})", "DATE"},
      {R"((Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec) [ \d]\d\b)", "DATE"},
      {R"(\d{4}-\d\d-\d\d)", "DATE"},
      {R"(\d\d:\d\d:\d\d(,\d{3})?)", "TIME"},
      {R"re((timestamp="|"time":)\d+)re", "$1TIME"},
      {R"re(thread="\d+")re", "thread=THREAD"},
      {R"(\[\d+\])", "[THREAD]"},
      {R"(\b(process|pid) \d+)", "$1 PROCESS"},
      {R"(_\d+\.)", "_PROCESS."},
  };
  for (const auto& [pattern, word] : SAME) {
    text = std::regex_replace(text, std::regex(pattern), word);
  }
  return text;
}

std::string sortedLines(const std::string& text) {
  std::istringstream stream(text);
  std::multiset<std::string> lines;
  for (std::string line; std::getline(stream, line);) {
    lines.insert(line);
  }
  std::string sorted;
  for (const std::string& line : lines) {
    sorted += line + "\n";
  }
  return sorted;
}

/// Runs the program and returns what a terminal would show.
std::string runProgram(const std::string& name, const Words& arguments) {
  std::string shown = "$ " + name;
  for (const std::string& argument : arguments) {
    shown += " " + argument;
  }
  ChildProcess program(LOG4ZEB_PROGRAMS "/" + name + LOG4ZEB_PROGRAM_SUFFIX, arguments);
  shown += "\n" + program.receive();
  EXPECT_EQ(program.wait().exitCode, 0);
  return shown + program.errors();
}

/// Every file below the working directory that is not in `known`, with its name.
std::string writtenFiles(const std::set<std::string>& known) {
  std::set<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(".")) {
    const std::string name = entry.path().lexically_relative(".").generic_u8string();
    if (entry.is_regular_file() && known.count(name) == 0 &&
        name.compare(0, 15, "standard-error-") != 0) {
      names.insert(name);
    }
  }
  std::string shown;
  for (const std::string& name : names) {
    shown += "$ cat " + name + "\n" + Workplace::read(name);
  }
  return shown;
}

std::string nameOf(const testing::TestParamInfo<Example>& info) { return info.param.name; }

class Examples : public testing::TestWithParam<Example> {};

}  // namespace

TEST_P(Examples, DoWhatTheirOutputShows) {
  const Workplace workplace;
  const Example& example = GetParam();
  std::set<std::string> known{"log4zeb.log"};
  for (const auto& entry : fs::directory_iterator(EXAMPLES + example.name)) {
    if (entry.path().extension() == ".xml") {
      known.insert(entry.path().filename().u8string());
      fs::copy_file(entry.path(), entry.path().filename());
    }
  }
  fs::create_directory("logs");
  std::string shown;
  for (const Words& arguments : example.runs) {
    shown += runProgram(example.name, arguments);
  }
  shown += writtenFiles(known);
  std::string expected = normalised(Workplace::read(EXAMPLES + example.name + "/output.txt"));
  std::string actual = normalised(shown);
  if (example.areLinesInAnyOrder) {
    expected = sortedLines(expected);
    actual = sortedLines(actual);
  }
  EXPECT_EQ(actual, expected) << "All of it:\n" << shown;
  EXPECT_EQ(Workplace::diagnosticsWith("log4zeb:ERROR"), 0);
}

INSTANTIATE_TEST_SUITE_P(, Examples, testing::ValuesIn(TABLE), nameOf);

TEST(ExamplesTable, HasEveryProgram) {
  std::set<std::string> tested;
  for (const Example& example : TABLE) {
    tested.insert(example.name);
  }
  std::set<std::string> there;
  for (const auto& entry : fs::directory_iterator(EXAMPLES)) {
    const std::string name = entry.path().filename().u8string();
    if (fs::exists(entry.path() / (name + ".cpp"))) {
      there.insert(name);
    }
  }
  EXPECT_EQ(tested, there);
}

TEST(ProcessesExample, WritesEveryLineOfFourAtOnceWholeAndOnce) {
  constexpr int COUNT = 2000;
  const Workplace workplace;
  fs::create_directory("logs");
  fs::copy_file(EXAMPLES + "processes/processes.xml", "processes.xml");
  std::multiset<std::string> expected;
  std::vector<std::unique_ptr<ChildProcess>> processes;
  for (const std::string name : {"north", "east", "south", "west"}) {
    for (int line = 1; line <= COUNT; ++line) {
      expected.insert("DATE TIME INFO worker." + name + " - line " + std::to_string(line) + " of " +
                      std::to_string(COUNT));
    }
    processes.push_back(
        std::make_unique<ChildProcess>(LOG4ZEB_PROGRAMS "/processes" LOG4ZEB_PROGRAM_SUFFIX,
                                       Words{"processes.xml", name, std::to_string(COUNT)}));
  }
  for (const auto& process : processes) {
    EXPECT_EQ(process->wait().exitCode, 0) << process->errors();
  }
  std::multiset<std::string> lines;
  for (const std::string& line : Workplace::lines("logs/shared.log")) {
    // A date has 23 characters; normalised() would take seconds for so many lines.
    lines.insert("DATE TIME" + line.substr(std::min<std::size_t>(line.size(), 23)));
  }
  EXPECT_TRUE(lines == expected) << lines.size() << " lines of " << expected.size();
}
