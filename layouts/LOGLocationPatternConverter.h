#ifndef LAYOUTS_LOGLOCATIONPATTERNCONVERTER_H
#define LAYOUTS_LOGLOCATIONPATTERNCONVERTER_H

#include "layouts/LOGPatternConverter.h"

/// One item of an event's location information, as a constant of LOGPatternParser says.
class LOG4ZEB_EXPORT LOGLocationPatternConverter : public LOGPatternConverter {
 public:
  LOGLocationPatternConverter(LOGFormattingInfo* formattingInfo, int type);

  /// Null for a null event and for an unknown type.
  I18NString* convert(LOGLoggingEvent* event) override;

 private:
  int m_type;
};

#endif
