#ifndef LAYOUTS_LOGCLASSNAMEPATTERNCONVERTER_H
#define LAYOUTS_LOGCLASSNAMEPATTERNCONVERTER_H

#include "layouts/LOGNamedPatternConverter.h"

/// The name of the class that logged, as the event's location information has it.
class LOG4ZEB_EXPORT LOGClassNamePatternConverter : public LOGNamedPatternConverter {
 public:
  LOGClassNamePatternConverter(LOGFormattingInfo* formattingInfo, int precision);

  const I18NString& getFullyQualifiedName(LOGLoggingEvent* event) override;
};

#endif
