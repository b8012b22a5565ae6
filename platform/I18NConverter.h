#ifndef PLATFORM_I18NCONVERTER_H
#define PLATFORM_I18NCONVERTER_H

#include <string_view>

#include "platform/I18NString.h"

/// Converts bytes in a named encoding to text. Known names, whatever their case: "ascii",
/// "us-ascii", "utf-8" and "utf8" (all read as UTF-8, of which ASCII is a part), "iso-8859-1" and
/// "latin1". Conversions never fail: invalid bytes become U+FFFD.
class LOG4ZEB_EXPORT I18NConverter {
 public:
  /// Throws I18NRuntimeError when the encoding is unknown.
  explicit I18NConverter(const char* encoding);

  I18NString toText(std::string_view bytes) const;
  /// Appends what toText() gives. REQUIRES: not a view of the text itself.
  void append(I18NString& text, std::string_view bytes) const;

 private:
  enum class Encoding { Utf8, Latin1 };
  Encoding m_encoding;
};

#endif
