#include "platform/I18NString.h"

#include <algorithm>
#include <cstring>
#include <ostream>
#include <utility>

#include "platform/I18NConverter.h"
#include "platform/I18NUtf8.h"

namespace {

/// The code units of stored text, one after the other.
class UnitReader {
 public:
  explicit UnitReader(std::string_view stored) : m_stored(stored) {}
  bool atEnd() const { return m_pendingLow == 0 && m_offset == m_stored.size(); }
  char16_t next() {
    if (m_pendingLow != 0) {
      return std::exchange(m_pendingLow, char16_t{0});
    }
    const char32_t c = i18n::decodeStored(m_stored, m_offset);
    if (c < 0x10000) {
      return static_cast<char16_t>(c);
    }
    m_pendingLow = static_cast<char16_t>(i18n::lowSurrogateOf(c));
    return static_cast<char16_t>(i18n::highSurrogateOf(c));
  }

 private:
  std::string_view m_stored;
  std::size_t m_offset = 0;
  char16_t m_pendingLow = 0;  // a low surrogate is never 0
};

constexpr std::size_t SURROGATE_SIZE = 3;

/// The surrogate that stored text ends with, 0 if none.
char32_t surrogateAtEnd(std::string_view stored) {
  if (stored.size() < SURROGATE_SIZE ||
      static_cast<unsigned char>(stored[stored.size() - SURROGATE_SIZE]) != 0xED) {
    return 0;
  }
  std::size_t offset = stored.size() - SURROGATE_SIZE;
  const char32_t c = i18n::decodeStored(stored, offset);
  return i18n::isSurrogate(c) ? c : 0;
}

char32_t surrogateAtBegin(std::string_view stored) {
  std::size_t offset = 0;
  const char32_t c = stored.empty() ? 0 : i18n::decodeStored(stored, offset);
  return i18n::isSurrogate(c) ? c : 0;
}

using Block = std::uint64_t __attribute__((vector_size(16)));

/// Copies the bytes, which are a block at least; returns whether all of them are ASCII.
inline bool copyAscii(char* to, std::string_view bytes) noexcept {
  constexpr std::uint64_t HIGH_BITS = 0x8080808080808080ULL;
  Block all{};
  const auto copy = [&](std::size_t offset) {
    Block block;
    std::memcpy(&block, bytes.data() + offset, sizeof block);
    all |= block;
    std::memcpy(to + offset, &block, sizeof block);
  };
  const std::size_t last = bytes.size() - sizeof(Block);
  for (std::size_t i = 0; i < last; i += sizeof(Block)) {
    copy(i);
  }
  copy(last);  // what is left, and some of it again
  return ((all[0] | all[1]) & HIGH_BITS) == 0;
}

}  // namespace

I18NString::I18NString(const char* text, const char* encoding) {
  if (text != nullptr) {
    I18NConverter(encoding).append(*this, text);
  }
}

I18NString::I18NString(const std::string& text, const char* encoding) {
  I18NConverter(encoding).append(*this, text);
}

I18NString::I18NString(const char16_t* units, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    char32_t c = units[i];
    if (i18n::isHighSurrogate(c) && i + 1 < count && i18n::isLowSurrogate(units[i + 1])) {
      c = i18n::combineSurrogates(c, units[++i]);
    }
    m_loneSurrogates += i18n::isSurrogate(c) ? 1 : 0;
    i18n::appendCharacter(m_bytes, c);
  }
  m_units = static_cast<std::uint32_t>(count);
}

namespace {

/// Made when the library is loaded: a fork beside its making would leave the child waiting for
/// ever.
[[maybe_unused]] const I18NString& NONE = I18NString::none();

}  // namespace

const I18NString& I18NString::none() {
  static const auto* const text = new I18NString;
  return *text;
}

I18NString I18NString::fromUtf8(std::string_view bytes) {
  I18NString text;
  text.append(bytes);
  return text;
}

