#ifndef LAYOUTS_LOGISODATEFORMAT_H
#define LAYOUTS_LOGISODATEFORMAT_H

#include "layouts/LOGAbsoluteTimeDateFormat.h"

/// Writes a date as "yyyy-MM-dd HH:mm:ss,SSS".
class LOG4ZEB_EXPORT LOGISODateFormat : public LOGAbsoluteTimeDateFormat {
 public:
  const I18NString& format(LOGDate* date) override;

 private:
  void appendFields(I18NString& text, const LOGCalendar& calendar) override;
};

#endif
