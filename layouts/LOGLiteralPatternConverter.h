#ifndef LAYOUTS_LOGLITERALPATTERNCONVERTER_H
#define LAYOUTS_LOGLITERALPATTERNCONVERTER_H

#include "layouts/LOGPatternConverter.h"

/// The plain text between the specifiers of a conversion pattern.
class LOG4ZEB_EXPORT LOGLiteralPatternConverter : public LOGPatternConverter {
 public:
  explicit LOGLiteralPatternConverter(const I18NString& literal);

  I18NString* convert(LOGLoggingEvent* event) override;
  const I18NString& getLiteral() const { return m_literal; }
  /// Appends the text to `sbuf`. Widths do not apply, and what `sbuf` holds stays.
  void format(I18NString& sbuf, LOGLoggingEvent* event) override;

 private:
  I18NString m_literal;
};

#endif
