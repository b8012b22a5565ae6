#ifndef LAYOUTS_LOGRELATIVETIMEDATEFORMAT_H
#define LAYOUTS_LOGRELATIVETIMEDATEFORMAT_H

#include <cstdint>

#include "layouts/LOGDateFormat.h"

/// Writes how far a date lies from the making of the format: "00," and the milliseconds within the
/// same second, else the seconds and ",00".
/// Deliberate: later dates give negative numbers such as "-5,00" or "00,-250".
class LOG4ZEB_EXPORT LOGRelativeTimeDateFormat : public LOGDateFormat {
 public:
  LOGRelativeTimeDateFormat();

  const I18NString& format(LOGDate* date) override;

 private:
  std::int64_t m_startSeconds;
  std::uint16_t m_startMillis;
};

#endif
