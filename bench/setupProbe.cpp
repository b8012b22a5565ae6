// Reads one document with many loggers and appenders in a fresh process, and prints as JSON how
// long it took and what was allocated. Loggers live as long as the process, so a second reading in
// the same process would measure something else.
//
//   setupProbe LOGGERS APPENDERS

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "bench/AllocationCounter.h"
#include "bench/QuietLoggers.h"
#include "bench/ScratchDirectory.h"
#include "bench/Workload.h"
#include "core/LOGHierarchy.h"
#include "log4zeb.h"

namespace {

namespace fs = std::filesystem;

void writeAppenders(std::ostream& out, const fs::path& directory, int appenders) {
  for (int i = 0; i < appenders; ++i) {
    out << "  <appender name=\"FILE" << i << "\" class=\"LOGFileAppender\">\n"
        << "    <param name=\"File\" value=\"" << (directory / std::to_string(i)).string()
        << ".log\"/>\n"
        << "    <layout class=\"LOGPatternLayout\">\n"
        << "      <param name=\"ConversionPattern\" value=\"" << workload::PATTERN << "\"/>\n"
        << "    </layout>\n  </appender>\n";
  }
}

void writeLoggers(std::ostream& out, int loggers, int appenders) {
  for (int i = 0; i < loggers; ++i) {
    out << "  <logger name=\"" << QuietLoggers::name(i) << "\">\n    <level value=\"INFO\"/>\n"
        << "    <appender-ref ref=\"FILE" << i % appenders << "\"/>\n  </logger>\n";
  }
}

fs::path writeDocument(const fs::path& directory, int loggers, int appenders) {
  fs::path document = directory / "setup.xml";
  std::ofstream out(document);
  out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      << "<log4j:configuration xmlns:log4j=\"urn:log4zeb\">\n";
  writeAppenders(out, directory, appenders);
  writeLoggers(out, loggers, appenders);
  out << "  <root>\n    <level value=\"WARN\"/>\n  </root>\n</log4j:configuration>\n";
  return document;
}

/// How many loggers have what the document gives each.
long loggersSetUp() {
  const auto& hierarchy = dynamic_cast<const LOGHierarchy&>(*LOGManager::getLoggerRepository());
  const std::vector<LOGLogger*> all = hierarchy.getAllLoggers();
  return std::count_if(all.begin(), all.end(), [](const LOGLogger* logger) {
    return logger->getLevel() != nullptr && logger->snapshotOfAppenders().size() == 1;
  });
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const int loggers = argumentCount == 3 ? std::atoi(arguments[1]) : 0;
  const int appenders = argumentCount == 3 ? std::atoi(arguments[2]) : 0;
  if (loggers < 1 || appenders < 1) {
    std::cerr << "usage: setupProbe LOGGERS APPENDERS\n";
    return 2;
  }
  AllocationCounter::requireThatLibraryIsCounted();
  const ScratchDirectory directory;
  const I18NString document = writeDocument(directory.path(), loggers, appenders).string();
  AllocationCounter::start();
  const auto begin = std::chrono::steady_clock::now();
  const int result = LOG4ZEBConfigurator::initialize(document);
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
  const AllocationCounter::Count count = AllocationCounter::stop();
  if (result == 0 || loggersSetUp() != loggers) {
    std::cerr << "setupProbe: the document was not applied\n";
    return 1;
  }
  std::cout << "{\"probe\": \"setup\", \"loggers\": " << loggers << ", \"appenders\": " << appenders
            << ", \"seconds\": " << seconds.count() << ", \"allocations\": " << count.allocations
            << ", \"bytes\": " << count.bytes << "}\n";
  LOG4ZEBConfigurator::shutdown();
  return 0;
}
