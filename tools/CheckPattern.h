#ifndef TOOLS_CHECKPATTERN_H
#define TOOLS_CHECKPATTERN_H

#include <optional>
#include <string>
#include <vector>

/// What a conversion pattern consists of, read by the same steps as the library's own parser, which
/// keeps none of it.
class CheckPattern {
 public:
  struct Specifier {
    std::string text;  // from "%" to the letter
    char letter;
    bool hasWidths;
    std::optional<std::string> option;  // between braces
    bool hasUnreadOption;               // braces without a text or an end, which are text
    std::string word;                   // all letters from there on, of which only one counts
  };

  explicit CheckPattern(const std::string& pattern);

  const std::vector<Specifier>& specifiers() const { return m_specifiers; }
  /// Specifiers whose letter means nothing, and beginnings of specifiers: they are written as text.
  const std::vector<std::string>& unknown() const { return m_unknown; }
  const std::vector<std::string>& unfinished() const { return m_unfinished; }
  bool hasLineEnd() const { return m_hasLineEnd; }
  bool endsWithLineEnd() const;

 private:
  void readSpecifier();
  void readLiteral(char c);
  std::string wordAt(std::size_t begin) const;
  std::optional<std::string> readOption();
  char next() { return m_pattern[m_at++]; }
  bool isAtEnd() const { return m_at == m_pattern.size(); }

  const std::string m_pattern;
  std::size_t m_at = 0;
  std::vector<Specifier> m_specifiers;
  std::vector<std::string> m_unknown;
  std::vector<std::string> m_unfinished;
  std::string m_tail;  // the text behind the last specifier
  bool m_hasLineEnd = false;
};

#endif
