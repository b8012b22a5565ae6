#include "layouts/LOGAbsoluteTimeDateFormat.h"

#include <utility>

#include "core/LOGFailures.h"
#include "layouts/LOGCalendar.h"
#include "layouts/LOGDate.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBUtConvert.h"

// Without a text for it, what is not of the library's family passes unreported.
constexpr LOGFailureTexts FAILURES = {
    "LOGAbsoluteTimeDateFormat::format -- some i18nstring exception occurred",
    "LOGAbsoluteTimeDateFormat::format -- some ZEBThrowable exception occurred", ""};

const I18NString LOGAbsoluteTimeDateFormat::ABS_TIME_DATE_FORMAT = "ABSOLUTE";
const I18NString LOGAbsoluteTimeDateFormat::DATE_AND_TIME_DATE_FORMAT = "DATE";
const I18NString LOGAbsoluteTimeDateFormat::ISO8601_DATE_FORMAT = "ISO8601";

const I18NString& LOGAbsoluteTimeDateFormat::format(LOGDate* date) {
  ZEB_ASSERT(date, "LOGAbsoluteTimeDateFormat", __LINE__);
  m_buffer.clear();
  logReportingFailures(FAILURES, [this, date] { appendTime(*date); });
  return m_buffer;
}

void LOGAbsoluteTimeDateFormat::appendTime(const LOGDate& date) {
  const std::int64_t seconds = date.getTime();
  if (seconds != m_previousTime) {
    I18NString text;
    appendFields(text, calendarOf(date));
    m_previousText = std::move(text);
    // Deliberate: the key is seconds minus milliseconds, so a later date with the same key gets
    // this text; the first key, 0, is that of an empty text.
    m_previousTime = seconds - date.getTimeMillis();
  }
  m_buffer.append(m_previousText);
  ZEBUtConvert::appendPadded(m_buffer, date.getTimeMillis(), 3);
}

void LOGAbsoluteTimeDateFormat::appendClock(I18NString& text, const LOGCalendar& calendar) {
  text.append(ZEBUtConvert::padded(calendar.get(LOGCalendar::HOUR_OF_DAY), 2)).append(1, ':');
  text.append(ZEBUtConvert::padded(calendar.get(LOGCalendar::MINUTE), 2)).append(1, ':');
  text.append(ZEBUtConvert::padded(calendar.get(LOGCalendar::SECOND), 2)).append(1, ',');
}

void LOGAbsoluteTimeDateFormat::appendFields(I18NString& text, const LOGCalendar& calendar) {
  appendClock(text, calendar);
}
