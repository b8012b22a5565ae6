// The examples, each run as a process in a fresh directory. What they print and the files that they
// write are what their output.txt shows, which the documentation quotes.

#include <gtest/gtest.h>

#include <filesystem>
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
#ifdef LOG4ZEB_HAS_FMT
    {"formatting", {{"formatting.xml"}}},
#endif
    {"getting_started", {{"getting_started.xml"}}},
    {"library", {{"library.xml"}}},
    {"logger_factory", {{"logger_factory.xml"}}},
    {"migrating", {{}}},
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

std::string programOf(const std::string& name) {
  return LOG4ZEB_PROGRAMS "/" + name + LOG4ZEB_PROGRAM_SUFFIX;
}

/// Runs the program and returns what a terminal would show.
std::string runProgram(const std::string& name, const Words& arguments) {
  std::string shown = "$ " + name;
  for (const std::string& argument : arguments) {
    shown += " " + argument;
  }
  ChildProcess program(programOf(name), arguments);
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
  EXPECT_EQ(Workplace::noted("log4zeb:ERROR"), 0);
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
#ifndef LOG4ZEB_HAS_FMT
  there.erase("formatting");
#endif
  EXPECT_EQ(tested, there);
}
