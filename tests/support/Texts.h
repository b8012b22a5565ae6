#ifndef TESTS_SUPPORT_TEXTS_H
#define TESTS_SUPPORT_TEXTS_H

#include <cstddef>
#include <string>

inline bool mentions(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

/// How often the part is in the text.
inline std::ptrdiff_t countOf(const std::string& part, const std::string& text) {
  std::ptrdiff_t found = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++found;
  }
  return found;
}

inline std::string repeated(const std::string& text, std::size_t count) {
  std::string result;
  for (std::size_t i = 0; i < count; ++i) {
    result += text;
  }
  return result;
}

#endif
