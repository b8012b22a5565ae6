#include "layouts/LOGISODateFormat.h"

#include "core/LOGFailures.h"
#include "layouts/LOGCalendar.h"
#include "layouts/LOGDate.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBUtConvert.h"

namespace {

// Without a text for it, what is not of the library's family passes unreported.
constexpr LOGFailureTexts FAILURES = {
    "LOGISODateFormat::format -- some i18nstring exception occurred",
    "LOGISODateFormat::format -- some ZEBThrowable exception occurred", ""};

I18NString monthText(int month) {
  if (month < 1 || month > 12) {
    return "-NA-";
  }
  return "-" + ZEBUtConvert::padded(month, 2) + "-";
}

}  // namespace

const I18NString& LOGISODateFormat::format(LOGDate* date) {
  ZEB_ASSERT(date, "LOGISODateFormat", __LINE__);
  m_buffer.clear();
  logReportingFailures(FAILURES, [this, date] { appendTime(*date); });
  return m_buffer;
}

void LOGISODateFormat::appendFields(I18NString& text, const LOGCalendar& calendar) {
  text.append(ZEBUtConvert::handleCvt(calendar.get(LOGCalendar::YEAR)));
  text.append(monthText(calendar.get(LOGCalendar::MONTH)));
  text.append(ZEBUtConvert::padded(calendar.get(LOGCalendar::DAY_OF_MONTH), 2)).append(1, ' ');
  appendClock(text, calendar);
}
