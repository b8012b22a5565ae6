#include "platform/I18NLocale.h"

#include <string>

namespace {

char fold(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

I18NString folded(const I18NString& text) {
  std::u16string units = text.toUtf16();
  for (char16_t& unit : units) {
    unit = unit < 0x80 ? static_cast<char16_t>(fold(static_cast<char>(unit))) : unit;
  }
  return I18NString(units.data(), units.size());
}

}  // namespace

int I18NLocale::compareIgnoreCase(const I18NString& a, const I18NString& b) const {
  return folded(a).compare(folded(b));
}

bool I18NLocale::equalIgnoreCase(std::string_view a, std::string_view b) noexcept {
  if (a.size() != b.size()) {
    return false;
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (fold(a[i]) != fold(b[i])) {
      return false;
    }
  }
  return true;
}

bool I18NLocale::equalIgnoreCase(const I18NString& a, const I18NString& b) {
  return a.length() == b.length() && I18NLocale().compareIgnoreCase(a, b) == 0;
}
