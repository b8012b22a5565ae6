#ifndef LAYOUTS_LOGTIMEZONE_H
#define LAYOUTS_LOGTIMEZONE_H

#include "platform/I18NString.h"

/// The ID of a time zone. It is carried along and changes no output: dates are written in the local
/// time of the process.
class LOG4ZEB_EXPORT LOGTimeZone {
 public:
  /// The name of the local daylight-saving zone, also outside that season.
  LOGTimeZone();
  explicit LOGTimeZone(const I18NString& id) : m_timeZoneID(id) {}

  const I18NString& getTimeZoneID() const noexcept { return m_timeZoneID; }
  void setTimeZoneID(const I18NString& id) { m_timeZoneID = id; }

  /// A new zone, owned by the caller.
  static LOGTimeZone* getTimeZone(const I18NString& id);
  static LOGTimeZone* getDefault();

 private:
  I18NString m_timeZoneID;
};

#endif
