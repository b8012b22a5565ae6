#ifndef LAYOUTS_LOGEVENTPART_H
#define LAYOUTS_LOGEVENTPART_H

#include "core/LOGLevel.h"
#include "core/LOGLoggingEvent.h"

/// A part of an event that is shown as it is. A pattern layout takes such parts straight from the
/// event, without a call of their converters.
enum class LOGEventPart { NONE, LOGGER_NAME, THREAD, LEVEL, CONTEXT, MESSAGE };

/// The text of a part, which belongs to the event; null where there is none, and where its
/// converter knows more: for a message that is not rendered by its own text, and for the level of
/// an event that has none.
inline const I18NString* logTextOf(LOGEventPart part, LOGLoggingEvent& event) {
  switch (part) {
    case LOGEventPart::LOGGER_NAME:
      return &event.getLoggerName();
    case LOGEventPart::THREAD:
      return &event.getThreadName();
    case LOGEventPart::LEVEL:
      return event.getLevel() == nullptr ? nullptr : &event.getLevel()->getText();
    case LOGEventPart::CONTEXT:
      return &event.getNDC();
    case LOGEventPart::MESSAGE:
      return event.ownTextOfMessage();
    case LOGEventPart::NONE:
      break;
  }
  return nullptr;
}

#endif
