#include "platform/ZEBUtTime.h"

#include <ctime>

#include "platform/ZEBThreadGuard.h"

namespace {

/// Reading the zone anew changes its names under those who read them.
ZEBThreadCriticalSection g_zone;

}  // namespace

ZEBUtTime::TimeOfDay ZEBUtTime::now() {
  timespec time{};
  clock_gettime(CLOCK_REALTIME, &time);
  return {time.tv_sec, static_cast<std::uint16_t>(time.tv_nsec / 1000000)};
}

std::int64_t ZEBUtTime::nowSeconds() { return std::time(nullptr); }

std::tm ZEBUtTime::localTime(std::int64_t seconds) {
  std::tm result{};
  const time_t time = seconds;
  localtime_r(&time, &result);
  return result;
}

I18NString ZEBUtTime::format(const char* format, const std::tm& time) {
  char text[256];
  const ZEBThreadGuard guard(g_zone);
  return I18NString::fromUtf8({text, std::strftime(text, sizeof text, format, &time)});
}

I18NString ZEBUtTime::daylightZoneName() {
  const ZEBThreadGuard guard(g_zone);
  tzset();
  return I18NString(tzname[1]);
}
