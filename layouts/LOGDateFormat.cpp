#include "layouts/LOGDateFormat.h"

#include "layouts/LOGCalendar.h"

LOGDateFormat::LOGDateFormat() = default;

LOGDateFormat::~LOGDateFormat() = default;

void LOGDateFormat::setCalendar(LOGCalendar* calendar) noexcept {
  if (calendar != m_calendar.get()) {
    m_calendar.reset(calendar);
  }
}

const LOGCalendar& LOGDateFormat::calendarOf(const LOGDate& date) {
  if (m_calendar == nullptr) {
    m_calendar.reset(LOGCalendar::getInstance(m_timeZone));
  }
  m_calendar->setTime(&date);
  return *m_calendar;
}
