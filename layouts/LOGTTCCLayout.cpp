#include "layouts/LOGTTCCLayout.h"

#include <string_view>
#include <utility>

#include "core/LOGFailures.h"
#include "core/LOGLevel.h"
#include "core/LOGLoggingEvent.h"
#include "platform/ZEBAssertError.h"

using namespace std::string_view_literals;

constexpr const char* SOURCE = "LOGTTCCLayout";

LOGTTCCLayout::LOGTTCCLayout() {
  instance(SOURCE);
  LOGDateLayout::setDateFormat("RELATIVE", nullptr);
}

LOGTTCCLayout::LOGTTCCLayout(const I18NString& dateFormat) {
  instance(SOURCE);
  LOGDateLayout::setDateFormat(dateFormat);
}

const I18NString& LOGTTCCLayout::format(LOGLoggingEvent* event) {
  ZEB_ASSERT(event, SOURCE, 77);
  const LOGLevel* const logLevel = event->getLevel();
  ZEB_ASSERT(logLevel, SOURCE, 90);
  I18NString line = takeBuffer();
  try {
    buildLine(line, *event);
  } catch (...) {
    logNoteFailure();
    LOGLogLog::debug("LOGTTCCLayout:format --- an unknown error has occurred.");
  }
  return keep(std::move(line));
}

void LOGTTCCLayout::buildLine(I18NString& line, LOGLoggingEvent& event) {
  dateFormat(line, &event);
  if (m_threadPrinting != 0) {
    line.append("["sv).append(event.getThreadName()).append("] "sv);
  }
  line.append(std::string_view(event.getLevel()->toString())).append(1, ' ');
  if (m_categoryPrefixing != 0) {
    line.append(event.getLoggerName()).append(1, ' ');
  }
  // Meant as it stands: an event without context gets one more blank, and a context is not shown.
  if (m_contextPrinting != 0 && event.getNDC().isEmpty()) {
    line.append(1, ' ');
  }
  line.append("- "sv);
  if (!event.appendRenderedMessage(line)) {
    LOGLogLog::debug("LOGTTCCLayout:format --- getRenderedMessage returned NULL\n");
  }
  line.append(getLineSeparator());
}
