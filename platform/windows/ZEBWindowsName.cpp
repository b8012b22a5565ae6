#include "platform/windows/ZEBWindowsName.h"

#include <windows.h>

static_assert(sizeof(wchar_t) == sizeof(char16_t), "Windows names are UTF-16");

namespace {

/// A directory's name must leave room for a file's name of 8.3 characters in it.
constexpr std::size_t LONGEST_PLAIN_NAME = MAX_PATH - 12;

bool isSeparator(wchar_t c) { return c == L'\\' || c == L'/'; }

}  // namespace

std::wstring ZEBWindowsName::toWide(const I18NString& text) {
  const std::u16string units = text.toUtf16();
  const std::wstring wide(units.begin(), units.end());
  return wide.substr(0, wide.find(L'\0'));
}

I18NString ZEBWindowsName::fromWide(std::wstring_view wide) {
  return I18NString(reinterpret_cast<const char16_t*>(wide.data()), wide.size());
}

std::wstring ZEBWindowsName::toPath(const I18NString& name) {
  std::wstring path = toWide(name);
  if (path.size() < LONGEST_PLAIN_NAME || path.compare(0, 4, L"\\\\?\\") == 0) {
    return path;
  }
  path = absolute(path);
  const bool isShare = path.size() > 1 && isSeparator(path[0]) && isSeparator(path[1]);
  return isShare ? L"\\\\?\\UNC" + path.substr(1) : L"\\\\?\\" + path;
}

std::wstring ZEBWindowsName::absolute(const std::wstring& path) {
  std::wstring full(MAX_PATH, L'\0');
  for (;;) {
    // The length that is needed, with a zero at the end where it is more than there is.
    const DWORD length =
        GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    if (length == 0) {
      return path;
    }
    const bool fits = length < full.size();
    full.resize(length);
    if (fits) {
      return full;
    }
  }
}
