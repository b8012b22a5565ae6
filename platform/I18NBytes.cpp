#include "platform/I18NBytes.h"

#include <algorithm>
#include <stdexcept>

LOG4ZEB_COLD void I18NBytes::enlarge(std::size_t capacity) {
  if (capacity > LONGEST) {
    throw std::length_error("I18NString");
  }
  const std::size_t larger =
      std::max(capacity, std::min<std::size_t>(LONGEST, 2 * std::size_t{m_capacity}));
  char* const bytes = new char[larger];
  std::memcpy(bytes, m_data, m_size);
  release();
  m_data = bytes;
  m_capacity = static_cast<std::uint32_t>(larger);
}

LOG4ZEB_COLD void I18NBytes::grow(std::string_view appended) {
  const bool isOwn = appended.data() == m_data;
  enlarge(m_size + appended.size());
  std::memcpy(m_data + m_size, isOwn ? m_data : appended.data(), appended.size());
  m_size += static_cast<std::uint32_t>(appended.size());
}