char16_t I18NString::at(std::size_t position) const noexcept {
  if (position >= m_units) {
    return 0;
  }
  if (isAscii()) {
    return static_cast<unsigned char>(m_bytes[position]);
  }
  UnitReader reader(m_bytes);
  while (position-- > 0) {
    reader.next();
  }
  return reader.next();
}

I18NString I18NString::substring(std::size_t begin, std::size_t end) const {
  end = std::min(end, length());
  begin = std::min(begin, end);
  I18NString result;
  if (isAscii()) {
    result.appendAscii(bytes().substr(begin, end - begin));
    return result;
  }
  UnitReader reader(m_bytes);
  for (std::size_t i = 0; i < begin; ++i) {
    reader.next();
  }
  std::u16string units;
  units.reserve(end - begin);
  for (std::size_t i = begin; i < end; ++i) {
    units += reader.next();
  }
  return I18NString(units.data(), units.size());
}

std::size_t I18NString::byteOffset(std::size_t position) const noexcept {
  if (isAscii()) {
    return std::min(position, length());
  }
  std::size_t offset = 0;
  std::size_t units = 0;
  while (offset < m_bytes.size() && units < position) {
    units += i18n::decodeStored(m_bytes, offset) < 0x10000 ? 1 : 2;
  }
  return offset;
}

std::size_t I18NString::unitPosition(std::size_t offset) const noexcept {
  if (isAscii()) {
    return offset;
  }
  std::size_t units = 0;
  for (std::size_t i = 0; i < offset;) {
    units += i18n::decodeStored(m_bytes, i) < 0x10000 ? 1 : 2;
  }
  return units;
}

long I18NString::indexOf(const I18NString& text, std::size_t from) const {
  if (from > m_units) {
    return NOT_FOUND;
  }
  if (text.isEmpty()) {
    return static_cast<long>(from);
  }
  if (text.m_loneSurrogates != 0) {
    // Half of a pair can be found inside a whole one only by looking at code units.
    const std::size_t found = toUtf16().find(text.toUtf16(), from);
    return found == std::u16string::npos ? NOT_FOUND : static_cast<long>(found);
  }
  const std::size_t found = bytes().find(text.bytes(), byteOffset(from));
  return found == std::string_view::npos ? NOT_FOUND : static_cast<long>(unitPosition(found));
}

long I18NString::lastIndexOf(const I18NString& text, std::size_t from) const {
  if (!isAscii() || text.m_loneSurrogates != 0) {
    const std::size_t found = toUtf16().rfind(text.toUtf16(), from);
    return found == std::u16string::npos ? NOT_FOUND : static_cast<long>(found);
  }
  const std::size_t found = bytes().rfind(text.bytes(), from);
  return found == std::string_view::npos ? NOT_FOUND : static_cast<long>(found);
}

bool I18NString::startsWith(const I18NString& text) const noexcept {
  if (bytes().substr(0, text.m_bytes.size()) == text.bytes()) {
    return true;
  }
  if (text.m_loneSurrogates == 0 || text.m_units > m_units) {
    return false;
  }
  UnitReader own(m_bytes);
  UnitReader other(text.m_bytes);
  while (!other.atEnd()) {
    if (own.next() != other.next()) {
      return false;
    }
  }
  return true;
}

int I18NString::compare(const I18NString& other) const noexcept {
  if (isAscii() && other.isAscii()) {
    return bytes().compare(other.bytes());
  }
  UnitReader a(m_bytes);
  UnitReader b(other.m_bytes);
  while (!a.atEnd() && !b.atEnd()) {
    const int difference = static_cast<int>(a.next()) - static_cast<int>(b.next());
    if (difference != 0) {
      return difference;
    }
  }
  return static_cast<int>(b.atEnd()) - static_cast<int>(a.atEnd());
}

std::uint32_t I18NString::hash() const noexcept {
  std::uint32_t value = 0;
  if (isAscii()) {
    for (const char c : bytes()) {
      value = value * 31 + static_cast<unsigned char>(c);
    }
    return value;
  }
  for (UnitReader reader(m_bytes); !reader.atEnd();) {
    value = value * 31 + reader.next();
  }
  return value;
}

