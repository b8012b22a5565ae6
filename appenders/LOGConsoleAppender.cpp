#include "appenders/LOGConsoleAppender.h"

#include <utility>

#include "appenders/LOGQuietWriter.h"
#include "core/LOGFailures.h"
#include "platform/I18NLocale.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBTranslate.h"

namespace {

constexpr const char* SOURCE = "LOGConsoleAppender";
constexpr const char* STANDARD_OUTPUT = "out";
constexpr const char* STANDARD_ERROR = "err";

}  // namespace

LOGConsoleAppender::LOGConsoleAppender() : target(STANDARD_OUTPUT) { instance(SOURCE); }

LOGConsoleAppender::LOGConsoleAppender(LOGLayout* layout) : LOGConsoleAppender() {
  setLayout(layout);
  m_closed = 1;
}

LOGConsoleAppender::LOGConsoleAppender(LOGLayout* layout, const I18NString& name)
    : LOGConsoleAppender(layout) {
  setTarget(name);
}

LOGConsoleAppender::LOGConsoleAppender(const LOGConsoleAppender& other)
    : LOGWriterAppender(other), target(other.target) {
  m_closed = 1;
}

LOGConsoleAppender::~LOGConsoleAppender() { LOGConsoleAppender::closeWriter(); }

void LOGConsoleAppender::activateOptions() {
  if (!mayOpenByItself()) {
    return;
  }
  constexpr LOGFailureTexts TEXTS{
      "LOGConsoleAppender::activateOptions -- some i18nstring exception occurred",
      "LOGConsoleAppender::activateOptions -- some ZEBThrowable exception occurred",
      "LOGConsoleAppender::activateOptions -- generic exception happened"};
  logReportingFailures(TEXTS, [this] {
    const ZEBThreadGuard guard(getCriticalSection());
    if (mayOpenByItself()) {
      setTarget(target);
    }
  });
}

void LOGConsoleAppender::targetWarn(const I18NString&) {
  LOGLogLog::warn("LOGConsoleAppender::targetWarn -- possible values are out and err");
  LOGLogLog::warn("LOGConsoleAppender::targetWarn -- using out (default)");
}

void LOGConsoleAppender::setTarget(const I18NString& value) {
  constexpr LOGFailureTexts TEXTS{
      "LOGConsoleAppender::setTarget -- some i18nstring exception occurred",
      "LOGConsoleAppender::setTarget -- some ZEBThrowable exception occurred",
      "LOGConsoleAppender::setTarget -- generic exception happened"};
  logReportingFailures(TEXTS, [&] {
    const ZEBThreadGuard guard(getCriticalSection());
    openTarget(value);
  });
}

void LOGConsoleAppender::openTarget(const I18NString& value) {
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): it may be this object's own target
  const I18NString requested = value;
  auto file = std::make_unique<ZEBFmFile>();
  if (m_qw != nullptr) {
    m_qw->setFile(file.get());
  }
  m_outFile = std::move(file);
  const I18NLocale locale;
  int stream = 0;
  if (locale.compareIgnoreCase(requested, STANDARD_OUTPUT) == 0) {
    stream = ZEBFmFile::STANDARD_OUTPUT;
  } else if (locale.compareIgnoreCase(requested, STANDARD_ERROR) == 0) {
    stream = ZEBFmFile::STANDARD_ERROR;
  } else {
    targetWarn(requested);
    return;
  }
  m_closeRequested = false;
  if (m_outFile->attachStandard(stream) != 0) {
    setQWForFiles();
    m_closed = 0;
    m_fileOpened = 1;
  } else {
    m_closed = 1;
    m_fileOpened = 0;
  }
  target = requested;
}

int LOGConsoleAppender::checkEntryConditions() {
  return m_closed != 1 && layout() != nullptr ? 1 : 0;
}

void LOGConsoleAppender::closeWriter() {
  delete std::exchange(m_qw, nullptr);
  m_outFile.reset();
  m_closed = 1;
}

void LOGConsoleAppender::setQWForFiles() {
  delete std::exchange(m_qw, nullptr);
  ZEB_ASSERT(m_outFile, SOURCE, 231);
  m_qw = zebTranslate(SOURCE, 232, [this] { return new LOGQuietWriter(nullptr, m_outFile); });
}

void LOGConsoleAppender::subappend(LOGLoggingEvent* event) {
  if (m_fileOpened == 0) {
    return;
  }
  if (m_layout == nullptr) {
    LOGLogLog::error("LOGConsoleAppender::subappend -- NULL layout");
    ZEB_ASSERT(m_layout, SOURCE, 208);
  }
  ZEB_ASSERT(m_qw, SOURCE, 189);
  const I18NString text = format(*layout(), event);
  if (checkEntryConditions() == 0) {
    return;  // rendering the message has closed this appender
  }
  m_qw->stWrite(m_outFile, text);
}
