#include "layouts/LOGDateTimeDateFormat.h"

#include "core/LOGFailures.h"
#include "layouts/LOGCalendar.h"
#include "layouts/LOGDate.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBUtConvert.h"
#include "platform/ZEBUtTime.h"

// Without a text for it, what is not of the library's family passes unreported.
constexpr LOGFailureTexts FAILURES = {
    "LOGDateTimeDateFormat::format -- some i18nstring exception occurred",
    "LOGDateTimeDateFormat::format -- some ZEBThrowable exception occurred", ""};

const I18NString& LOGDateTimeDateFormat::format(LOGDate* date) {
  ZEB_ASSERT(date, "LOGDateTimeDateFormat", __LINE__);
  m_buffer.clear();
  logReportingFailures(FAILURES, [this, date] {
    appendDate(*date);
    appendTime(*date);
  });
  return m_buffer;
}

void LOGDateTimeDateFormat::appendDate(const LOGDate& date) {
  const LOGCalendar& calendar = calendarOf(date);
  const I18NString month = ZEBUtTime::format("%b", ZEBUtTime::localTime(*date.getTime_T()));
  m_buffer.append(ZEBUtConvert::padded(calendar.get(LOGCalendar::DAY_OF_MONTH), 2)).append(1, ' ');
  m_buffer.append(month.isEmpty() ? I18NString("N/A") : month).append(1, ' ');
  m_buffer.append(ZEBUtConvert::handleCvt(calendar.get(LOGCalendar::YEAR))).append(1, ' ');
}
