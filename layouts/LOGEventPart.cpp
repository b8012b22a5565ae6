#include "layouts/LOGEventPart.h"

#include "core/LOGLevel.h"
#include "core/LOGLoggingEvent.h"
#include "layouts/LOGPatternParser.h"

LOG4ZEB_HOT const I18NString* LOGEventPart::textOf(LOGLoggingEvent& event) const {
  switch (m_type) {
    case LOGGER_NAME:
      return &event.getLoggerName();
    case LOGPatternParser::THREAD_CONVERTER:
      return &event.getThreadName();
    case LOGPatternParser::LEVEL_CONVERTER:
      return event.getLevel() == nullptr ? nullptr : &event.getLevel()->getText();
    case LOGPatternParser::NDC_CONVERTER:
      return &event.getNDC();
    case LOGPatternParser::MESSAGE_CONVERTER:
      return event.ownTextOfMessage();
    default:
      return nullptr;
  }
}
