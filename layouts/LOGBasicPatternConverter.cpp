#include "layouts/LOGBasicPatternConverter.h"

#include <memory>

#include "core/LOGLevel.h"
#include "core/LOGLoggingEvent.h"
#include "layouts/LOGPatternParser.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBTranslate.h"
#include "platform/ZEBUtConvert.h"

namespace {

constexpr const char* SOURCE = "LOGPatternParserUtils";
constexpr int MILLISECONDS_PER_SECOND = 1000;

}  // namespace

LOGBasicPatternConverter::LOGBasicPatternConverter(LOGFormattingInfo* formattingInfo, int type)
    : LOGPatternConverter(formattingInfo), m_type(type) {}

I18NString* LOGBasicPatternConverter::convert(LOGLoggingEvent* event) {
  ZEB_ASSERT(event, SOURCE, __LINE__);
  return zebTranslate(SOURCE, __LINE__, [this, event] {
    auto text = std::make_unique<I18NString>();
    return LOGBasicPatternConverter::appendText(*text, event) ? text.release() : nullptr;
  });
}

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
  const I18NString* const part = LOGBasicPatternConverter::part().textOf(*event);
  if (part != nullptr) {
    text.append(*part);
  }
  return part != nullptr;
}
