#include "layouts/LOGBasicPatternConverter.h"

#include "core/LOGLevel.h"
#include "core/LOGLoggingEvent.h"
#include "layouts/LOGPatternParser.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBUtConvert.h"

constexpr const char* SOURCE = "LOGPatternParserUtils";
constexpr int MILLISECONDS_PER_SECOND = 1000;

LOGBasicPatternConverter::LOGBasicPatternConverter(LOGFormattingInfo* formattingInfo, int type)
    : LOGPatternConverter(formattingInfo), m_type(type) {}

bool LOGBasicPatternConverter::appendText(I18NString& text, LOGLoggingEvent* event) {
  ZEB_ASSERT(event, SOURCE, __LINE__);
  switch (m_type) {
    case LOGPatternParser::RELATIVE_TIME_CONVERTER:
      text.append(ZEBUtConvert::handleCvt(
          (event->getTimeStamp() - LOGLoggingEvent::getStartTime()) * MILLISECONDS_PER_SECOND));
      return true;
    case LOGPatternParser::MESSAGE_CONVERTER:
      return event->appendRenderedMessage(text);
    case LOGPatternParser::LEVEL_CONVERTER: {
      const LOGLevel* const level = event->getLevel();
      ZEB_ASSERT(level, SOURCE, __LINE__);
      break;
    }
    default:
      break;
  }
  const I18NString* const shown = logTextOf(LOGBasicPatternConverter::part(), *event);
  if (shown != nullptr) {
    text.append(*shown);
  }
  return shown != nullptr;
}

LOGEventPart LOGBasicPatternConverter::part() const {
  switch (m_type) {
    case LOGPatternParser::THREAD_CONVERTER:
      return LOGEventPart::THREAD;
    case LOGPatternParser::LEVEL_CONVERTER:
      return LOGEventPart::LEVEL;
    case LOGPatternParser::NDC_CONVERTER:
      return LOGEventPart::CONTEXT;
    case LOGPatternParser::MESSAGE_CONVERTER:
      return LOGEventPart::MESSAGE;
    default:
      return LOGEventPart::NONE;
  }
}
