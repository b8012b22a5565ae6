#ifndef PLATFORM_I18NUTF8_H
#define PLATFORM_I18NUTF8_H

// Reading and writing single characters of UTF-8 and of the form in which I18NString stores its
// text: UTF-8 that may also hold single surrogates, three bytes each.

#include <cstddef>
#include <string_view>

namespace i18n {

constexpr char32_t REPLACEMENT = 0xFFFD;

constexpr bool isHighSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
constexpr bool isLowSurrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }
constexpr bool isSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }

constexpr char32_t combineSurrogates(char32_t high, char32_t low) {
  return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}
constexpr char32_t highSurrogateOf(char32_t c) { return 0xD800 + ((c - 0x10000) >> 10); }
constexpr char32_t lowSurrogateOf(char32_t c) { return 0xDC00 + ((c - 0x10000) & 0x3FF); }

constexpr std::size_t LONGEST_CHARACTER = 4;

/// Writes one character to `out`, which has room for LONGEST_CHARACTER bytes, and returns how many
/// it took; a surrogate takes three.
std::size_t encodeCharacter(char32_t c, char* out) noexcept;

/// Appends one character to anything that bytes can be appended to.
template <typename Bytes>
void appendCharacter(Bytes& out, char32_t c) {
  char bytes[LONGEST_CHARACTER];
  out.append(std::string_view(bytes, encodeCharacter(c, bytes)));
}

/// Decodes the character that begins at `offset` of bytes from anywhere, and moves `offset` past
/// it. A sequence that is not UTF-8 gives REPLACEMENT and moves past its longest valid beginning.
/// REQUIRES: offset < bytes.size()
char32_t decodeForeign(std::string_view bytes, std::size_t& offset);

/// Decodes the character that begins at `offset` of text that I18NString stored, and moves `offset`
/// past it. REQUIRES: offset is the beginning of a character.
char32_t decodeStored(std::string_view stored, std::size_t& offset) noexcept;

/// The number of leading bytes that are ASCII.
std::size_t asciiPrefix(std::string_view bytes) noexcept;

}  // namespace i18n

#endif
