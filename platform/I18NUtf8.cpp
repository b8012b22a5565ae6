#include "platform/I18NUtf8.h"

#include <cstdint>
#include <cstring>

namespace i18n {

namespace {

unsigned char byteAt(std::string_view bytes, std::size_t offset) {
  return static_cast<unsigned char>(bytes[offset]);
}

}  // namespace

std::size_t encodeCharacter(char32_t c, char* out) noexcept {
  const auto following = [c](unsigned shift) {
    return static_cast<char>(0x80 | ((c >> shift) & 0x3F));
  };
  if (c < 0x80) {
    out[0] = static_cast<char>(c);
    return 1;
  }
  if (c < 0x800) {
    out[0] = static_cast<char>(0xC0 | (c >> 6));
    out[1] = following(0);
    return 2;
  }
  if (c < 0x10000) {
    out[0] = static_cast<char>(0xE0 | (c >> 12));
    out[1] = following(6);
    out[2] = following(0);
    return 3;
  }
  out[0] = static_cast<char>(0xF0 | (c >> 18));
  out[1] = following(12);
  out[2] = following(6);
  out[3] = following(0);
  return LONGEST_CHARACTER;
}

char32_t decodeForeign(std::string_view bytes, std::size_t& offset) {
  const unsigned char lead = byteAt(bytes, offset++);
  if (lead < 0x80) {
    return lead;
  }
  // The second byte's range excludes overlong forms, surrogates and what lies beyond U+10FFFF.
  unsigned char lowest = 0x80;
  unsigned char highest = 0xBF;
  int following = 0;
  char32_t c = 0;
  if (lead >= 0xC2 && lead <= 0xDF) {
    following = 1;
    c = lead & 0x1F;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    following = 2;
    c = lead & 0x0F;
    lowest = lead == 0xE0 ? 0xA0 : lowest;
    highest = lead == 0xED ? 0x9F : highest;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    following = 3;
    c = lead & 0x07;
    lowest = lead == 0xF0 ? 0x90 : lowest;
    highest = lead == 0xF4 ? 0x8F : highest;
  } else {
    return REPLACEMENT;
  }
  for (int i = 0; i < following; ++i) {
    if (offset == bytes.size() || byteAt(bytes, offset) < lowest ||
        byteAt(bytes, offset) > highest) {
      return REPLACEMENT;
    }
    c = (c << 6) | (byteAt(bytes, offset++) & 0x3FU);
    lowest = 0x80;
    highest = 0xBF;
  }
  return c;
}

char32_t decodeStored(std::string_view stored, std::size_t& offset) noexcept {
  const unsigned char lead = byteAt(stored, offset);
  const auto next = [&](std::size_t i) -> char32_t { return byteAt(stored, offset + i) & 0x3FU; };
  char32_t c = lead;
  std::size_t size = 1;
  if (lead >= 0xF0) {
    c = ((lead & 0x07U) << 18) | (next(1) << 12) | (next(2) << 6) | next(3);
    size = 4;
  } else if (lead >= 0xE0) {
    c = ((lead & 0x0FU) << 12) | (next(1) << 6) | next(2);
    size = 3;
  } else if (lead >= 0x80) {
    c = ((lead & 0x1FU) << 6) | next(1);
    size = 2;
  }
  offset += size;
  return c;
}

std::size_t asciiPrefix(std::string_view bytes) noexcept {
  constexpr std::uint64_t HIGH_BITS = 0x8080808080808080ULL;
  constexpr std::size_t BLOCK = 4 * sizeof(std::uint64_t);
  std::size_t i = 0;
  for (; i + BLOCK <= bytes.size(); i += BLOCK) {
    std::uint64_t words[4];
    std::memcpy(words, bytes.data() + i, BLOCK);
    if (((words[0] | words[1] | words[2] | words[3]) & HIGH_BITS) != 0) {
      break;
    }
  }
  const auto isAsciiWord = [&](std::size_t offset) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes.data() + offset, sizeof word);
    return (word & HIGH_BITS) == 0;
  };
  while (i + sizeof(std::uint64_t) <= bytes.size() && isAsciiWord(i)) {
    i += sizeof(std::uint64_t);
  }
  // What is left of an ASCII text is the end of its last word.
  if (bytes.size() >= sizeof(std::uint64_t) && bytes.size() - i < sizeof(std::uint64_t) &&
      isAsciiWord(bytes.size() - sizeof(std::uint64_t))) {
    return bytes.size();
  }
  while (i < bytes.size() && byteAt(bytes, i) < 0x80) {
    ++i;
  }
  return i;
}

}  // namespace i18n
