#ifndef TOOLS_CHECKPATTERN_H
#define TOOLS_CHECKPATTERN_H

#include <optional>
#include <string>
#include <vector>

/// What a conversion pattern consists of, as the library's scanner reads it.
class CheckPattern {
 public:
  struct Specifier {
    std::string text;  // from "%" to the letter
    char letter;
    bool hasWidths;
    std::string word;                   // all letters from there on, of which only one counts
    std::optional<std::string> option;  // between braces
    bool hasUnreadOption;               // braces without a text or an end, which are text
  };

  explicit CheckPattern(const std::string& pattern);

  const std::vector<Specifier>& specifiers() const { return m_specifiers; }
  /// Specifiers whose letter means nothing, and beginnings of specifiers: they are written as text.
  const std::vector<std::string>& unknown() const { return m_unknown; }
  const std::vector<std::string>& unfinished() const { return m_unfinished; }
  bool hasLineEnd() const { return m_hasLineEnd; }
  bool endsWithLineEnd() const { return m_endsWithLineEnd; }

 private:
  std::vector<Specifier> m_specifiers;
  std::vector<std::string> m_unknown;
  std::vector<std::string> m_unfinished;
  bool m_hasLineEnd = false;
  bool m_endsWithLineEnd = false;
};

#endif
