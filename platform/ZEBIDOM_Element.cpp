#include "platform/ZEBIDOM_Element.h"

#include <numeric>
#include <utility>

#include "platform/ZEBIDOM_DocumentData.h"
#include "platform/ZEBIDOM_NamedNodeMap.h"

ZEBIDOM_Element::ZEBIDOM_Element(const ZEBIDOM_Node& node)
    : ZEBIDOM_Node(node.getNodeType() == ELEMENT_NODE ? node : ZEBIDOM_Node()) {}

ZEBIDOM_Node ZEBIDOM_Element::attribute(const I18NString& name) const {
  const std::uint32_t last = isNull() ? 0 : m_index + m_data->entries[m_index].attributeCount;
  for (std::uint32_t i = m_index + 1; i <= last; ++i) {
    if (m_data->entries[i].name == name) {
      return {m_data, i};
    }
  }
  return {};
}

I18NString ZEBIDOM_Element::getAttribute(const I18NString& name) const {
  return attribute(name).getNodeValue();
}

bool ZEBIDOM_Element::hasAttribute(const I18NString& name) const {
  return !attribute(name).isNull();
}

ZEBIDOM_NamedNodeMap ZEBIDOM_Element::getAttributes() const {
  std::vector<std::uint32_t> indexes(isNull() ? 0 : m_data->entries[m_index].attributeCount);
  std::iota(indexes.begin(), indexes.end(), m_index + 1);
  return {m_data, std::move(indexes)};
}
