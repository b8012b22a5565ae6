#ifndef LAYOUTS_LOGBASICPATTERNCONVERTER_H
#define LAYOUTS_LOGBASICPATTERNCONVERTER_H

#include "layouts/LOGDirectConverter.h"
#include "layouts/LOGPatternConverter.h"

/// Relative time, thread, level, diagnostic context or message of an event, as a constant of
/// LOGPatternParser says.
class LOG4ZEB_EXPORT LOGBasicPatternConverter : public LOGPatternConverter,
                                                public LOGDirectConverter {
 public:
  LOGBasicPatternConverter(LOGFormattingInfo* formattingInfo, int type);

  /// Null for an unknown type and for an event without a message. Throws ZEBAssertError for a null
  /// event and where the level is asked of an event that has none.
  I18NString* convert(LOGLoggingEvent* event) override { return newText(event); }
  bool appendText(I18NString& text, LOGLoggingEvent* event) override;
  LOGEventPart part() const override;

 private:
  int m_type;
};

#endif
