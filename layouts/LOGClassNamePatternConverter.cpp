#include "layouts/LOGClassNamePatternConverter.h"

#include "core/LOGLoggingEvent.h"
#include "layouts/LOGLocationInfo.h"

LOGClassNamePatternConverter::LOGClassNamePatternConverter(LOGFormattingInfo* formattingInfo,
                                                           int precision)
    : LOGNamedPatternConverter(formattingInfo, precision) {}

const I18NString& LOGClassNamePatternConverter::getFullyQualifiedName(LOGLoggingEvent* event) {
  return event->getLocationInformation()->getClassName();
}
