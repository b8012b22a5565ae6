#ifndef LAYOUTS_LOGCALENDAR_H
#define LAYOUTS_LOGCALENDAR_H

#include <cstdint>
#include <ctime>
#include <optional>

#include "layouts/LOGTimeZone.h"

class LOGDate;

/// Breaks a date down into the fields of the process's local time.
class LOG4ZEB_EXPORT LOGCalendar {
 public:
  /// The codes of the fields; there is no field 4.
  static constexpr int YEAR = 0;          // in full
  static constexpr int MONTH = 1;         // 1 to 12
  static constexpr int DAY_OF_MONTH = 2;  // 1 to 31
  static constexpr int DAY_OF_WEEK = 3;   // 0, Sunday, to 6
  static constexpr int MINUTE = 5;
  static constexpr int SECOND = 6;
  static constexpr int HOUR_OF_DAY = 7;  // 0 to 23

  explicit LOGCalendar(const LOGTimeZone& timeZone) : m_timeZone(timeZone) {}
  /// A new calendar, owned by the caller, with a copy of the zone; null means the default zone.
  static LOGCalendar* getInstance(const LOGTimeZone* timeZone);

  /// Takes the date's getTime(). Null changes nothing and is noted in the diagnostics.
  void setTime(const LOGDate* date);
  /// The seconds that setTime() took last.
  std::int64_t getTime() const noexcept { return m_seconds; }
  /// The field of that code, -1 for any other code. Throws ZEBAssertError before setTime().
  int get(int field) const;
  /// The zone is carried along; the fields are local to the process all the same.
  const LOGTimeZone& getTimeZone() const noexcept { return m_timeZone; }

 private:
  std::optional<std::tm> m_currentTime;
  std::int64_t m_seconds = 0;
  LOGTimeZone m_timeZone;
};

#endif
