#ifndef CORE_LOGUNTRUSTEDTEXT_H
#define CORE_LOGUNTRUSTEDTEXT_H

#include <string>
#include <string_view>

#include "platform/I18NString.h"

/// Text from outside, such as what a user typed or a client sent, made safe for a log. Layouts
/// write a message as it is, so a line break in it begins a line that looks like any other, and an
/// escape sequence is obeyed by the terminal that shows the file.
///
/// What escaped() returns is one line, and what is in it cannot be mistaken for another character:
///
///     \\               a backslash
///     \n \r \t         line feed, carriage return, tab
///     \u001B           any other control character (U+0000-001F, U+007F-009F), as its number; so
///                      too the line ends U+0085, U+2028 and U+2029, what changes the direction of
///                      text (U+061C, U+200E, U+200F, U+202A-202E, U+2066-2069), U+FEFF, U+FFFE,
///                      U+FFFF and a surrogate without its partner
///     \u005D \u003E    a "]" at the end, and a ">" at the beginning or behind "]", which could end
///                      the CDATA section that the XML layout writes a message in
///     \xE9             a byte that is not UTF-8
///
/// All other characters stay as they are. The result is valid UTF-8 and can be read back, and
/// escaping it once more is visible.
class LOG4ZEB_EXPORT LOGUntrustedText {
 public:
  /// `text` is UTF-8 or any bytes, and may contain zeros; a null pointer is empty.
  static I18NString escaped(std::string_view text);
  static I18NString escaped(const std::string& text) { return escaped(std::string_view(text)); }
  static I18NString escaped(const char* text) {
    return text == nullptr ? I18NString() : escaped(std::string_view(text));
  }
  static I18NString escaped(const I18NString& text);
};

#endif
