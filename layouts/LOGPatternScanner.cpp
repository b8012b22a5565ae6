#include "layouts/LOGPatternScanner.h"

#include <algorithm>
#include <limits>

namespace {

constexpr int LARGEST = std::numeric_limits<int>::max();

bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

/// The width with one more digit; it stops at the largest int.
int withDigit(int width, char16_t digit) {
  const int value = digit - u'0';
  return width > (LARGEST - value) / 10 ? LARGEST : width * 10 + value;
}

}  // namespace

LOGPatternScanner::LOGPatternScanner(const I18NString& pattern)
    : m_pattern(pattern.toUtf16()), m_lastBrace(m_pattern.rfind(u'}')) {}

LOGPatternScanner::Piece LOGPatternScanner::next() {
  m_text.clear();
  if (isAtEnd()) {
    return Piece::End;
  }
  readText();
  if (!m_text.isEmpty()) {
    return Piece::Text;
  }
  return readSpecifier();
}

/// Reads up to a specifier, or to a "%" that nothing follows.
void LOGPatternScanner::readText() {
  while (!isAtEnd()) {
    const std::size_t mark = std::min(m_pattern.find(u'%', m_position), m_pattern.size());
    m_text.append(I18NString(&m_pattern[m_position], mark - m_position));
    m_position = mark;
    const char16_t c = m_position + 1 < m_pattern.size() ? m_pattern[m_position + 1] : u'\0';
    if (c != u'%' && c != u'n') {
      return;
    }
    m_text += c == u'n' ? "\r\n" : "%";
    m_position += 2;
  }
}

LOGPatternScanner::Piece LOGPatternScanner::readSpecifier() {
  const std::size_t begin = m_position++;
  m_isLeftAligned = false;
  for (; isAt(u'-'); ++m_position) {
    m_isLeftAligned = true;
  }
  m_minimum = readNumber().value_or(-1);
  m_maximum = LARGEST;
  bool isCut = false;
  if (isAt(u'.')) {
    ++m_position;
    const std::optional<int> maximum = readNumber();
    m_maximum = maximum.value_or(LARGEST);
    isCut = !maximum;
  }
  isCut = isCut || isAtEnd();
  m_position += isAtEnd() ? 0 : 1;
  m_text = I18NString(&m_pattern[begin], m_position - begin);
  return isCut ? Piece::Unfinished : Piece::Specifier;
}

std::optional<int> LOGPatternScanner::readNumber() {
  std::optional<int> number;
  for (; !isAtEnd() && isDigit(m_pattern[m_position]); ++m_position) {
    number = withDigit(number.value_or(0), m_pattern[m_position]);
  }
  return number;
}

std::optional<I18NString> LOGPatternScanner::readOption() {
  // Without a look at the last brace a pattern of nothing but "%c{" would be searched each time.
  const std::size_t begin = m_position + 1;
  const std::size_t end =
      isAt(u'{') && m_lastBrace > begin ? m_pattern.find(u'}', begin) : std::u16string::npos;
  if (end == std::u16string::npos || end == begin) {
    return std::nullopt;
  }
  m_position = end + 1;
  return I18NString(&m_pattern[begin], end - begin);
}
