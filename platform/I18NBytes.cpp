#include "platform/I18NBytes.h"

#include <algorithm>

void I18NBytes::enlarge(std::size_t capacity) {
  const std::size_t larger = std::max(capacity, 2 * m_capacity);
  char* const bytes = new char[larger];
  std::memcpy(bytes, m_data, m_size);
  release();
  m_data = bytes;
  m_capacity = larger;
}

void I18NBytes::grow(std::string_view appended) {
  const bool isOwn = appended.data() == m_data;
  enlarge(m_size + appended.size());
  std::memcpy(m_data + m_size, isOwn ? m_data : appended.data(), appended.size());
  m_size += appended.size();
}
