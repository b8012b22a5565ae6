#ifndef CORE_LOGOPTIONCONVERTER_H
#define CORE_LOGOPTIONCONVERTER_H

#include "platform/I18NString.h"

class LOGLevel;

/// Turns the text of an option's value into a truth value or a level. Words are compared without
/// regard to case; blanks around them are not trimmed.
class LOG4ZEB_EXPORT LOGOptionConverter {
 public:
  /// 1 for "true", 0 for "false", else the default.
  static int toBoolean(I18NString value, int defaultValue);
  /// The predefined level of that name, null for "null", else the default. Of NAME#CLASS, the name
  /// counts when the class is "LOGLevel", and DEBUG stands for a name that is not known; any other
  /// class gives null, never the default: levels of other classes are not supported.
  static LOGLevel* toLevel(const I18NString& value, LOGLevel* defaultLevel);

 private:
  LOGOptionConverter() = default;
};

#endif
