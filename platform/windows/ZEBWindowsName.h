#ifndef PLATFORM_WINDOWS_ZEBWINDOWSNAME_H
#define PLATFORM_WINDOWS_ZEBWINDOWSNAME_H

#include <string>
#include <string_view>

#include "platform/I18NString.h"

/// Text between the library and Windows, whose names are UTF-16.
class ZEBWindowsName {
 public:
  /// The text in UTF-16, up to its first zero as the system reads it.
  static std::wstring toWide(const I18NString& text);
  static I18NString fromWide(std::wstring_view wide);
  /// The path in the form that the system's file operations take at any length: one that is too
  /// long for a plain name is made absolute and marked as such.
  static std::wstring toPath(const I18NString& name);
  /// The path from the root of its drive; `path` itself when it cannot be told.
  static std::wstring absolute(const std::wstring& path);
};

#endif
