#ifndef LAYOUTS_LOGDATEFORMAT_H
#define LAYOUTS_LOGDATEFORMAT_H

#include <memory>

#include "platform/I18NString.h"

class LOGCalendar;
class LOGDate;
class LOGTimeZone;

/// Writes a date as text. A format is used by one thread at a time.
class LOG4ZEB_EXPORT LOGDateFormat {
 public:
  LOGDateFormat();
  LOGDateFormat(const LOGDateFormat&) = delete;
  LOGDateFormat& operator=(const LOGDateFormat&) = delete;
  virtual ~LOGDateFormat();

  /// The text of the date, valid until the next call. Throws ZEBAssertError for a null date; other
  /// exceptions of the library's family are reported and end here.
  virtual const I18NString& format(LOGDate* date) = 0;
  /// Dates are not read: null.
  virtual LOGDate* parse(const I18NString&) { return nullptr; }

  LOGTimeZone* getTimeZone() const noexcept { return m_timeZone; }
  /// The zone stays the caller's; null means the default one.
  void setTimeZone(LOGTimeZone* timeZone) noexcept { m_timeZone = timeZone; }
  /// Null until a calendar was set or needed.
  LOGCalendar* getCalendar() const noexcept { return m_calendar.get(); }
  /// Takes ownership.
  void setCalendar(LOGCalendar* calendar) noexcept;

 protected:
  /// The calendar, made on first use, set to the date.
  const LOGCalendar& calendarOf(const LOGDate& date);

  I18NString m_buffer;

 private:
  std::unique_ptr<LOGCalendar> m_calendar;
  LOGTimeZone* m_timeZone = nullptr;
};

#endif
