#ifndef LAYOUTS_LOGSIMPLEDATEFORMAT_H
#define LAYOUTS_LOGSIMPLEDATEFORMAT_H

#include "layouts/LOGDateFormat.h"

/// Writes a date by a pattern. Two patterns are known, "HH:mm:ss,SSS" and
/// "dd MMM yyyy HH:mm:ss,SSS"; both write a 12-hour clock without milliseconds, and the second the
/// full name of the month, which is how they are meant.
class LOG4ZEB_EXPORT LOGSimpleDateFormat : public LOGDateFormat {
 public:
  /// Formats every date to nothing.
  LOGSimpleDateFormat();
  /// Any pattern but the two is reported and formats every date to nothing.
  explicit LOGSimpleDateFormat(const I18NString& pattern);

  const I18NString& format(LOGDate* date) override;

 private:
  const char* m_strftimeFormat = nullptr;
};

#endif
