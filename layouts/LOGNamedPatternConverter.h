#ifndef LAYOUTS_LOGNAMEDPATTERNCONVERTER_H
#define LAYOUTS_LOGNAMEDPATTERNCONVERTER_H

#include "layouts/LOGDirectConverter.h"
#include "layouts/LOGPatternConverter.h"

/// A dotted name of an event, of which the last components may be kept only.
class LOG4ZEB_EXPORT LOGNamedPatternConverter : public LOGPatternConverter,
                                                public LOGDirectConverter {
 public:
  /// The last `precision` components of the name; the whole name when it has no more than that, or
  /// when the precision is not positive. A dot that ends the name separates nothing. Throws
  /// ZEBAssertError for a null event.
  I18NString* convert(LOGLoggingEvent* event) override { return newText(event); }
  /// The name, owned by the event.
  virtual const I18NString& getFullyQualifiedName(LOGLoggingEvent* event) = 0;
  bool appendText(I18NString& text, LOGLoggingEvent* event) override;

 protected:
  /// Whole names.
  LOGNamedPatternConverter() = default;
  /// Throws ZEBAssertError when `formattingInfo` is null.
  LOGNamedPatternConverter(LOGFormattingInfo* formattingInfo, int precision);
  bool isWhole() const { return m_precision <= 0; }

 private:
  int m_precision = 0;
};

#endif
