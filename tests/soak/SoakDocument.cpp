#include "soak/SoakDocument.h"

#include <filesystem>
#include <iterator>

#include "platform/ZEBUtProcess.h"
#include "support/Documents.h"
#include "support/Workplace.h"

namespace {

using documents::appender;
using documents::async;
using documents::layout;
using documents::param;
using documents::references;

std::string rolling(const std::string& file, const std::string& size, const std::string& backups) {
  return param("File", file) + param("MaximumFileSize", size) + param("MaxBackupIndex", backups);
}

std::string appenders(int recordPort, const std::string& pattern) {
  const std::string lines = documents::pattern(pattern);
  const std::string range = "<filter class='LOGLevelRangeFilter'>" + param("LevelMin", "DEBUG") +
                            param("LevelMax", "FATAL") + "</filter>";
  const std::string file = "LOGFileAppender";
  return appender("STEADY", file, param("File", "steady.log") + lines) +
         appender("BEHIND", file, param("File", "async.log") + lines + range) +
         async("ASYNC", {"BEHIND"}) +
         appender("XML", file, param("File", "xml.log") + layout("LOGXMLLayout")) +
         appender("HTML", file,
                  param("File", "html.log") + layout("LOGHTMLLayout") +
                      "<errorHandler class='LOGOnlyOnceErrorHandler'/>") +
         appender("CONSOLE", "LOGConsoleAppender", layout("LOGSimpleLayout")) +
         appender("ROLL", "LOGRollingFileAppender",
                  rolling("roll/all.log", "65536", "100000") +
                      layout("LOGTTCCLayout", param("DateFormat", "ISO8601"))) +
         appender("FEW", "LOGRollingFileAppender", rolling("roll/few.log", "20000", "3") + lines) +
         appender("MOVED", file, param("File", "moved/plain.log") + lines) +
         appender("LOST", "LOGRollingFileAppender",
                  rolling("lost/rolled.log", "30000", "100000") + lines) +
         appender("SYSLOG", "LOGSyslogAppender",
                  param("Host", SoakDocument::syslogHost()) + param("Facility", "local3") +
                      documents::pattern("%p %m")) +
         appender("RECORDS", "LOGLocalUDPAppender", param("Port", std::to_string(recordPort))) +
         appender("TCP", "LOGTCPSocketAppender", param("RemoteHost", "localhost"));
}

}  // namespace

const char* const SoakDocument::LEVELS[] = {"ALL", "DEBUG", "INFO", "WARN", "ERROR"};

std::string SoakDocument::syslogHost() {
  const int process = ZEBUtProcess::currentProcessId();
  return "127.77." + std::to_string(process / 250 % 250 + 1) + "." +
         std::to_string(process % 250 + 1);
}

std::string SoakDocument::text(int recordPort, SoakRandom& random) {
  static const char* const PATTERNS[] = {"%m%n", "%d %p [%t] %c{2} %x - %m%n",
                                         "%d{ABSOLUTE} %r %m (%F:%L)%n", "%c|%m|%l|%p%%%n"};
  const auto level = [&] {
    return std::string("<level value='") + LEVELS[random.below(LEVEL_COUNT)] + "'/>";
  };
  return std::string("<?xml version='1.0' encoding='UTF-8'?>\n<log4j:configuration threshold='") +
         LEVELS[random.below(LEVEL_COUNT)] + "'>\n" +
         appenders(recordPort, PATTERNS[random.below(std::size(PATTERNS))]) +
         "<logger name='soak.even'>" + level() +
         references({"STEADY", "MOVED", "ASYNC", "CONSOLE", "SYSLOG", "FEW"}) +
         "</logger>\n<logger name='soak.odd' additivity='false'>" + level() +
         references({"TCP", "LOST", "RECORDS", "SYSLOG", "FEW", "CONSOLE", "ROLL", "HTML", "XML",
                     "ASYNC", "MOVED", "STEADY"}) +
         "</logger>\n<root>" + level() +
         references({"XML", "HTML", "ROLL", "LOST", "RECORDS", "TCP"}) +
         "</root>\n</log4j:configuration>\n";
}

void SoakDocument::replace(const std::string& text) {
  Workplace::write("next.xml", text);
  std::filesystem::rename("next.xml", FILE);
}
