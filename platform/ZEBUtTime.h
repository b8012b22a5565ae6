#ifndef PLATFORM_ZEBUTTIME_H
#define PLATFORM_ZEBUTTIME_H

#include <cstdint>
#include <ctime>
#include <optional>

#include "platform/I18NString.h"

/// The time of day and the local calendar. Times are seconds since 1970-01-01 00:00 UTC.
class ZEBUtTime {
 public:
  struct TimeOfDay {
    std::int64_t seconds;
    std::uint16_t milliseconds;
  };

  static TimeOfDay now();
  /// The seconds of now(), by the same clock.
  static std::int64_t nowSeconds();
  /// The broken-down local time; nothing for a time that the calendar does not have.
  static std::optional<std::tm> localTime(std::int64_t seconds);
  /// The text of strftime for a local time; empty when there is none, or no time.
  static I18NString format(const char* format, const std::optional<std::tm>& time);
  /// The runtime's name of the local daylight-saving zone.
  static I18NString daylightZoneName();
};

#endif
