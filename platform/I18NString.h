#ifndef PLATFORM_I18NSTRING_H
#define PLATFORM_I18NSTRING_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

#include "platform/I18NBytes.h"
#include "platform/LOG4ZEBExport.h"

/// The text type of the library: a string of UTF-16 code units. Lengths and positions count code
/// units, wherever they are given or returned.
///
/// The text is stored as UTF-8, because nearly all of it comes in and goes out as such; a surrogate
/// without its partner is kept in three bytes of the same scheme, so that every sequence of code
/// units has exactly one stored form. Operations that take positions cost constant time on ASCII
/// text and time proportional to the length on other text.
///
/// A text that would take 4 GiB or more throws std::length_error.
///
/// An object may be read by several threads at once; a change needs exclusive use, as with
/// std::string.
class LOG4ZEB_EXPORT I18NString {
 public:
  /// What a search returns when nothing was found.
  static constexpr long NOT_FOUND = -1;

  I18NString() noexcept = default;
  /// Reads `text`, up to its terminating zero, in the named encoding; null reads as empty. The
  /// encodings are those of I18NConverter. Invalid bytes become U+FFFD.
  /// Throws I18NRuntimeError when the encoding is unknown.
  I18NString(const char* text, const char* encoding);
  I18NString(const std::string& text, const char* encoding);
  /// The same in the encoding "ascii".
  I18NString(const char* text) {  // NOLINT: implicit
    if (text != nullptr) {
      append(std::string_view(text));
    }
  }
  I18NString(const std::string& text) { append(std::string_view(text)); }  // NOLINT: implicit
  /// Reads `count` code units; surrogates need not be paired.
  I18NString(const char16_t* units, std::size_t count);
  /// An empty text that is never destroyed, because static destructors log too.
  static const I18NString& none();
  /// The text of UTF-8 bytes that need not end with a zero and may contain zeros.
  static I18NString fromUtf8(std::string_view bytes);

  I18NString(const I18NString&) = default;
  I18NString(I18NString&& other) noexcept
      : m_units(std::exchange(other.m_units, 0)),
        m_loneSurrogates(std::exchange(other.m_loneSurrogates, 0)),
        m_bytes(std::move(other.m_bytes)) {}
  I18NString& operator=(const I18NString& other) {
    m_bytes = other.m_bytes;  // first, because it may fail
    m_units = other.m_units;
    m_loneSurrogates = other.m_loneSurrogates;
    return *this;
  }
  I18NString& operator=(I18NString&& other) noexcept {
    if (this != &other) {
      m_bytes = std::move(other.m_bytes);
      m_units = std::exchange(other.m_units, 0);
      m_loneSurrogates = std::exchange(other.m_loneSurrogates, 0);
    }
    return *this;
  }
  ~I18NString() = default;

  /// The number of code units.
  std::size_t length() const noexcept { return m_units; }
  bool isEmpty() const noexcept { return m_units == 0; }
  bool isAscii() const noexcept { return m_bytes.size() == m_units; }
  /// The characters. REQUIRES: isAscii(). Valid while this text does not change.
  std::string_view ascii() const noexcept { return m_bytes; }
  /// The code unit at `position`, 0 beyond the end.
  char16_t at(std::size_t position) const noexcept;
  /// The text from `begin` up to but not including `end`; both are cut to the length.
  I18NString substring(std::size_t begin, std::size_t end = SIZE_MAX) const;

  /// The first position at or after `from` where `text` begins, or NOT_FOUND.
  long indexOf(const I18NString& text, std::size_t from = 0) const;
  /// The last position at or before `from` where `text` begins, or NOT_FOUND.
  long lastIndexOf(const I18NString& text, std::size_t from = SIZE_MAX) const;
  bool startsWith(const I18NString& text) const noexcept;

  /// Negative, 0 or positive as this text comes before, equals or comes after `other`, by code
  /// units.
  int compare(const I18NString& other) const noexcept;
  /// The sum over the code units, first to last, of hash * 31 + unit, modulo 2^32.
  std::uint32_t hash() const noexcept;
  /// A number that equal texts have in common, much faster than hash(); another one in another
  /// version of the library.
  std::uint32_t quickHash() const noexcept;

  LOG4ZEB_INLINE I18NString& append(const I18NString& text) {
    if (text.m_loneSurrogates != 0) {
      return appendWithLoneSurrogate(text);
    }
    const std::uint32_t units = text.m_units;  // this text may be the same object
    m_bytes.append(text.m_bytes);
    m_units += units;
    return *this;
  }
  /// Appends UTF-8 bytes; invalid ones become U+FFFD. REQUIRES: not a view of this text itself.
  I18NString& append(std::string_view utf8);
  /// Appends `count` times the ASCII character `c`.
  I18NString& append(std::size_t count, char c);
  I18NString& operator+=(const I18NString& text) { return append(text); }
  /// Appends the first ones of these ASCII characters.
  I18NString& appendAscii(const char (&room)[I18NBytes::SHORT], std::uint32_t count) {
    if (m_bytes.m_capacity - m_bytes.m_size < I18NBytes::SHORT) {
      return appendAscii(std::string_view(room, count));
    }
    std::memcpy(m_bytes.m_data + m_bytes.m_size, room, I18NBytes::SHORT);
    m_bytes.m_size += count;
    m_units += count;
    return *this;
  }
  /// Appends ASCII characters. REQUIRES: not a view of this text itself.
  I18NString& appendAscii(std::string_view ascii) {
    m_bytes.append(ascii);
    m_units += static_cast<std::uint32_t>(ascii.size());
    return *this;
  }
  void clear() noexcept {
    m_bytes.clear();
    m_units = 0;
    m_loneSurrogates = 0;
  }
  /// Makes room for a text of `bytes` UTF-8 bytes.
  void reserve(std::size_t bytes) { m_bytes.reserve(bytes); }

