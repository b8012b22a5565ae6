#ifndef TOOLS_LINELEVEL_H
#define TOOLS_LINELEVEL_H

#include <optional>
#include <string_view>

/// Finds out at which level a line of text is to be logged, from the words DEBUG, INFO, WARN, ERROR
/// and FATAL, in any case. WARNING counts as WARN. Levels are told as the ranks of LOGLevel.
class LineLevel {
 public:
  /// The rank that `name` stands for, nothing when it is none of the words.
  static std::optional<int> rankOf(std::string_view name) noexcept;
  /// The rank of the first of the words in `line`, nothing when it holds none. A word is whole when
  /// no ASCII letter, digit, underscore or byte beyond ASCII touches it, so that neither
  /// "errors" nor "gpg_error" counts, but "[error]" and "level=error" do.
  static std::optional<int> firstIn(std::string_view line) noexcept;
};

#endif
