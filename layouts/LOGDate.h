#ifndef LAYOUTS_LOGDATE_H
#define LAYOUTS_LOGDATE_H

#include <cstdint>

#include "platform/I18NString.h"

/// A point in time that date formats write. It holds the time of day of its construction and, in
/// seconds since 1970-01-01 00:00 UTC, a time that can be set anew.
/// Deliberate: a date that is set again keeps the milliseconds of its construction.
class LOG4ZEB_EXPORT LOGDate {
 public:
  /// Now.
  LOGDate();

  std::int64_t getTime() const noexcept { return m_time; }
  void setTime(std::int64_t time) noexcept { m_time = time; }
  /// The milliseconds, 0 to 999, of the construction.
  std::uint16_t getTimeMillis() const noexcept { return m_capturedMillis; }
  /// The seconds of the construction; valid as long as the date.
  const std::int64_t* getTime_T() const noexcept { return &m_capturedSeconds; }
  /// The local date and time of the construction as the C locale writes it, or "N/A". Valid until
  /// the next call.
  const I18NString& toString();

 private:
  std::int64_t m_capturedSeconds;
  std::uint16_t m_capturedMillis;
  std::int64_t m_time;
  I18NString m_buffer;
};

#endif
