#include "tools/RecordDecoder.h"

#include <cstddef>
#include <cstdint>

#include "rendering/LOGRecordStream.h"

namespace {

using Words = LOGRecordStream;

constexpr std::size_t VERSION_AND_FLAGS = 9;

/// Takes bytes off the front of a view. What is missing reads as zero or empty, and ok() is false
/// from then on.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : m_rest(bytes) {}

  bool ok() const { return m_ok; }
  bool atEnd() const { return m_rest.empty(); }

  std::string_view take(std::size_t count) {
    m_ok = m_ok && count <= m_rest.size();
    if (!m_ok) {
      return {};
    }
    const std::string_view taken = m_rest.substr(0, count);
    m_rest.remove_prefix(count);
    return taken;
  }

  std::uint64_t number(std::size_t bytes) {
    std::uint64_t value = 0;
    for (const char byte : take(bytes)) {
      value = value << 8 | static_cast<unsigned char>(byte);
    }
    return value;
  }

  void expect(std::size_t bytes, std::uint64_t value) { m_ok = number(bytes) == value && m_ok; }

  /// The content of the blocks of data that stand here, up to something else.
  std::string blocks() {
    std::string content;
    while (m_ok && !m_rest.empty()) {
      const auto kind = static_cast<unsigned char>(m_rest.front());
      if (kind != Words::TC_BLOCKDATA && kind != Words::TC_BLOCKDATALONG) {
        break;
      }
      take(1);
      content += take(number(kind == Words::TC_BLOCKDATA ? 1 : 4));
    }
    return content;
  }

  /// A text of two bytes of length and one to three bytes for each UTF-16 code unit.
  std::string utf() {
    Reader encoded(take(number(2)));
    std::u16string units;
    while (m_ok && !encoded.atEnd()) {
      units += encoded.unit();
      m_ok = encoded.ok();
    }
    return I18NString(units.data(), units.size()).toStdString();
  }

 private:
  char16_t unit() {
    const std::uint64_t first = number(1);
    if (first < 0x80) {
      return static_cast<char16_t>(first);
    }
    if ((first & 0xE0) == 0xC0) {
      const std::uint64_t high = first & 0x1F;
      return static_cast<char16_t>(high << 6 | continuation());
    }
    m_ok = m_ok && (first & 0xF0) == 0xE0;
    const std::uint64_t high = (first & 0x0F) << 6 | continuation();
    return static_cast<char16_t>(high << 6 | continuation());
  }

  std::uint64_t continuation() {
    const std::uint64_t byte = number(1);
    m_ok = m_ok && (byte & 0xC0) == 0x80;
    return byte & 0x3F;
  }

  std::string_view m_rest;
  bool m_ok = true;
};

/// The text that the bytes are, if they are exactly one.
std::optional<std::string> onlyTextOf(std::string_view bytes) {
  Reader reader(bytes);
  std::string text = reader.utf();
  if (!reader.ok() || !reader.atEnd()) {
    return std::nullopt;
  }
  return text;
}

}  // namespace

std::optional<RecordDecoder::Record> RecordDecoder::decode(std::string_view bytes) {
  Reader reader(bytes);
  Record record;
  reader.expect(2, Words::STREAM_MAGIC);
  reader.expect(2, Words::STREAM_VERSION);
  const std::optional<std::string> logger = onlyTextOf(reader.blocks());
  reader.expect(1, Words::TC_OBJECT);
  reader.expect(1, Words::TC_CLASSDESC);
  record.className = reader.utf();
  reader.take(VERSION_AND_FLAGS);
  reader.expect(2, 0);  // fields
  reader.expect(1, Words::TC_ENDBLOCKDATA);
  reader.expect(1, Words::TC_NULL);  // no base class
  record.content = reader.blocks();
  reader.expect(1, Words::TC_ENDBLOCKDATA);
  if (!reader.ok() || !reader.atEnd() || !logger) {
    return std::nullopt;
  }
  record.logger = *logger;
  record.message = onlyTextOf(record.content);
  return record;
}
