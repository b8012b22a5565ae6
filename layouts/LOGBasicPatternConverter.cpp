#include "layouts/LOGBasicPatternConverter.h"

#include "core/LOGLevel.h"
#include "core/LOGLoggingEvent.h"
#include "layouts/LOGPatternParser.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBTranslate.h"
#include "platform/ZEBUtConvert.h"

namespace {

constexpr const char* SOURCE = "LOGPatternParserUtils";
constexpr int MILLISECONDS_PER_SECOND = 1000;

I18NString* levelName(const LOGLevel* level) {
  ZEB_ASSERT(level, SOURCE, __LINE__);
  return new I18NString(level->toString());
}

}  // namespace

LOGBasicPatternConverter::LOGBasicPatternConverter(LOGFormattingInfo* formattingInfo, int type)
    : LOGPatternConverter(formattingInfo), m_type(type) {}

I18NString* LOGBasicPatternConverter::convert(LOGLoggingEvent* event) {
  ZEB_ASSERT(event, SOURCE, __LINE__);
  return zebTranslate(SOURCE, __LINE__, [this, event]() -> I18NString* {
    switch (m_type) {
      case LOGPatternParser::RELATIVE_TIME_CONVERTER:
        return new I18NString(ZEBUtConvert::handleCvt(
            (event->getTimeStamp() - LOGLoggingEvent::getStartTime()) * MILLISECONDS_PER_SECOND));
      case LOGPatternParser::THREAD_CONVERTER:
        return new I18NString(event->getThreadName());
      case LOGPatternParser::LEVEL_CONVERTER:
        return levelName(event->getLevel());
      case LOGPatternParser::NDC_CONVERTER:
        return new I18NString(event->getNDC());
      case LOGPatternParser::MESSAGE_CONVERTER:
        return event->getRenderedMessage();
      default:
        return nullptr;
    }
  });
}
