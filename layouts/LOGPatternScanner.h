#ifndef LAYOUTS_LOGPATTERNSCANNER_H
#define LAYOUTS_LOGPATTERNSCANNER_H

#include <cstddef>
#include <optional>
#include <string>

#include "platform/I18NString.h"

/// Cuts a conversion pattern into text and specifiers, whatever their letters mean. A specifier is
/// `%`, "-" for left alignment, the minimum width, "." and the maximum width, all optional, and one
/// character.
class LOG4ZEB_EXPORT LOGPatternScanner {
 public:
  enum class Piece {
    Text,
    Specifier,
    Unfinished,  ///< the beginning of a specifier, which the pattern or another character cuts off
    End
  };

  explicit LOGPatternScanner(const I18NString& pattern);

  /// Moves to the next piece.
  Piece next();
  /// The option in braces that follows the specifier, behind which the next piece then begins;
  /// nothing where there is none.
  std::optional<I18NString> readOption();

  /// The piece: text as it is to be written, a specifier as it stands in the pattern.
  const I18NString& text() const { return m_text; }
  /// The widths and the alignment of the specifier, as LOGFormattingInfo has them: without them -1
  /// and the largest int.
  int minimum() const { return m_minimum; }
  int maximum() const { return m_maximum; }
  bool isLeftAligned() const { return m_isLeftAligned; }
  /// The code units of the pattern, and how many of them were read.
  const std::u16string& pattern() const { return m_pattern; }
  std::size_t position() const { return m_position; }
  /// Whether that code unit comes next.
  bool isAt(char16_t c) const { return !isAtEnd() && m_pattern[m_position] == c; }

 private:
  Piece readSpecifier();
  void readText();
  std::optional<int> readNumber();
  bool isAtEnd() const { return m_position == m_pattern.size(); }

  const std::u16string m_pattern;
  const std::size_t m_lastBrace;  // the last closing one, npos without
  std::size_t m_position = 0;
  I18NString m_text;
  int m_minimum = 0;
  int m_maximum = 0;
  bool m_isLeftAligned = false;
};

#endif