std::uint32_t I18NString::quickHash() const noexcept {
  // Eight bytes at a time, the last ones once more if they are not eight.
  constexpr std::uint64_t FACTOR = 0x9E3779B97F4A7C15ULL;
  const char* const bytes = m_bytes.data();
  const std::size_t size = m_bytes.size();
  std::uint64_t value = size;
  const auto mix = [&](const char* from, std::size_t count) {
    std::uint64_t word = 0;
    std::memcpy(&word, from, count);
    value = (value ^ word) * FACTOR;
    value ^= value >> 32;
  };
  constexpr std::size_t WORD = sizeof(std::uint64_t);
  if (size < WORD) {
    mix(bytes, size);
  } else {
    for (std::size_t i = 0; i + WORD < size; i += WORD) {
      mix(bytes + i, WORD);
    }
    mix(bytes + size - WORD, WORD);
  }
  return static_cast<std::uint32_t>(value);
}

I18NString& I18NString::appendWithLoneSurrogate(const I18NString& text) {
  if (&text == this) {
    return appendWithLoneSurrogate(I18NString(text));
  }
  std::string_view appended = text.bytes();
  const char32_t high = surrogateAtEnd(m_bytes);
  const char32_t low = surrogateAtBegin(appended);
  m_bytes.reserve(m_bytes.size() + appended.size());
  m_loneSurrogates += text.m_loneSurrogates;
  if (i18n::isHighSurrogate(high) && i18n::isLowSurrogate(low)) {
    // The two halves become one character.
    m_bytes.shorten(SURROGATE_SIZE);
    i18n::appendCharacter(m_bytes, i18n::combineSurrogates(high, low));
    appended.remove_prefix(SURROGATE_SIZE);
    m_loneSurrogates -= 2;
  }
  m_bytes.append(appended);
  m_units += text.m_units;
  return *this;
}

void I18NString::appendGrowing(const I18NString& text) { append(text); }

LOG4ZEB_HOT I18NString& I18NString::append(std::string_view utf8) {
  const std::size_t size = utf8.size();
  if (size >= sizeof(Block) && size <= m_bytes.m_capacity - m_bytes.m_size &&
      copyAscii(m_bytes.m_data + m_bytes.m_size, utf8)) {
    m_bytes.m_size += static_cast<std::uint32_t>(size);
    m_units += static_cast<std::uint32_t>(size);
    return *this;
  }
  return appendAny(utf8);
}

LOG4ZEB_COLD I18NString& I18NString::appendAny(std::string_view utf8) {
  const std::size_t ascii = i18n::asciiPrefix(utf8);
  m_bytes.append(utf8.substr(0, ascii));
  m_units += static_cast<std::uint32_t>(ascii);
  for (std::size_t i = ascii; i < utf8.size();) {
    const char32_t c = i18n::decodeForeign(utf8, i);
    i18n::appendCharacter(m_bytes, c);
    m_units += c < 0x10000 ? 1 : 2;
  }
  return *this;
}

I18NString& I18NString::append(std::size_t count, char c) {
  m_bytes.append(count, c);
  m_units += static_cast<std::uint32_t>(count);
  return *this;
}

std::string_view I18NString::narrow(std::string& scratch) const {
  if (m_loneSurrogates == 0) {
    return m_bytes;
  }
  scratch.clear();
  for (std::size_t i = 0; i < m_bytes.size();) {
    const char32_t c = i18n::decodeStored(m_bytes, i);
    i18n::appendCharacter(scratch, i18n::isSurrogate(c) ? i18n::REPLACEMENT : c);
  }
  return scratch;
}

std::string I18NString::toStdString() const {
  std::string scratch;
  return std::string(narrow(scratch));
}

std::u16string I18NString::toUtf16() const {
  std::u16string units;
  units.reserve(m_units);
  for (UnitReader reader(m_bytes); !reader.atEnd();) {
    units += reader.next();
  }
  return units;
}

std::ostream& operator<<(std::ostream& out, const I18NString& text) {
  std::string scratch;
  return out << text.narrow(scratch);
}
