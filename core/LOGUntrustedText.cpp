#include "core/LOGUntrustedText.h"

#include "platform/I18NUtf8.h"

namespace {

bool isIn(char32_t c, char32_t first, char32_t last) { return c >= first && c <= last; }

bool isInvisible(char32_t c) {
  return c < 0x20 || isIn(c, 0x7F, 0x9F) || c == 0x61C || isIn(c, 0x200E, 0x200F) ||
         isIn(c, 0x2028, 0x202E) || isIn(c, 0x2066, 0x2069) || c == 0xFEFF ||
         isIn(c, 0xFFFE, 0xFFFF) || i18n::isSurrogate(c);
}

/// A backslash, `kind` and the number in hexadecimal.
void appendNumber(std::string& out, char kind, char32_t number, int digits) {
  out += {'\\', kind};
  for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
    out += "0123456789ABCDEF"[(number >> shift) & 0xF];
  }
}

/// `before` is the character in front, 0 at the beginning.
void appendEscaped(std::string& out, char32_t c, char32_t before, bool isLast) {
  constexpr char32_t BEGINNING = 0;
  switch (c) {
    case U'\\':
      out += "\\\\";
      return;
    case U'\n':
      out += "\\n";
      return;
    case U'\r':
      out += "\\r";
      return;
    case U'\t':
      out += "\\t";
      return;
    default:
      break;
  }
  const bool endsSection =
      (c == U']' && isLast) || (c == U'>' && (before == BEGINNING || before == U']'));
  if (endsSection || isInvisible(c)) {
    appendNumber(out, 'u', c, 4);
  } else {
    i18n::appendCharacter(out, c);
  }
}

}  // namespace

I18NString LOGUntrustedText::escaped(std::string_view text) {
  constexpr std::string_view REPLACEMENT = "\xEF\xBF\xBD";
  std::string out;
  out.reserve(text.size());
  char32_t before = 0;
  for (std::size_t offset = 0; offset < text.size();) {
    const std::size_t begin = offset;
    const char32_t c = i18n::decodeForeign(text, offset);
    const std::string_view bytes = text.substr(begin, offset - begin);
    if (c == i18n::REPLACEMENT && bytes != REPLACEMENT) {
      for (const char byte : bytes) {
        appendNumber(out, 'x', static_cast<unsigned char>(byte), 2);
      }
    } else {
      appendEscaped(out, c, before, offset == text.size());
    }
    before = c;
  }
  return I18NString::fromUtf8(out);
}

I18NString LOGUntrustedText::escaped(const I18NString& text) {
  const std::u16string units = text.toUtf16();
  std::string out;
  char32_t before = 0;
  for (std::size_t i = 0; i < units.size(); ++i) {
    char32_t c = units[i];
    if (i18n::isHighSurrogate(c) && i + 1 < units.size() && i18n::isLowSurrogate(units[i + 1])) {
      c = i18n::combineSurrogates(c, units[++i]);
    }
    appendEscaped(out, c, before, i + 1 == units.size());
    before = c;
  }
  return I18NString::fromUtf8(out);
}
