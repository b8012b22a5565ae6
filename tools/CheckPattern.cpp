#include "tools/CheckPattern.h"

#include <cstring>

namespace {

constexpr const char* LETTERS = "cCdFlLmMprtxX";
constexpr const char* LETTERS_WITH_OPTION = "cCdX";

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isOneOf(char c, const char* letters) {
  return c != '\0' && std::strchr(letters, c) != nullptr;
}

}  // namespace

CheckPattern::CheckPattern(const std::string& pattern) : m_pattern(pattern) {
  while (!isAtEnd()) {
    const char c = next();
    if (c != '%') {
      readLiteral(c);
    } else if (isAtEnd()) {
      m_unfinished.emplace_back("%");
      readLiteral(c);
    } else if (m_pattern[m_at] == '%' || m_pattern[m_at] == 'n') {
      readLiteral(next() == 'n' ? '\n' : '%');
    } else {
      readSpecifier();
    }
  }
}

bool CheckPattern::endsWithLineEnd() const { return !m_tail.empty() && m_tail.back() == '\n'; }

void CheckPattern::readLiteral(char c) {
  m_tail += c;
  m_hasLineEnd = m_hasLineEnd || c == '\n';
}

void CheckPattern::readSpecifier() {
  const std::size_t begin = m_at - 1;
  bool hasWidths = false;
  bool isAfterDot = false;
  bool mayAlign = true;
  bool mayDot = true;
  while (!isAtEnd()) {
    const char c = next();
    const std::string text = m_pattern.substr(begin, m_at - begin);
    if (isDigit(c)) {
      hasWidths = true;
      mayAlign = false;
      mayDot = mayDot && !isAfterDot;
      isAfterDot = false;
    } else if (isAfterDot) {
      // A point without a number: what was read stays text.
      m_unfinished.push_back(text);
      m_tail = text;
      return;
    } else if (c == '-' && mayAlign) {
      hasWidths = true;
    } else if (c == '.' && mayDot) {
      isAfterDot = true;
      mayAlign = false;
      mayDot = false;
    } else if (isOneOf(c, LETTERS)) {
      m_tail.clear();
      m_specifiers.push_back({text, c, hasWidths, std::nullopt, false, wordAt(m_at - 1)});
      if (isOneOf(c, LETTERS_WITH_OPTION)) {
        Specifier& specifier = m_specifiers.back();
        specifier.option = readOption();
        specifier.hasUnreadOption = !specifier.option && !isAtEnd() && m_pattern[m_at] == '{';
      }
      return;
    } else {
      m_unknown.push_back(text);
      m_tail = text;
      return;
    }
  }
  m_unfinished.push_back(m_pattern.substr(begin));
  m_tail = m_pattern.substr(begin);
}

std::string CheckPattern::wordAt(std::size_t begin) const {
  std::size_t end = begin;
  while (end < m_pattern.size() && isLetter(m_pattern[end])) {
    ++end;
  }
  return m_pattern.substr(begin, end - begin);
}

std::optional<std::string> CheckPattern::readOption() {
  const std::size_t close = m_pattern.find('}', m_at);
  if (isAtEnd() || m_pattern[m_at] != '{' || close == std::string::npos || close == m_at + 1) {
    return std::nullopt;
  }
  const std::string option = m_pattern.substr(m_at + 1, close - m_at - 1);
  m_at = close + 1;
  return option;
}
