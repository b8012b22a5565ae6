#include "soak/SoakLine.h"

#include <charconv>

std::string SoakLine::text() const {
  const auto length = static_cast<std::size_t>((number * 7 + source) % 90);
  return "{" + std::to_string(source) + ":" + std::to_string(number) + ":" +
         std::string(length, static_cast<char>('a' + number % 26)) + "}";
}

std::optional<SoakLine> SoakLine::in(std::string_view record) {
  const std::size_t begin = record.find('{');
  const std::size_t end = record.find('}');
  if (begin == record.npos || end == record.npos || end < begin || record.rfind('{') != begin ||
      record.rfind('}') != end) {
    return std::nullopt;
  }
  const char* const last = record.data() + end;
  SoakLine line;
  const auto source = std::from_chars(record.data() + begin + 1, last, line.source);
  if (source.ec != std::errc() || *source.ptr != ':') {
    return std::nullopt;
  }
  std::from_chars(source.ptr + 1, last, line.number);
  return record.substr(begin, end - begin + 1) == line.text() ? std::optional(line) : std::nullopt;
}
