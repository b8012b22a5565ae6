#ifndef PLATFORM_ZEBUTTIME_H
#define PLATFORM_ZEBUTTIME_H

#include <cstdint>
#include <ctime>

#include "platform/I18NString.h"

/// The time of day and the local calendar. Times are seconds since 1970-01-01 00:00 UTC.
class ZEBUtTime {
 public:
  struct TimeOfDay {
    std::int64_t seconds;
    std::uint16_t milliseconds;
  };

  static TimeOfDay now();
  static std::int64_t nowSeconds();
  /// The broken-down local time.
  static std::tm localTime(std::int64_t seconds);
  /// The text of strftime for a local time; empty when it gives none.
  static I18NString format(const char* format, const std::tm& time);
  /// The runtime's name of the local daylight-saving zone.
  static I18NString daylightZoneName();
};

#endif
