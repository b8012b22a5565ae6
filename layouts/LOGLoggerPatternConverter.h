#ifndef LAYOUTS_LOGLOGGERPATTERNCONVERTER_H
#define LAYOUTS_LOGLOGGERPATTERNCONVERTER_H

#include "layouts/LOGNamedPatternConverter.h"

/// The name of the logger that made the event.
class LOG4ZEB_EXPORT LOGLoggerPatternConverter : public LOGNamedPatternConverter {
 public:
  LOGLoggerPatternConverter(LOGFormattingInfo* formattingInfo, int precision);

  const I18NString& getFullyQualifiedName(LOGLoggingEvent* event) override;
  LOGEventPart part() const override;
};

#endif
