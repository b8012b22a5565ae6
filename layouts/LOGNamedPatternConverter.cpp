#include "layouts/LOGNamedPatternConverter.h"

#include "platform/ZEBAssertError.h"

namespace {

constexpr const char* SOURCE = "LOGPatternParserUtils";

LOGFormattingInfo* checked(LOGFormattingInfo* formattingInfo) {
  ZEB_ASSERT(formattingInfo, SOURCE, __LINE__);
  return formattingInfo;
}

I18NString lastComponents(const I18NString& name, int precision) {
  const I18NString dot = ".";
  long end = static_cast<long>(name.length()) - 1;
  for (; precision > 0; --precision) {
    end = end < 1 ? I18NString::NOT_FOUND : name.lastIndexOf(dot, end - 1);
    if (end == I18NString::NOT_FOUND) {
      return name;
    }
  }
  return name.substring(end + 1);
}

}  // namespace

LOGNamedPatternConverter::LOGNamedPatternConverter(LOGFormattingInfo* formattingInfo, int precision)
    : LOGPatternConverter(checked(formattingInfo)), m_precision(precision) {}

bool LOGNamedPatternConverter::appendText(I18NString& text, LOGLoggingEvent* event) {
  ZEB_ASSERT(event, SOURCE, __LINE__);
  const I18NString& name = getFullyQualifiedName(event);
  if (m_precision > 0) {
    text.append(lastComponents(name, m_precision));
  } else {
    text.append(name);
  }
  return true;
}
