#ifndef LAYOUTS_LOGDATETIMEDATEFORMAT_H
#define LAYOUTS_LOGDATETIMEDATEFORMAT_H

#include "layouts/LOGAbsoluteTimeDateFormat.h"

/// Writes a date as "dd MMM yyyy HH:mm:ss,SSS".
class LOG4ZEB_EXPORT LOGDateTimeDateFormat : public LOGAbsoluteTimeDateFormat {
 public:
  /// Deliberate: the month's name is that of the date's construction, whatever time was set since.
  const I18NString& format(LOGDate* date) override;

 private:
  void appendDate(const LOGDate& date);
};

#endif
