#ifndef LAYOUTS_LOGDATEPATTERNCONVERTER_H
#define LAYOUTS_LOGDATEPATTERNCONVERTER_H

#include <memory>

#include "layouts/LOGDate.h"
#include "layouts/LOGDateFormat.h"
#include "layouts/LOGDirectConverter.h"
#include "layouts/LOGPatternConverter.h"

/// The time of an event in a date format. The milliseconds are those of the converter's own making.
class LOG4ZEB_EXPORT LOGDatePatternConverter : public LOGPatternConverter,
                                               public LOGDirectConverter {
 public:
  /// Takes ownership of the format, also when it throws. Throws ZEBAssertError when either is null.
  LOGDatePatternConverter(LOGFormattingInfo* formattingInfo, LOGDateFormat* dateFormat);

  /// Throws ZEBAssertError for a null event.
  I18NString* convert(LOGLoggingEvent* event) override { return newText(event); }
  bool appendText(I18NString& text, LOGLoggingEvent* event) override;

 private:
  LOGDatePatternConverter(LOGFormattingInfo* formattingInfo,
                          std::unique_ptr<LOGDateFormat> dateFormat);

  std::unique_ptr<LOGDateFormat> m_dateFormat;
  LOGDate m_date;
  // The text of the second last asked for: the library's formats write one second always the same.
  I18NString m_text;
  bool m_isKnownFormat = false;
};

#endif
