#ifndef PLATFORM_I18NLOCALE_H
#define PLATFORM_I18NLOCALE_H

#include <string_view>

#include "platform/I18NString.h"

/// Compares names without regard to case. Only the ASCII letters are folded, whatever the locale of
/// the process, so that a configuration means the same everywhere.
class LOG4ZEB_EXPORT I18NLocale {
 public:
  /// The default locale.
  I18NLocale() = default;

  /// Negative, 0 or positive as `a` comes before, equals or comes after `b`.
  int compareIgnoreCase(const I18NString& a, const I18NString& b) const;

  static bool equalIgnoreCase(std::string_view a, std::string_view b) noexcept;
  static bool equalIgnoreCase(const I18NString& a, const I18NString& b);
};

#endif
