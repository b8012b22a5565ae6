#ifndef PLATFORM_ZEBUTCONVERT_H
#define PLATFORM_ZEBUTCONVERT_H

#include <cstdint>

#include "platform/I18NString.h"

/// Numbers to text and back.
class LOG4ZEB_EXPORT ZEBUtConvert {
 public:
  /// Plain decimal, without padding; only negative numbers have a sign.
  static I18NString handleCvt(std::int64_t value);
  static I18NString handleCvt(std::uint64_t value);
  static I18NString handleCvt(int value) { return handleCvt(static_cast<std::int64_t>(value)); }
  static I18NString handleCvt(unsigned int value) {
    return handleCvt(static_cast<std::uint64_t>(value));
  }
  /// `value` in decimal with zeros in front up to `digits` characters.
  static I18NString padded(std::int64_t value, int digits);
  /// Appends what padded() returns.
  static void appendPadded(I18NString& text, std::int64_t value, int digits);
  /// The number at the beginning of `text`: leading blanks, an optional sign, digits up to the
  /// first other character. 0 without digits; values out of range become the nearest in range.
  static std::int32_t toInt(const I18NString& text);
};

#endif
