#include "layouts/LOGSimpleDateFormat.h"

#include "core/LOGFailures.h"
#include "layouts/LOGDate.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBUtTime.h"

constexpr LOGFailureTexts FAILURES = {
    "LOGSimpleDateFormat::format -- some i18nstring exception occurred",
    "LOGSimpleDateFormat::format -- some ZEBThrowable exception occurred",
    "LOGSimpleDateFormat::format -- some generic error occurred"};

LOGSimpleDateFormat::LOGSimpleDateFormat() = default;

LOGSimpleDateFormat::LOGSimpleDateFormat(const I18NString& pattern) {
  if (pattern == "HH:mm:ss,SSS") {
    m_strftimeFormat = "%I:%M:%S";
  } else if (pattern == "dd MMM yyyy HH:mm:ss,SSS") {
    m_strftimeFormat = "%d %B %Y %I:%M:%S";
  } else {
    LOGLogLog::error("LogSimpleDateFormat: provided date format :" + pattern +
                     " does not match any format.");
  }
}

const I18NString& LOGSimpleDateFormat::format(LOGDate* date) {
  ZEB_ASSERT(date, "LOGSimpleDateFormat", __LINE__);
  m_buffer.clear();
  if (m_strftimeFormat != nullptr) {
    logReportingFailures(FAILURES, [this, date] {
      m_buffer = ZEBUtTime::format(m_strftimeFormat, ZEBUtTime::localTime(date->getTime()));
      if (m_buffer.isEmpty()) {
        LOGLogLog::error("LOGSimpleDateFormat::format ---- strftime returned an error \n");
      }
    });
  }
  return m_buffer;
}
