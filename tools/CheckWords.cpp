#include "tools/CheckWords.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <map>
#include <numeric>
#include <utility>

#include "core/LOGLevel.h"

namespace {

constexpr const char* BLANKS = " \t\r\n";

/// How many letters have to be put in, taken out, replaced or exchanged with the next one.
std::size_t distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  std::vector<std::size_t> above = row;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    const std::vector<std::size_t> aboveThat = std::exchange(above, row);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = above[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      row[j] = std::min({above[j] + 1, row[j - 1] + 1, replaced});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        row[j] = std::min(row[j], aboveThat[j - 2] + 1);
      }
    }
  }
  return row[b.size()];
}

}  // namespace

bool CheckWords::contains(const std::vector<std::string>& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

std::string CheckWords::trimmed(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(BLANKS);
  return begin == std::string::npos ? ""
                                    : text.substr(begin, text.find_last_not_of(BLANKS) - begin + 1);
}

std::string CheckWords::lower(const std::string& text) {
  std::string result = text;
  for (char& c : result) {
    c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return result;
}

std::string CheckWords::either(const std::vector<std::string>& words) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    text += (i == 0 ? "" : i + 1 == words.size() ? " or " : ", ") + words[i];
  }
  return text;
}

std::string CheckWords::oneOf(const std::vector<std::string>& words) {
  return (words.size() > 1 ? "one of " : "") + either(words);
}

std::optional<std::string> CheckWords::nearest(const std::string& word,
                                               const std::vector<std::string>& candidates) {
  constexpr std::size_t LONGEST = 100;
  const std::string meant = lower(trimmed(word));
  std::optional<std::string> best;
  const std::size_t most = meant.size() < 3 ? 0 : std::clamp<std::size_t>(meant.size() / 4, 1, 3);
  std::size_t least = most + 1;
  for (const std::string& candidate : candidates) {
    const std::size_t far =
        meant.empty() || meant.size() > LONGEST ? least : distance(meant, lower(candidate));
    if (far < least) {
      least = far;
      best = candidate;
    }
  }
  return best;
}

bool CheckWords::isLevel(const std::string& word) {
  return lower(word) == "debug" || LOGLevel::toLevel(word) != LOGLevel::toLevel("DEBUG");
}

std::optional<std::string> CheckWords::probableLevel(const std::string& word) {
  static const std::map<std::string, std::string> MEANINGS{
      {"trace", "DEBUG"}, {"verbose", "DEBUG"},  {"notice", "INFO"}, {"warning", "WARN"},
      {"err", "ERROR"},   {"critical", "FATAL"}, {"none", "OFF"},    {"severe", "ERROR"}};
  const auto known = MEANINGS.find(lower(trimmed(word)));
  return known != MEANINGS.end()
             ? known->second
             : nearest(word, {"DEBUG", "INFO", "WARN", "ERROR", "FATAL", "ALL", "OFF"});
}

bool CheckWords::isTruthValue(const std::string& word) {
  return lower(word) == "true" || lower(word) == "false";
}

CheckWords::Number CheckWords::number(const std::string& text) {
  using Limits = std::numeric_limits<int>;
  char* end = nullptr;
  errno = 0;
  const long long value = std::strtoll(text.c_str(), &end, 10);
  const bool fits = errno == 0 && value >= Limits::min() && value <= Limits::max();
  const bool hasDigits = end != text.c_str();
  return {static_cast<int>(std::clamp<long long>(value, Limits::min(), Limits::max())),
          fits && hasDigits && *end == '\0', trimmed(end)};
}
