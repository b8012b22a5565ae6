#include "layouts/LOGLocationPatternConverter.h"

#include "core/LOGLoggingEvent.h"
#include "layouts/LOGLocationInfo.h"
#include "layouts/LOGPatternParser.h"
#include "platform/ZEBTranslate.h"

LOGLocationPatternConverter::LOGLocationPatternConverter(LOGFormattingInfo* formattingInfo,
                                                         int type)
    : LOGPatternConverter(formattingInfo), m_type(type) {}

I18NString* LOGLocationPatternConverter::convert(LOGLoggingEvent* event) {
  if (event == nullptr) {
    return nullptr;
  }
  return zebTranslate("LOGPatternParserUtils", __LINE__, [this, event]() -> I18NString* {
    const LOGLocationInfo& location = *event->getLocationInformation();
    switch (m_type) {
      case LOGPatternParser::FULL_LOCATION_CONVERTER:
        return new I18NString(location.getFullInfo());
      case LOGPatternParser::METHOD_LOCATION_CONVERTER:
        return new I18NString(location.getMethodName());
      case LOGPatternParser::LINE_LOCATION_CONVERTER:
        return new I18NString(location.getLineNumber());
      case LOGPatternParser::FILE_LOCATION_CONVERTER:
        return new I18NString(location.getFileName());
      default:
        return nullptr;
    }
  });
}
