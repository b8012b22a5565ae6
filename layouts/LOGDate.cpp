#include "layouts/LOGDate.h"

#include "platform/ZEBUtTime.h"

LOGDate::LOGDate() {
  const ZEBUtTime::TimeOfDay now = ZEBUtTime::now();
  m_capturedSeconds = now.seconds;
  m_capturedMillis = now.milliseconds;
  m_time = now.seconds;
}

const I18NString& LOGDate::toString() {
  m_buffer = ZEBUtTime::format("%c", ZEBUtTime::localTime(m_capturedSeconds));
  if (m_buffer.isEmpty()) {
    m_buffer = "N/A";
  }
  return m_buffer;
}
