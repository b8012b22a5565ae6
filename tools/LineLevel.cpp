#include "tools/LineLevel.h"

#include <algorithm>
#include <cstddef>

#include "core/LOGLevel.h"

namespace {

constexpr struct {
  std::string_view word;
  int rank;
} WORDS[] = {{"debug", LOGLevel::DEBUG_RANK}, {"info", LOGLevel::INFO_RANK},
             {"warn", LOGLevel::WARN_RANK},   {"warning", LOGLevel::WARN_RANK},
             {"error", LOGLevel::ERROR_RANK}, {"fatal", LOGLevel::FATAL_RANK}};

constexpr bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }

/// Independent of the locale, in which a byte beyond ASCII may or may not be a letter.
constexpr bool isWordCharacter(char c) {
  return (c >= 'a' && c <= 'z') || isUpper(c) || (c >= '0' && c <= '9') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

constexpr char lower(char c) { return isUpper(c) ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

std::optional<int> LineLevel::rankOf(std::string_view name) noexcept {
  for (const auto& [word, rank] : WORDS) {
    if (std::equal(name.begin(), name.end(), word.begin(), word.end(),
                   [](char a, char b) { return lower(a) == b; })) {
      return rank;
    }
  }
  return std::nullopt;
}

std::optional<int> LineLevel::firstIn(std::string_view line) noexcept {
  for (std::size_t position = 0; position < line.size();) {
    std::size_t end = position;
    while (end < line.size() && isWordCharacter(line[end])) {
      ++end;
    }
    const std::optional<int> rank = rankOf(line.substr(position, end - position));
    if (rank) {
      return rank;
    }
    position = end + 1;
  }
  return std::nullopt;
}
