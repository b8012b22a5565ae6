#ifndef LAYOUTS_LOGDIRECTCONVERTER_H
#define LAYOUTS_LOGDIRECTCONVERTER_H

#include "layouts/LOGEventPart.h"
#include "platform/I18NString.h"

/// The side of a pattern converter that can put its text straight where it belongs, so that a
/// pattern layout needs no strings in between. A class that overrides convert() of a converter
/// which has this side overrides both.
class LOG4ZEB_EXPORT LOGDirectConverter {
 public:
  virtual ~LOGDirectConverter();
  /// Appends to `text` what convert() gives; false, and nothing appended, when that is null.
  virtual bool appendText(I18NString& text, LOGLoggingEvent* event) = 0;
  /// What appendText() appends, in a new string, or null: convert() of a class that has this side.
  /// Throws ZEBAssertError for a null event.
  I18NString* newText(LOGLoggingEvent* event);
  /// What appendText() appends where the event has it.
  virtual LOGEventPart part() const { return LOGEventPart::NONE; }
};

#endif
