#include "platform/ZEBIDOM_NodeList.h"

#include <utility>

ZEBIDOM_NodeList::ZEBIDOM_NodeList(std::shared_ptr<const ZEBIDOM_DocumentData> data,
                                   std::vector<std::uint32_t> indexes) noexcept
    : m_data(std::move(data)), m_indexes(std::move(indexes)) {}

ZEBIDOM_Node ZEBIDOM_NodeList::item(std::size_t position) const {
  return position < m_indexes.size() ? ZEBIDOM_Node(m_data, m_indexes[position]) : ZEBIDOM_Node();
}
