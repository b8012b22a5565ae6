#ifndef LAYOUTS_LOGABSOLUTETIMEDATEFORMAT_H
#define LAYOUTS_LOGABSOLUTETIMEDATEFORMAT_H

#include <cstdint>

#include "layouts/LOGDateFormat.h"

/// Writes the time of day as "HH:mm:ss,SSS". The class also knows the names under which this and
/// the related formats are chosen.
class LOG4ZEB_EXPORT LOGAbsoluteTimeDateFormat : public LOGDateFormat {
 public:
  static const I18NString ABS_TIME_DATE_FORMAT;
  static const I18NString DATE_AND_TIME_DATE_FORMAT;
  static const I18NString ISO8601_DATE_FORMAT;

  const I18NString& format(LOGDate* date) override;

 protected:
  /// Appends the fields and the milliseconds to m_buffer.
  void appendTime(const LOGDate& date);
  static void appendClock(I18NString& text, const LOGCalendar& calendar);

 private:
  /// Appends everything up to the milliseconds.
  virtual void appendFields(I18NString& text, const LOGCalendar& calendar);

  std::int64_t m_previousTime = 0;
  I18NString m_previousText;
};

#endif
