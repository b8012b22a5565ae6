#include "platform/ZEBIDOM_NamedNodeMap.h"

#include <utility>

#include "platform/ZEBIDOM_DocumentData.h"

ZEBIDOM_NamedNodeMap::ZEBIDOM_NamedNodeMap(std::shared_ptr<const ZEBIDOM_DocumentData> data,
                                           std::uint32_t index) noexcept
    : m_data(std::move(data)), m_index(index) {}

std::size_t ZEBIDOM_NamedNodeMap::getLength() const noexcept {
  return m_data == nullptr ? 0 : m_data->entries[m_index].attributeCount;
}

ZEBIDOM_Node ZEBIDOM_NamedNodeMap::item(std::size_t position) const {
  if (position >= getLength()) {
    return {};
  }
  return {m_data, m_index + 1 + static_cast<std::uint32_t>(position)};
}

ZEBIDOM_Node ZEBIDOM_NamedNodeMap::getNamedItem(const I18NString& name) const {
  for (std::size_t i = 0; i < getLength(); ++i) {
    if (m_data->entries[m_index + 1 + i].name == name) {
      return item(i);
    }
  }
  return {};
}
