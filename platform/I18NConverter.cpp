#include "platform/I18NConverter.h"

#include <string>

#include "platform/I18NLocale.h"
#include "platform/I18NRuntimeError.h"
#include "platform/I18NUtf8.h"

I18NConverter::I18NConverter(const char* encoding) : m_encoding(Encoding::Utf8) {
  const std::string_view name = encoding == nullptr ? "" : encoding;
  // The default comes with every literal; it is recognised before anything is folded.
  if (name == "ascii") {
    return;
  }
  const auto is = [&](std::string_view known) { return I18NLocale::equalIgnoreCase(name, known); };
  if (is("iso-8859-1") || is("latin1")) {
    m_encoding = Encoding::Latin1;
  } else if (!is("ascii") && !is("us-ascii") && !is("utf-8") && !is("utf8")) {
    throw I18NRuntimeError("unknown encoding: " + I18NString::fromUtf8(name), "I18NConverter",
                           __LINE__);
  }
}

I18NString I18NConverter::toText(std::string_view bytes) const {
  I18NString text;
  append(text, bytes);
  return text;
}

void I18NConverter::append(I18NString& text, std::string_view bytes) const {
  if (m_encoding == Encoding::Utf8) {
    text.append(bytes);
    return;
  }
  std::string utf8;
  for (const char c : bytes) {
    i18n::appendCharacter(utf8, static_cast<unsigned char>(c));
  }
  text.append(std::string_view(utf8));
}
