#include "rendering/LOGRecordStream.h"

#include <algorithm>
#include <string>
#include <utility>

#include "platform/I18NUtf8.h"

namespace {

constexpr std::size_t LENGTH_BYTES = 2;
constexpr std::size_t MAXIMUM_UTF_BYTES = 65535;
constexpr std::size_t INT_BYTES = 4;

/// The zero takes two bytes, so that encoded text has none; a surrogate takes three, paired or not.
std::size_t encodedSize(char16_t unit) {
  if (unit >= 0x01 && unit <= 0x7F) {
    return 1;
  }
  return unit <= 0x7FF ? 2 : 3;
}

struct Prefix {
  std::size_t units;
  std::size_t bytes;
};

/// The longest beginning of the text that takes at most `room` bytes and ends between characters.
Prefix longestPrefix(const std::u16string& text, std::size_t room) {
  Prefix prefix{0, 0};
  while (prefix.units < text.size()) {
    const char16_t unit = text[prefix.units];
    const bool isPair = i18n::isHighSurrogate(unit) && prefix.units + 1 < text.size() &&
                        i18n::isLowSurrogate(text[prefix.units + 1]);
    const std::size_t bytes = isPair ? 6 : encodedSize(unit);
    if (bytes > room - prefix.bytes) {
      break;
    }
    prefix.units += isPair ? 2 : 1;
    prefix.bytes += bytes;
  }
  return prefix;
}

}  // namespace

void LOGRecordStream::reset(std::size_t reserved) noexcept {
  m_position = 0;
  m_limit = CAPACITY - std::min(reserved, CAPACITY);
  m_fits = true;
  m_renderedText = nullptr;
}

bool LOGRecordStream::hasRoomFor(std::size_t bytes) noexcept {
  m_fits = m_fits && bytes <= m_limit - m_position;
  return m_fits;
}

void LOGRecordStream::writeNumber(std::int32_t value, std::size_t bytes) {
  for (std::size_t left = hasRoomFor(bytes) ? bytes : 0; left > 0; --left) {
    put(static_cast<std::uint32_t>(value) >> (8 * (left - 1)));
  }
}

void LOGRecordStream::writeUTF(const I18NString& text) {
  const std::u16string units = text.toUtf16();
  const Prefix prefix = longestPrefix(units, MAXIMUM_UTF_BYTES);
  if (prefix.units < units.size()) {
    m_fits = false;
    return;
  }
  putUTF(units, prefix.units, prefix.bytes);
}

void LOGRecordStream::writeUTFCut(const I18NString& text) {
  if (!m_fits || m_limit - m_position < LENGTH_BYTES) {
    m_fits = false;
    return;
  }
  const std::u16string units = text.toUtf16();
  const Prefix prefix =
      longestPrefix(units, std::min(m_limit - m_position - LENGTH_BYTES, MAXIMUM_UTF_BYTES));
  putUTF(units, prefix.units, prefix.bytes);
}

void LOGRecordStream::putUTF(const std::u16string& units, std::size_t count, std::size_t bytes) {
  if (!hasRoomFor(LENGTH_BYTES + bytes)) {
    return;
  }
  writeShort(static_cast<int>(bytes));
  for (std::size_t i = 0; i < count; ++i) {
    const unsigned int unit = units[i];
    switch (encodedSize(units[i])) {
      case 1:
        put(unit);
        break;
      case 2:
        put(0xC0 | unit >> 6);
        put(0x80 | (unit & 0x3F));
        break;
      default:
        put(0xE0 | unit >> 12);
        put(0x80 | (unit >> 6 & 0x3F));
        put(0x80 | (unit & 0x3F));
    }
  }
}

LOGRecordStream::Length LOGRecordStream::writeLengthLater() {
  const Length length{m_position};
  writeInt(0);
  return length;
}

void LOGRecordStream::setLength(Length length) noexcept {
  if (!m_fits || m_position < INT_BYTES || length.position > m_position - INT_BYTES) {
    m_fits = false;  // the room is missing, or the length is none of this record
    return;
  }
  const std::size_t end = std::exchange(m_position, length.position);
  writeInt(static_cast<std::int32_t>(end - length.position - INT_BYTES));
  m_position = end;
}
