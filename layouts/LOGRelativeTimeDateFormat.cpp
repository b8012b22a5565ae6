#include "layouts/LOGRelativeTimeDateFormat.h"

#include <string_view>

#include "core/LOGFailures.h"
#include "layouts/LOGDate.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBUtConvert.h"
#include "platform/ZEBUtTime.h"

using namespace std::string_view_literals;

constexpr LOGFailureTexts FAILURES = {
    "LOGRelativeTimeDateFormat::format -- some i18nstring exception occurred",
    "LOGRelativeTimeDateFormat::format -- some ZEBThrowable exception occurred",
    "LOGRelativeTimeDateFormat::format -- some generic error occurred"};

LOGRelativeTimeDateFormat::LOGRelativeTimeDateFormat() {
  const ZEBUtTime::TimeOfDay now = ZEBUtTime::now();
  m_startSeconds = now.seconds;
  m_startMillis = now.milliseconds;
}

const I18NString& LOGRelativeTimeDateFormat::format(LOGDate* date) {
  ZEB_ASSERT(date, "LOGRelativeTimeDateFormat", __LINE__);
  m_buffer.clear();
  logReportingFailures(FAILURES, [this, date] {
    // Without a sign, because a date may be set to any number.
    const auto seconds = static_cast<std::int64_t>(static_cast<std::uint64_t>(m_startSeconds) -
                                                   static_cast<std::uint64_t>(date->getTime()));
    if (seconds == 0) {
      m_buffer.append("00,"sv);
      m_buffer.append(ZEBUtConvert::handleCvt(m_startMillis - date->getTimeMillis()));
    } else {
      m_buffer.append(ZEBUtConvert::handleCvt(seconds)).append(",00"sv);
    }
  });
  return m_buffer;
}
