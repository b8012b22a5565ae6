#include "net/LOGSyslogAppender.h"

#include "core/LOGFailures.h"
#include "core/LOGLevel.h"
#include "core/LOGLoggingEvent.h"
#include "layouts/LOGLayout.h"
#include "net/LOGSyslogQuietWriter.h"
#include "net/LOGSyslogWriter.h"
#include "platform/I18NLocale.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBTranslate.h"

namespace {

constexpr const char* SOURCE = "LOGSyslogAppender";

/// By their numbers, of which four have no name; a code is a number times 8.
constexpr const char* FACILITIES[] = {"kern",   "user",   "mail",   "daemon", "auth",     "syslog",
                                      "lpr",    "news",   "uucp",   "cron",   "authpriv", "ftp",
                                      "",       "",       "",       "",       "local0",   "local1",
                                      "local2", "local3", "local4", "local5", "local6",   "local7"};
constexpr int CODES_PER_FACILITY = 8;

}  // namespace

LOGSyslogAppender::LOGSyslogAppender() : LOGSyslogAppender(nullptr, DEFAULT_FACILITY) {}

LOGSyslogAppender::LOGSyslogAppender(LOGLayout* layout, int facility) {
  instance(SOURCE);
  m_name = SOURCE;
  m_layout = layout;
  initFacility(facility);
}

LOGSyslogAppender::LOGSyslogAppender(LOGLayout* layout, const I18NString& host, int facility)
    : LOGSyslogAppender(layout, facility) {
  setSyslogHost(host);
}

LOGSyslogAppender::~LOGSyslogAppender() { LOGSyslogAppender::close(); }

int LOGSyslogAppender::getFacility(const I18NString& name) {
  int code = 0;
  for (const char* const facility : FACILITIES) {
    if (!name.isEmpty() && I18NLocale::equalIgnoreCase(name, facility)) {
      return code;
    }
    code += CODES_PER_FACILITY;
  }
  return -1;
}

I18NString LOGSyslogAppender::getFacilityString(int code) {
  const auto number = static_cast<std::size_t>(code / CODES_PER_FACILITY);
  return code % CODES_PER_FACILITY == 0 && number < std::size(FACILITIES) ? FACILITIES[number] : "";
}

void LOGSyslogAppender::initFacility(int code) {
  const I18NString name = getFacilityString(code);
  m_facility = name.isEmpty() ? DEFAULT_FACILITY : code;
  m_facilityString = name.isEmpty() ? I18NString("user:") : name + ":";
}

void LOGSyslogAppender::setFacility(const I18NString& name) {
  if (name.isEmpty()) {
    return;
  }
  const ZEBThreadGuard guard(getCriticalSection());
  initFacility(getFacility(name));
  if (m_quietWriter != nullptr) {
    m_quietWriter->setSyslogFacility(m_facility);
  }
}

void LOGSyslogAppender::setSyslogHost(const I18NString& host) {
  const ZEBThreadGuard guard(getCriticalSection());
  openWriter(host);
  m_syslogHost = host;
}

void LOGSyslogAppender::activateOptions() {
  if (m_activationPending == 0 || m_stale == 1) {
    return;
  }
  const ZEBThreadGuard guard(getCriticalSection());
  if (m_activationPending == 1 && m_quietWriter == nullptr) {
    openWriter(m_syslogHost);
  }
  m_activationPending = 0;  // not where memory was lacking: the next event tries again
}

void LOGSyslogAppender::openWriter(const I18NString& host) {
  closeWriter();
  if (m_closed == 1) {
    return;
  }
  zebTranslate(SOURCE, __LINE__, [&] {
    auto writer = std::make_unique<LOGSyslogWriter>(host);
    writer->init();
    m_quietWriter =
        std::make_unique<LOGSyslogQuietWriter>(writer.get(), m_facility, m_errorHandler.get());
    writer.release();  // the quiet writer's close() deletes it
  });
}

void LOGSyslogAppender::closeWriter() {
  if (m_quietWriter != nullptr) {
    m_quietWriter->close();
    m_quietWriter.reset();
  }
}

void LOGSyslogAppender::close() {
  logReportingFailures(LOGFailureTexts::same("LOGSyslogAppender::close ---- Unable to lock mutex."),
                       [this] {
                         const ZEBThreadGuard guard(getCriticalSection());
                         m_closeRequested = true;
                         m_closed = 1;
                         closeWriter();
                       });
}

void LOGSyslogAppender::setErrorHandler(LOGErrorHandler* errorHandler) {
  const ZEBThreadGuard guard(getCriticalSection());
  LOGAppenderSkeleton::setErrorHandler(errorHandler);
  if (m_quietWriter != nullptr) {
    m_quietWriter->setErrorHandler(m_errorHandler.get());
  }
}

void LOGSyslogAppender::append(LOGLoggingEvent* event) {
  ZEB_ASSERT(event, SOURCE, __LINE__);
  const ZEBThreadGuard guard(getCriticalSection());
  if (isAsSevereAsThreshold(event->getLevel()) == 0) {
    return;
  }
  if (m_quietWriter == nullptr) {
    LOGLogLog::error("No syslog host is set for LOGSyslogAppedender named [" + m_name + "]");
    return;
  }
  I18NString message = m_facilityPrinting != 0 ? m_facilityString : I18NString();
  if (layout() == nullptr) {
    LOGLogLog::debug("LOGSyslogAppender::append --- m_layout is NULL. append canceled");
    return;
  }
  message += format(*layout(), event);
  LOGLevel* const logLevel = event->getLevel();
  ZEB_ASSERT(logLevel, SOURCE, __LINE__);
  if (m_quietWriter == nullptr) {
    return;  // rendering the message has closed this appender
  }
  m_quietWriter->setLevel(logLevel->getSyslogEquivalent());
  m_quietWriter->write(message);
  if (!event->getThrowableStrRep().isEmpty()) {
    m_quietWriter->write(TAB + event->getThrowableStrRep());
  }
}
