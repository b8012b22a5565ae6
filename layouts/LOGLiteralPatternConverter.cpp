#include "layouts/LOGLiteralPatternConverter.h"

#include "platform/ZEBTranslate.h"

LOGLiteralPatternConverter::LOGLiteralPatternConverter(const I18NString& literal)
    : m_literal(literal) {}

I18NString* LOGLiteralPatternConverter::convert(LOGLoggingEvent*) {
  return zebTranslate("LOGPatternParserUtils", __LINE__,
                      [this] { return new I18NString(m_literal); });
}

void LOGLiteralPatternConverter::format(I18NString& sbuf, LOGLoggingEvent*) {
  sbuf.append(m_literal);
}
