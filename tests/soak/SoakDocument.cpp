#include "soak/SoakDocument.h"

#include <filesystem>
#include <iterator>

#include "support/Workplace.h"

namespace {

std::string param(const std::string& name, const std::string& value) {
  return "<param name='" + name + "' value='" + value + "'/>";
}

std::string appender(const std::string& name, const std::string& type, const std::string& inside) {
  return "<appender name='" + name + "' class='" + type + "'>" + inside + "</appender>\n";
}

std::string layout(const std::string& type, const std::string& inside = "") {
  return "<layout class='" + type + "'>" + inside + "</layout>";
}

std::string references(std::initializer_list<const char*> names) {
  std::string all;
  for (const char* const name : names) {
    all += std::string("<appender-ref ref='") + name + "'/>";
  }
  return all;
}

std::string rolling(const std::string& file, const std::string& size, const std::string& backups) {
  return param("File", file) + param("MaximumFileSize", size) + param("MaxBackupIndex", backups);
}

std::string appenders(int recordPort, const std::string& pattern) {
  const std::string lines = layout("LOGPatternLayout", param("ConversionPattern", pattern));
  const std::string range = "<filter class='LOGLevelRangeFilter'>" + param("LevelMin", "DEBUG") +
                            param("LevelMax", "FATAL") + "</filter>";
  const std::string file = "LOGFileAppender";
  return appender("STEADY", file, param("File", "steady.log") + lines) +
         appender("BEHIND", file, param("File", "async.log") + lines + range) +
         appender("ASYNC", "LOGAsyncAppender", references({"BEHIND"})) +
         appender("XML", file, param("File", "xml.log") + layout("LOGXMLLayout")) +
         appender("HTML", file,
                  param("File", "html.log") + layout("LOGHTMLLayout") +
                      "<errorHandler class='LOGOnlyOnceErrorHandler'/>") +
         appender("CONSOLE", "LOGConsoleAppender", layout("LOGSimpleLayout")) +
         appender("ROLL", "LOGRollingFileAppender",
                  rolling("roll/all.log", "65536", "100000") +
                      layout("LOGTTCCLayout", param("DateFormat", "ISO8601"))) +
         appender("FEW", "LOGRollingFileAppender", rolling("roll/few.log", "20000", "3") + lines) +
         appender("VANISH", file, param("File", "vanish/plain.log") + lines) +
         appender("VROLL", "LOGRollingFileAppender",
                  rolling("vanish/rolled.log", "30000", "100000") + lines) +
         appender("SYSLOG", "LOGSyslogAppender",
                  param("Host", SoakDocument::SYSLOG_HOST) + param("Facility", "local3") +
                      layout("LOGPatternLayout", param("ConversionPattern", "%p %m"))) +
         appender("RECORDS", "LOGLocalUDPAppender", param("Port", std::to_string(recordPort))) +
         appender("TCP", "LOGTCPSocketAppender", param("RemoteHost", "localhost"));
}

}  // namespace

const char* const SoakDocument::LEVELS[] = {"ALL", "DEBUG", "INFO", "WARN", "ERROR"};

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
         references({"STEADY", "VANISH", "ASYNC", "CONSOLE", "SYSLOG", "FEW"}) +
         "</logger>\n<logger name='soak.odd' additivity='false'>" + level() +
         references({"TCP", "VROLL", "RECORDS", "SYSLOG", "FEW", "CONSOLE", "ROLL", "HTML", "XML",
                     "ASYNC", "VANISH", "STEADY"}) +
         "</logger>\n<root>" + level() +
         references({"XML", "HTML", "ROLL", "VROLL", "RECORDS", "TCP"}) +
         "</root>\n</log4j:configuration>\n";
}

void SoakDocument::replace(const std::string& text) {
  Workplace::write("next.xml", text);
  std::filesystem::rename("next.xml", FILE);
}
