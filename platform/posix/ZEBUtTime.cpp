#include "platform/ZEBUtTime.h"

#include <ctime>
#include <limits>

#include "platform/ZEBThreadGuard.h"

namespace {

/// Reading the zone anew changes its names under those who read them, and the runtime's own lock of
/// the zone is never free in the child of a fork if a thread is within the runtime at the fork.
ZEBThreadCriticalSection g_zone;

}  // namespace

ZEBUtTime::TimeOfDay ZEBUtTime::now() {
  timespec time{};
  clock_gettime(CLOCK_REALTIME, &time);
  return {time.tv_sec, static_cast<std::uint16_t>(time.tv_nsec / 1000000)};
}

std::int64_t ZEBUtTime::nowSeconds() {
#ifdef CLOCK_REALTIME_COARSE
  // Every event asks. This clock costs a fifth, but stands still from one tick of the system to the
  // next, so where its second may be over already the other one is asked.
  constexpr long LONGEST_LAG = 100000000;  // ns; ticks take 1 to 10 ms, and may come late
  timespec time{};
  if (clock_gettime(CLOCK_REALTIME_COARSE, &time) == 0 && time.tv_nsec < 1000000000 - LONGEST_LAG) {
    return time.tv_sec;
  }
#endif
  return now().seconds;
}

std::optional<std::tm> ZEBUtTime::localTime(std::int64_t seconds) {
  constexpr int LAST_YEAR = std::numeric_limits<int>::max() - 1900;  // so that the whole one fits
  std::tm result{};
  const ZEBThreadGuard guard(g_zone);
  const time_t time = seconds;
  if (localtime_r(&time, &result) == nullptr || result.tm_year > LAST_YEAR) {
    return std::nullopt;
  }
  return result;
}

I18NString ZEBUtTime::format(const char* format, const std::optional<std::tm>& time) {
  if (!time) {
    return {};
  }
  char text[256];
  const ZEBThreadGuard guard(g_zone);
  return I18NString::fromUtf8({text, std::strftime(text, sizeof text, format, &*time)});
}

I18NString ZEBUtTime::daylightZoneName() {
  const ZEBThreadGuard guard(g_zone);
  tzset();
  return I18NString(tzname[1]);
}
