#ifndef PLATFORM_I18NBYTES_H
#define PLATFORM_I18NBYTES_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "platform/LOG4ZEBExport.h"

/// The bytes that an I18NString stores. Up to INLINE_SIZE of them, which is enough for the usual
/// name, message and class tag, lie in the object itself, so that copying such a text neither
/// allocates nor touches anything that another thread uses.
class LOG4ZEB_EXPORT I18NBytes {
 public:
  static constexpr std::size_t INLINE_SIZE = 104;
  /// What texts that are called short have at most.
  static constexpr std::size_t SHORT = 32;
  /// Longer texts throw std::length_error.
  static constexpr std::size_t LONGEST = UINT32_MAX;

  I18NBytes() noexcept {}  // NOLINT(modernize-use-equals-default): the room stays as it is
  I18NBytes(const I18NBytes& other) { append(other); }
  I18NBytes(I18NBytes&& other) noexcept { take(other); }
  I18NBytes& operator=(const I18NBytes& other) {
    if (this != &other) {
      reserve(other.m_size);  // which may fail, so that nothing has changed yet
      m_size = 0;
      append(other);
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

  LOG4ZEB_INLINE void append(const I18NBytes& other) {
    // Short texts, which are most of what a line is made of, are copied in moves of fixed size: the
    // room is never smaller than that, here as there.
    const std::uint32_t size = other.m_size;
    if (size <= SHORT && m_capacity - m_size >= SHORT) {
      char moved[SHORT];  // registers, in truth
      std::memcpy(moved, other.m_data, SHORT);
      std::memcpy(m_data + m_size, moved, SHORT);
      m_size += size;
    } else {
      append(std::string_view(other));
    }
  }
  /// REQUIRES: `bytes` is not a part of this object that a growth would move, except when it is
  /// all of it.
  void append(std::string_view bytes) {
    if (bytes.size() > m_capacity - m_size) {
      grow(bytes);
    } else if (!bytes.empty()) {
      std::memmove(m_data + m_size, bytes.data(), bytes.size());
      m_size += static_cast<std::uint32_t>(bytes.size());
    }
  }
  void append(std::size_t count, char c) {
    reserve(m_size + count);
    std::memset(m_data + m_size, c, count);
    m_size += static_cast<std::uint32_t>(count);
  }
  /// Leaves out the last bytes. REQUIRES: there are as many.
  void shorten(std::size_t bytes) noexcept { m_size -= static_cast<std::uint32_t>(bytes); }
  /// Keeps the room that there is.
  void clear() noexcept { m_size = 0; }
  /// Makes room for `capacity` bytes in all.
  void reserve(std::size_t capacity) {
    if (capacity > m_capacity) {
      enlarge(capacity);
    }
  }

 private:
  friend class I18NString;
  friend class I18NWriter;
  static constexpr std::size_t LONG = 64;

  bool isInline() const noexcept { return m_data == m_room; }
  void take(I18NBytes& other) noexcept {
    m_size = other.m_size;
    if (other.isInline()) {
      m_data = m_room;
      m_capacity = INLINE_SIZE;
      std::memcpy(m_room, other.m_room, m_size);
    } else {
      m_data = other.m_data;
      m_capacity = other.m_capacity;
      other.m_data = other.m_room;
      other.m_capacity = INLINE_SIZE;
    }
    other.m_size = 0;
  }
  void release() noexcept {
    if (!isInline()) {
      delete[] m_data;
    }
  }
  void enlarge(std::size_t capacity);
  void grow(std::string_view appended);

  // What every use touches stands together, next to the beginning of the text.
  char* m_data = m_room;
  std::uint32_t m_size = 0;
  std::uint32_t m_capacity = INLINE_SIZE;  // of the room that m_data points to
  char m_room[INLINE_SIZE];
};

#endif
