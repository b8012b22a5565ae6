#ifndef RENDERING_LOGRECORDSTREAM_H
#define RENDERING_LOGRECORDSTREAM_H

#include <cstddef>
#include <cstdint>

#include "platform/I18NString.h"

/// A record of a message in the form of Java object serialisation, as long as one datagram can be.
/// Renderers write into it; numbers are big-endian. A write that does not fit writes nothing, and
/// from then on nothing is written any more and fits() is 0, so that only the writer of the whole
/// record needs to look.
class LOG4ZEB_EXPORT LOGRecordStream {
 public:
  /// The largest payload of an IPv4 datagram, in bytes.
  static constexpr std::size_t CAPACITY = 65507;

  /// Words of Java's object serialisation.
  static constexpr int STREAM_MAGIC = 0xACED;
  static constexpr int STREAM_VERSION = 5;
  static constexpr int TC_NULL = 0x70;
  static constexpr int TC_CLASSDESC = 0x72;
  static constexpr int TC_OBJECT = 0x73;
  static constexpr int TC_BLOCKDATA = 0x77;
  static constexpr int TC_ENDBLOCKDATA = 0x78;
  static constexpr int TC_BLOCKDATALONG = 0x7A;

  /// Where a length stands that is filled in later.
  struct Length {
    std::size_t position;
  };

  /// The text that the message was rendered to, null when it has to be rendered for this record.
  /// Not owned; reset() forgets it.
  void setRenderedText(const I18NString* text) noexcept { m_renderedText = text; }
  const I18NString* renderedText() const noexcept { return m_renderedText; }

  /// Empties the record. `reserved` bytes are kept free until release().
  void reset(std::size_t reserved = 0) noexcept;
  void release() noexcept { m_limit = CAPACITY; }

  /// These write the lowest 8, 16 and 32 bits.
  void writeByte(int value) { writeNumber(value, 1); }
  void writeShort(int value) { writeNumber(value, 2); }
  void writeInt(std::int32_t value) { writeNumber(value, 4); }
  /// Writes a text as java.io.DataInput.readUTF reads it: two bytes of length, then one to three
  /// bytes for each UTF-16 code unit. A text of more than 65535 such bytes does not fit.
  void writeUTF(const I18NString& text);
  /// The same, but the end of a text that does not fit is left out, between two characters.
  void writeUTFCut(const I18NString& text);

  /// Leaves room for an int, which setLength() makes the number of bytes written after it.
  Length writeLengthLater();
  void setLength(Length length) noexcept;

  int fits() const noexcept { return m_fits ? 1 : 0; }
  const char* data() const noexcept { return reinterpret_cast<const char*>(m_buffer); }
  /// In bytes.
  std::size_t size() const noexcept { return m_position; }

 private:
  bool hasRoomFor(std::size_t bytes) noexcept;
  void writeNumber(std::int32_t value, std::size_t bytes);
  void put(unsigned int byte) noexcept {
    m_buffer[m_position++] = static_cast<unsigned char>(byte);
  }
  void putUTF(const std::u16string& units, std::size_t count, std::size_t bytes);

  std::size_t m_position = 0;
  std::size_t m_limit = CAPACITY;
  bool m_fits = true;
  const I18NString* m_renderedText = nullptr;
  unsigned char m_buffer[CAPACITY] = {};
};

#endif
