#ifndef TOOLS_CHECKWORDS_H
#define TOOLS_CHECKWORDS_H

#include <optional>
#include <string>
#include <vector>

/// What the rules share about words and numbers of a document.
class CheckWords {
 public:
  static bool contains(const std::vector<std::string>& words, const std::string& word);
  static std::string trimmed(const std::string& text);
  /// In lower case, as far as ASCII goes.
  static std::string lower(const std::string& text);
  /// "a", "a or b", "a, b or c".
  static std::string either(const std::vector<std::string>& words);
  /// "a", "one of a or b".
  static std::string oneOf(const std::vector<std::string>& words);
  /// The candidate that was probably meant: the same but for case, blanks and a few letters.
  static std::optional<std::string> nearest(const std::string& word,
                                            const std::vector<std::string>& candidates);

  static bool isLevel(const std::string& word);
  /// The level that a word which is none probably means.
  static std::optional<std::string> probableLevel(const std::string& word);
  static bool isTruthValue(const std::string& word);

  /// A number as the library reads it, from the beginning of the text.
  struct Number {
    int value;
    bool isWhole;  // the text is nothing but a number that fits
    std::string rest;
  };
  static Number number(const std::string& text);
};

#endif