  /// The text as UTF-8, a surrogate without partner as U+FFFD. The view shows this object's own
  /// bytes or, where something had to be replaced, `scratch`; it is valid while neither changes.
  std::string_view narrow(std::string& scratch) const;
  /// Whether some surrogate has no partner, which UTF-8 has no form for.
  bool hasLoneSurrogate() const noexcept { return m_loneSurrogates != 0; }
  /// The text as UTF-8. REQUIRES: no lone surrogate. Valid while this text does not change.
  std::string_view utf8() const noexcept { return m_bytes; }
  /// The text as UTF-8, a surrogate without partner as U+FFFD.
  std::string toStdString() const;
  std::u16string toUtf16() const;

  friend bool operator==(const I18NString& a, const I18NString& b) noexcept {
    return std::string_view(a.m_bytes) == std::string_view(b.m_bytes);
  }
  friend bool operator!=(const I18NString& a, const I18NString& b) noexcept { return !(a == b); }
  friend bool operator<(const I18NString& a, const I18NString& b) noexcept {
    return a.compare(b) < 0;
  }
  friend I18NString operator+(I18NString a, const I18NString& b) {
    a.append(b);
    return a;
  }

 private:
  friend class I18NWriter;
  void appendGrowing(const I18NString& text);
  I18NString& appendAny(std::string_view utf8);
  std::string_view bytes() const noexcept { return m_bytes; }
  I18NString& appendWithLoneSurrogate(const I18NString& text);
  std::size_t byteOffset(std::size_t position) const noexcept;
  std::size_t unitPosition(std::size_t offset) const noexcept;

  std::uint32_t m_units = 0;  // never more than there are bytes
  std::uint32_t m_loneSurrogates = 0;
  I18NBytes m_bytes;
};

/// Appends many short pieces to a text. The text has them when the writer is closed or destroyed;
/// while it is open, nothing else uses the text.
class I18NWriter {
 public:
  explicit I18NWriter(I18NString& text) noexcept : m_text(text) { open(); }
  I18NWriter(const I18NWriter&) = delete;
  I18NWriter& operator=(const I18NWriter&) = delete;
  ~I18NWriter() {
    if (m_to != nullptr) {
      close();
    }
  }

  /// REQUIRES: `piece` is another text.
  void append(const I18NString& piece) {
    // In moves of fixed size: the room of a text is never smaller than that.
    const char* const from = piece.m_bytes.m_data;
    const std::uint32_t size = piece.m_bytes.m_size;
    if (size != piece.m_units || size > I18NBytes::LONG || m_to > m_last) {
      appendOther(piece);
      return;
    }
    std::memcpy(m_to, from, I18NBytes::SHORT);
    if (size > I18NBytes::SHORT) {
      std::memcpy(m_to + I18NBytes::SHORT, from + I18NBytes::SHORT,
                  I18NBytes::LONG - I18NBytes::SHORT);
    }
    m_to += size;
  }
  /// The same for one that isShort().
  void appendShort(const I18NString& piece) {
    if (m_to > m_last) {
      appendOther(piece);
      return;
    }
    std::memcpy(m_to, piece.m_bytes.m_data, I18NBytes::SHORT);
    m_to += piece.m_bytes.m_size;
  }
  static bool isShort(const I18NString& piece) noexcept {
    return piece.isAscii() && piece.length() <= I18NBytes::SHORT;
  }
  /// From here to open() the text is anybody's.
  void close() noexcept {
    I18NBytes& bytes = m_text.m_bytes;
    const auto size = static_cast<std::uint32_t>(m_to - bytes.m_data);
    m_text.m_units += size - bytes.m_size;
    bytes.m_size = size;
    m_to = nullptr;
  }
  void open() noexcept {
    I18NBytes& bytes = m_text.m_bytes;
    m_to = bytes.m_data + bytes.m_size;
    m_last = bytes.m_data + bytes.m_capacity - I18NBytes::LONG;
  }

 private:
  void appendOther(const I18NString& piece) {
    close();
    m_text.appendGrowing(piece);
    open();
  }

  I18NString& m_text;
  char* m_to;          // null while closed
  const char* m_last;  // where there is still room for moves of the larger size
};

/// Writes the text as UTF-8.
LOG4ZEB_EXPORT std::ostream& operator<<(std::ostream& out, const I18NString& text);

#endif
