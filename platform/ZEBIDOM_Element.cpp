#include "platform/ZEBIDOM_Element.h"

#include <numeric>
#include <utility>

#include "platform/ZEBIDOM_DocumentData.h"
#include "platform/ZEBIDOM_NamedNodeMap.h"

ZEBIDOM_Element::ZEBIDOM_Element(const ZEBIDOM_Node& node)
    : ZEBIDOM_Node(node.getNodeType() == ELEMENT_NODE ? node : ZEBIDOM_Node()) {}

I18NString ZEBIDOM_Element::getAttribute(const I18NString& name) const {
  return getAttributes().getNamedItem(name).getNodeValue();
}

bool ZEBIDOM_Element::hasAttribute(const I18NString& name) const {
  return !getAttributes().getNamedItem(name).isNull();
}

ZEBIDOM_NamedNodeMap ZEBIDOM_Element::getAttributes() const {
  std::vector<std::uint32_t> indexes(isNull() ? 0 : m_data->entries[m_index].attributeCount);
  std::iota(indexes.begin(), indexes.end(), m_index + 1);
  return {m_data, std::move(indexes)};
}
