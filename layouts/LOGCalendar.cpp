#include "layouts/LOGCalendar.h"

#include "core/LOGLogLog.h"
#include "layouts/LOGDate.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBTranslate.h"
#include "platform/ZEBUtTime.h"

constexpr const char* SOURCE = "LOGCalendar";
constexpr int FIRST_YEAR = 1900;

LOGCalendar* LOGCalendar::getInstance(const LOGTimeZone* timeZone) {
  return zebTranslate(SOURCE, __LINE__, [timeZone] {
    return new LOGCalendar(timeZone == nullptr ? LOGTimeZone() : *timeZone);
  });
}

void LOGCalendar::setTime(const LOGDate* date) {
  if (date == nullptr) {
    LOGLogLog::debug("Trying to set a NULL date in the Calendar! ");
    return;
  }
  m_seconds = date->getTime();
  m_currentTime = ZEBUtTime::localTime(m_seconds);
}

int LOGCalendar::get(int field) const {
  ZEB_ASSERT(m_currentTime, SOURCE, __LINE__);
  switch (field) {
    case YEAR:
      return m_currentTime->tm_year + FIRST_YEAR;
    case MONTH:
      return m_currentTime->tm_mon + 1;
    case DAY_OF_MONTH:
      return m_currentTime->tm_mday;
    case DAY_OF_WEEK:
      return m_currentTime->tm_wday;
    case MINUTE:
      return m_currentTime->tm_min;
    case SECOND:
      return m_currentTime->tm_sec;
    case HOUR_OF_DAY:
      return m_currentTime->tm_hour;
    default:
      return -1;
  }
}
