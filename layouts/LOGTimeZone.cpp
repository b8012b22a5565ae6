#include "layouts/LOGTimeZone.h"

#include "platform/ZEBTranslate.h"
#include "platform/ZEBUtTime.h"

constexpr const char* SOURCE = "LOGTimeZone";

LOGTimeZone::LOGTimeZone() : m_timeZoneID(ZEBUtTime::daylightZoneName()) {}

LOGTimeZone* LOGTimeZone::getTimeZone(const I18NString& id) {
  return zebTranslate(SOURCE, __LINE__, [&id] { return new LOGTimeZone(id); });
}

LOGTimeZone* LOGTimeZone::getDefault() {
  return zebTranslate(SOURCE, __LINE__, [] { return new LOGTimeZone(); });
}
