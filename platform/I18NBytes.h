#ifndef PLATFORM_I18NBYTES_H
#define PLATFORM_I18NBYTES_H

#include <cstddef>
#include <cstring>
#include <string_view>

#include "platform/LOG4ZEBExport.h"

/// The bytes that an I18NString stores. Up to INLINE_SIZE of them, which is enough for the usual
/// name, message and class tag, lie in the object itself, so that copying such a text neither
/// allocates nor touches anything that another thread uses.
class LOG4ZEB_EXPORT I18NBytes {
 public:
  static constexpr std::size_t INLINE_SIZE = 96;

  I18NBytes() noexcept {}  // NOLINT(modernize-use-equals-default): the room stays as it is
  I18NBytes(const I18NBytes& other) { assign(other); }
  I18NBytes(I18NBytes&& other) noexcept { take(other); }
  I18NBytes& operator=(const I18NBytes& other) {
    if (this != &other) {
      assign(other);
    }
    return *this;
  }
  I18NBytes& operator=(I18NBytes&& other) noexcept {
    if (this != &other) {
      release();
      take(other);
    }
    return *this;
  }
  ~I18NBytes() { release(); }

  operator std::string_view() const noexcept { return {m_data, m_size}; }  // NOLINT: implicit
  const char* data() const noexcept { return m_data; }
  std::size_t size() const noexcept { return m_size; }
  char operator[](std::size_t position) const noexcept { return m_data[position]; }

  /// REQUIRES: `bytes` is not a part of this object that a growth would move, except when it is
  /// all of it.
  void append(std::string_view bytes) {
    if (bytes.size() > capacity() - m_size) {
      grow(bytes);
    } else if (!bytes.empty()) {
      std::memmove(m_data + m_size, bytes.data(), bytes.size());
      m_size += bytes.size();
    }
  }
  void append(std::size_t count, char c) {
    reserve(m_size + count);
    std::memset(m_data + m_size, c, count);
    m_size += count;
  }
  /// Keeps the room that there is.
  void clear() noexcept { m_size = 0; }
  /// Keeps the first `size` bytes. REQUIRES: size <= size()
  void truncate(std::size_t size) noexcept { m_size = size; }
  /// Makes room for `capacity` bytes in all.
  void reserve(std::size_t capacity);

 private:
  bool isInline() const noexcept { return m_data == m_room.bytes; }
  std::size_t capacity() const noexcept { return isInline() ? INLINE_SIZE : m_room.capacity; }
  void assign(std::string_view bytes) {
    m_size = 0;
    append(bytes);
  }
  void take(I18NBytes& other) noexcept {
    m_size = other.m_size;
    if (other.isInline()) {
      m_data = m_room.bytes;
      std::memcpy(m_room.bytes, other.m_room.bytes, m_size);
    } else {
      m_data = other.m_data;
      m_room.capacity = other.m_room.capacity;
      other.m_data = other.m_room.bytes;
    }
    other.m_size = 0;
  }
  void release() noexcept {
    if (!isInline()) {
      delete[] m_data;
    }
  }
  void grow(std::string_view appended);

  // Only one of the two is in use: the bytes, or how many fit where m_data points.
  union Room {
    char bytes[INLINE_SIZE];
    std::size_t capacity;
  };

  char* m_data = m_room.bytes;
  std::size_t m_size = 0;
  Room m_room;
};

#endif
