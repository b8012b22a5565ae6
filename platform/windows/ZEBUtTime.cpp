#include "platform/ZEBUtTime.h"

#include <windows.h>

#include <ctime>
#include <string>

#include "platform/windows/ZEBWindowsName.h"

ZEBUtTime::TimeOfDay ZEBUtTime::now() {
  constexpr std::int64_t TICKS_PER_MILLISECOND = 10000;
  constexpr std::int64_t MILLISECONDS_BEFORE_1970 = 11644473600000;
  FILETIME time{};
  GetSystemTimePreciseAsFileTime(&time);
  const auto ticks = static_cast<std::int64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
  const std::int64_t milliseconds = ticks / TICKS_PER_MILLISECOND - MILLISECONDS_BEFORE_1970;
  return {milliseconds / 1000, static_cast<std::uint16_t>(milliseconds % 1000)};
}

std::int64_t ZEBUtTime::nowSeconds() { return now().seconds; }

std::optional<std::tm> ZEBUtTime::localTime(std::int64_t seconds) {
  std::tm result{};
  const __time64_t time = seconds;
  if (_localtime64_s(&result, &time) != 0) {
    return std::nullopt;
  }
  return result;
}

I18NString ZEBUtTime::format(const char* format, const std::optional<std::tm>& time) {
  if (!time) {
    return {};
  }
  // The plain characters of the runtime are in no fixed encoding, those of this function are
  // UTF-16.
  wchar_t text[256];
  const std::wstring wideFormat = ZEBWindowsName::toWide(format);
  const std::size_t size = std::wcsftime(text, std::size(text), wideFormat.c_str(), &*time);
  return ZEBWindowsName::fromWide({text, size});
}

I18NString ZEBUtTime::daylightZoneName() {
  TIME_ZONE_INFORMATION zone{};
  GetTimeZoneInformation(&zone);
  return ZEBWindowsName::fromWide(zone.DaylightName);
}
