#include "platform/ZEBIDOM_Node.h"

#include <utility>

#include "platform/ZEBIDOM_Document.h"
#include "platform/ZEBIDOM_DocumentData.h"
#include "platform/ZEBIDOM_NodeList.h"

ZEBIDOM_Node::ZEBIDOM_Node(std::shared_ptr<const ZEBIDOM_DocumentData> data,
                           std::uint32_t index) noexcept
    : m_data(std::move(data)), m_index(index) {}

int ZEBIDOM_Node::getNodeType() const noexcept {
  return isNull() ? 0 : m_data->entries[m_index].type;
}

I18NString ZEBIDOM_Node::getNodeName() const {
  return isNull() ? I18NString() : m_data->entries[m_index].name;
}

I18NString ZEBIDOM_Node::getNodeValue() const {
  return isNull() ? I18NString() : m_data->entries[m_index].value;
}

int ZEBIDOM_Node::getLine() const noexcept { return isNull() ? 0 : m_data->entries[m_index].line; }

int ZEBIDOM_Node::getColumn() const noexcept {
  return isNull() ? 0 : m_data->entries[m_index].column;
}

ZEBIDOM_Node ZEBIDOM_Node::getParentNode() const {
  const int type = getNodeType();
  if (isNull() || type == DOCUMENT_NODE || type == ATTRIBUTE_NODE) {
    return {};
  }
  return {m_data, m_data->entries[m_index].parent};
}

ZEBIDOM_Node ZEBIDOM_Node::getFirstChild() const {
  if (isNull()) {
    return {};
  }
  const auto& own = m_data->entries[m_index];
  const std::uint32_t first = m_index + 1 + own.attributeCount;
  return first < own.end ? ZEBIDOM_Node(m_data, first) : ZEBIDOM_Node();
}

ZEBIDOM_Node ZEBIDOM_Node::getNextSibling() const {
  if (getParentNode().isNull()) {
    return {};
  }
  const auto& own = m_data->entries[m_index];
  const bool isLast = own.end == m_data->entries[own.parent].end;
  return isLast ? ZEBIDOM_Node() : ZEBIDOM_Node(m_data, own.end);
}

ZEBIDOM_NodeList ZEBIDOM_Node::getChildNodes() const {
  std::vector<std::uint32_t> children;
  for (ZEBIDOM_Node child = getFirstChild(); !child.isNull(); child = child.getNextSibling()) {
    children.push_back(child.m_index);
  }
  return {m_data, std::move(children)};
}

ZEBIDOM_Document ZEBIDOM_Node::getOwnerDocument() const {
  return getNodeType() == DOCUMENT_NODE ? ZEBIDOM_Document() : ZEBIDOM_Document(m_data);
}

ZEBIDOM_NodeList ZEBIDOM_Node::getElementsByTagName(const I18NString& tagName) const {
  std::vector<std::uint32_t> found;
  if (!isNull()) {
    const bool all = tagName == "*";
    const std::uint32_t end = m_data->entries[m_index].end;
    for (std::uint32_t i = m_index + 1; i < end; ++i) {
      const auto& entry = m_data->entries[i];
      if (entry.type == ELEMENT_NODE && (all || entry.name == tagName)) {
        found.push_back(i);
      }
    }
  }
  return {m_data, std::move(found)};
}
