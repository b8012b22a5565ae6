#include "tools/CheckPattern.h"

#include <limits>

#include "layouts/LOGPatternScanner.h"

namespace {

constexpr const char* LETTERS = "cCdFlLmMprtxX";
constexpr const char* LETTERS_WITH_OPTION = "cCdX";

bool isOneOf(char c, const std::string& letters) { return letters.find(c) != std::string::npos; }

/// All letters from a position on.
std::string wordAt(const std::u16string& pattern, std::size_t position) {
  std::string word;
  for (; position < pattern.size() && (pattern[position] | 0x20) >= u'a' &&
         (pattern[position] | 0x20) <= u'z';
       ++position) {
    word += static_cast<char>(pattern[position]);
  }
  return word;
}

CheckPattern::Specifier specifierOf(LOGPatternScanner& scanner) {
  const std::string text = scanner.text().toStdString();
  const bool hasWidths = scanner.isLeftAligned() || scanner.minimum() >= 0 ||
                         scanner.maximum() != std::numeric_limits<int>::max();
  CheckPattern::Specifier specifier{text, text.back(), hasWidths, "", std::nullopt, false};
  specifier.word = wordAt(scanner.pattern(), scanner.position() - 1);
  if (isOneOf(specifier.letter, LETTERS_WITH_OPTION)) {
    const std::optional<I18NString> option = scanner.readOption();
    specifier.option = option ? std::optional(option->toStdString()) : std::nullopt;
    specifier.hasUnreadOption = !option && scanner.isAt(u'{');
  }
  return specifier;
}

}  // namespace

CheckPattern::CheckPattern(const std::string& pattern) {
  using Piece = LOGPatternScanner::Piece;
  LOGPatternScanner scanner(pattern);
  for (Piece piece = scanner.next(); piece != Piece::End; piece = scanner.next()) {
    const std::string text = scanner.text().toStdString();
    const bool isKnown = piece == Piece::Specifier && isOneOf(text.back(), LETTERS);
    const std::size_t lineEnd = isKnown ? std::string::npos : text.rfind('\n');
    m_hasLineEnd = m_hasLineEnd || (piece == Piece::Text && lineEnd != std::string::npos);
    m_endsWithLineEnd = lineEnd != std::string::npos && lineEnd + 1 == text.size();
    if (isKnown) {
      m_specifiers.push_back(specifierOf(scanner));
    } else if (piece != Piece::Text) {
      (piece == Piece::Specifier ? m_unknown : m_unfinished).push_back(text);
    }
  }
}
