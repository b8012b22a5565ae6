#define LOG4ZEB_COMPILE_FORMATS

#include "bench/Log4zebLog.h"

#include <fmt/compile.h>
#include <fmt/format.h>

#include <fstream>
#include <stdexcept>

#include "appenders/LOGAsyncAppender.h"
#include "appenders/LOGFileAppender.h"
#include "bench/Workload.h"
#include "log4zeb.h"

namespace fs = std::filesystem;

namespace {

constexpr int LONGEST_DRAIN = 60000;  // milliseconds

void writeFileAppender(std::ostream& out, const fs::path& file, int rollAt) {
  out << "<appender name=\"FILE\" class=\""
      << (rollAt == 0 ? "LOGFileAppender" : "LOGRollingFileAppender") << "\" addProcID=\"false\">\n"
      << "  <param name=\"File\" value=\"" << file.string() << "\"/>\n";
  if (rollAt != 0) {
    out << "  <param name=\"MaximumFileSize\" value=\"" << rollAt << "\"/>\n"
        << "  <param name=\"MaxBackupIndex\" value=\"" << workload::BACKUPS << "\"/>\n";
  }
  out << "  <layout class=\"LOGPatternLayout\">\n"
      << "    <param name=\"ConversionPattern\" value=\"" << workload::PATTERN << "\"/>\n"
      << "  </layout>\n</appender>\n";
}

template <typename Appender>
Appender* required(LOGAppenderSkeleton* appender) {
  auto* const found = dynamic_cast<Appender*>(appender);
  if (found == nullptr) {
    throw std::runtime_error("the document did not set up the appender");
  }
  return found;
}

}  // namespace

fs::path Log4zebLog::writeDocument(const fs::path& directory, const Setup& setup) {
  fs::path document = directory / "log4zeb.xml";
  std::ofstream out(document);
  out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      << "<log4j:configuration xmlns:log4j=\"urn:log4zeb\">\n";
  writeFileAppender(out, directory / "log4zeb.log", setup.rollAt);
  if (setup.isAsynchronous) {
    out << "<appender name=\"ASYNC\" class=\"LOGAsyncAppender\">\n"
        << "  <appender-ref ref=\"FILE\"/>\n</appender>\n";
  }
  out << "<root>\n  <level value=\"INFO\"/>\n  <appender-ref ref=\""
      << (setup.isAsynchronous ? "ASYNC" : "FILE") << "\"/>\n</root>\n</log4j:configuration>\n";
  return document;
}

Log4zebLog::Log4zebLog(const fs::path& directory, const Setup& setup)
    : m_logger(LOGManager::getLogger(workload::LOGGER)) {
  const fs::path document = writeDocument(directory, setup);
  if (LOG4ZEBConfigurator::initialize(document.string()) == 0) {
    throw std::runtime_error("the document was not read");
  }
  // The ancestors exist, as they do in a program that logs in all of its parts.
  LOGManager::getLogger("app");
  LOGManager::getLogger("app.db");
  applyToAppenders(setup);
}

void Log4zebLog::applyToAppenders(const Setup& setup) {
  LOGLogger* const root = LOGManager::getRootLogger();
  LOGAppenderSkeleton* file = root->getAppender("FILE");
  if (setup.isAsynchronous) {
    m_async = required<LOGAsyncAppender>(root->getAppender("ASYNC"));
    m_async->setBufferSize(workload::QUEUE_EVENTS);
    file = m_async->getAppender("FILE");
  }
  auto* const fileAppender = required<LOGFileAppender>(file);
  if (setup.delivery == Delivery::Buffered) {
    fileAppender->setBufferedIO(1);
    fileAppender->setBufferSize(workload::FILE_BUFFER_BYTES);
  }
}

void Log4zebLog::log() { m_logger->info(workload::MESSAGE); }

void Log4zebLog::logNumber(int number) { LOG4ZEB_INFOF(m_logger, WORKLOAD_FORMAT, number); }

void Log4zebLog::drain() {
  if (m_async != nullptr && m_async->flush(LONGEST_DRAIN) == 0) {
    throw std::runtime_error("the queue was not drained in time");
  }
}

void Log4zebLog::finish() {
  drain();
  LOG4ZEBConfigurator::shutdown();
}
