#ifndef SOAK_SOAKLINE_H
#define SOAK_SOAKLINE_H

#include <charconv>
#include <optional>
#include <string>
#include <string_view>

/// A message of the soak: it says who logged it and as the how-manieth, and its whole text follows
/// from that, so that a reader sees whether all of it is there.
struct SoakLine {
  int source = 0;
  long number = 0;

  std::string text() const {
    const auto length = static_cast<std::size_t>((number * 7 + source) % 90);
    return "{" + std::to_string(source) + ":" + std::to_string(number) + ":" +
           std::string(length, static_cast<char>('a' + number % 26)) + "}";
  }

  /// The one message in a record; nothing when there is none, a torn one, or more than one.
  static std::optional<SoakLine> in(std::string_view record) {
    const std::size_t begin = record.find('{');
    const std::size_t end = record.find('}');
    if (begin == record.npos || record.rfind('{') != begin || end == record.npos || end < begin ||
        record.rfind('}') != end) {
      return std::nullopt;
    }
    const char* const last = record.data() + end;
    SoakLine line;
    const char* const colon = std::from_chars(record.data() + begin + 1, last, line.source).ptr;
    if (colon != last) {
      std::from_chars(colon + 1, last, line.number);
    }
    const std::string_view found = record.substr(begin, end - begin + 1);
    return found == line.text() ? std::optional(line) : std::nullopt;
  }
};

#endif
