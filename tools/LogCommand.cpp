#include "tools/LogCommand.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <vector>

#include "log4zeb.h"
#include "tools/CommandSupport.h"
#include "tools/LineJob.h"
#include "tools/LineLevel.h"
#include "tools/LineLogger.h"
#include "tools/LineReader.h"
#include "tools/StopSignal.h"

namespace {

constexpr const char* STANDARD_INPUT = "-";

constexpr const char* NOTES =
    R"(The number of lines read, and of those whose level was enabled, is reported on standard
error at the end.

Exit codes:
  0        every line was read
  1        unexpected failure, such as no memory
  2        bad arguments
  3        the document cannot be read, or lets nothing be logged
  4        the input cannot be read
  128 + n  ended by signal n, such as 130 after an interrupt; the lines logged until then
           are where they belong)";

bool hasAppenders(LOGLogger& logger) { return !logger.getAllAppenders().atEnd(); }

bool anyLoggerHasAppenders() {
  if (hasAppenders(*LOGManager::getRootLogger())) {
    return true;
  }
  for (LOGObject* const object : LOGManager::getCurrentLoggers()) {
    auto* const logger = dynamic_cast<LOGLogger*>(object);
    if (logger != nullptr && hasAppenders(*logger)) {
      return true;
    }
  }
  return false;
}

bool reachesAppenders(LOGLogger* logger) {
  for (; logger != nullptr; logger = logger->getParent()) {
    if (hasAppenders(*logger)) {
      return true;
    }
    if (logger->getAdditivity() == 0) {
      break;
    }
  }
  return false;
}

LOGLogger* loggerNamed(const std::string& name) {
  return name.empty() ? LOGManager::getRootLogger() : LOGManager::getLogger(name);
}

/// Applies the document and returns the logger; complains and returns null when nothing that is
/// logged through it would arrive anywhere.
LOGLogger* configure(const std::string& document, const std::string& loggerName) {
  if (LOG4ZEBConfigurator::initialize(document) == 0) {
    std::ifstream file;
    if (CommandSupport::openToRead(file, document, "configuration document")) {
      CommandSupport::say("cannot apply the configuration document '" + document +
                          "': it is not well-formed XML with the root element log4j:configuration");
    }
    return nullptr;
  }
  if (!anyLoggerHasAppenders()) {
    CommandSupport::say("the configuration document '" + document +
                        "' configures nothing: no logger has an appender");
    return nullptr;
  }
  LOGLogger* const logger = loggerNamed(loggerName);
  if (!reachesAppenders(logger)) {
    CommandSupport::say(
        "the configuration document '" + document + "' has no appender for " +
        (loggerName.empty() ? "the root logger" : "the logger '" + loggerName + "'"));
    return nullptr;
  }
  return logger;
}

void report(const LineLogger::Counts& counts) {
  CommandSupport::say(std::to_string(counts.read) + " lines read, " +
                      std::to_string(counts.logged) + " logged");
}

/// Ends the process without waiting for the thread that may still wait for input.
[[noreturn]] void endByStopSignal(LineJob::End end, const LineLogger::Counts& counts) {
  const int signal = StopSignal::received();
  CommandSupport::say("stopped by signal " + std::to_string(signal));
  report(counts);
  if (end == LineJob::End::STOPPED) {
    LOG4ZEBConfigurator::shutdown();
  }
  std::_Exit(128 + signal);
}

std::string levelComplaint(const std::string& name) {
  return LineLevel::rankOf(name) ? ""
                                 : "'" + name +
                                       "' is not a level; the levels are DEBUG, INFO, WARN, "
                                       "ERROR and FATAL";
}

}  // namespace

LogCommand::LogCommand(CLI::App& app) {
  CLI::App* const command = app.add_subcommand("log", "Log lines of text, each as one event");
  command->add_option("--config", m_document, "The configuration document")
      ->required()
      ->type_name("DOCUMENT");
  command->add_option("--logger", m_logger, "The name of the logger; without it, the root logger")
      ->type_name("NAME");
  command
      ->add_option("--level", m_level,
                   "The level: DEBUG, INFO, WARN, ERROR or FATAL; without it, INFO")
      ->check(&levelComplaint)
      ->type_name("LEVEL");
  command->add_flag("--level-from-line", m_levelFromLine,
                    "Take the first level word in a line as its level, where it has one");
  command->add_option("FILE", m_input, "The file to read; without it, or with -, standard input")
      ->type_name("");
  command->footer(NOTES);
}

int LogCommand::run() const {
  if (m_input == STANDARD_INPUT) {
    std::ios::sync_with_stdio(false);
    return logLinesOf(std::cin);
  }
  std::vector<char> buffer(64 * 1024);
  std::ifstream file;
  file.rdbuf()->pubsetbuf(buffer.data(), static_cast<std::streamsize>(buffer.size()));
  return CommandSupport::openToRead(file, m_input, "input file") ? logLinesOf(file) : BAD_INPUT;
}

int LogCommand::logLinesOf(std::istream& in) const {
  LOGLogger* const logger = configure(m_document, m_logger);
  if (logger == nullptr) {
    LOG4ZEBConfigurator::shutdown();
    return BAD_DOCUMENT;
  }
  StopSignal::watch();
  LineReader reader(in);
  LineLogger lines(logger, LineLevel::rankOf(m_level).value_or(LOGLevel::INFO_RANK),
                   m_levelFromLine);
  LineJob job(reader, lines);
  const LineJob::End end = job.run();
  if (end != LineJob::End::COMPLETE) {
    endByStopSignal(end, lines.getCounts());
  }
  LOG4ZEBConfigurator::shutdown();
  if (reader.failed()) {
    CommandSupport::say("cannot read on in the input");
  }
  report(lines.getCounts());
  return reader.failed() ? BAD_INPUT : 0;
}
