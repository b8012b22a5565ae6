#ifndef PLATFORM_ZEBIDOM_NODE_H
#define PLATFORM_ZEBIDOM_NODE_H

#include <cstdint>
#include <memory>

#include "platform/I18NString.h"

class ZEBIDOM_Document;
class ZEBIDOM_NodeList;
struct ZEBIDOM_DocumentData;

/// A handle on a node of a parsed document. Handles are small values that share the document's
/// data, so a node stays valid as long as any handle on its document does. The data never changes:
/// handles on it may be used by several threads at once.
///
/// A tree has elements, their attributes, and text; a CDATA section reads as text, adjacent text is
/// one node, and comments and processing instructions are left out. A null handle is the answer
/// where there is no such node; it answers every question with nothing: 0, empty or null again.
class LOG4ZEB_EXPORT ZEBIDOM_Node {
 public:
  /// The node types, numbered as in the DOM standard.
  static constexpr int ELEMENT_NODE = 1;
  static constexpr int ATTRIBUTE_NODE = 2;
  static constexpr int TEXT_NODE = 3;
  static constexpr int DOCUMENT_NODE = 9;

  /// A null handle.
  ZEBIDOM_Node() noexcept = default;
  /// The node at `index` of `data`, for the other classes of the tree; a program gets its nodes
  /// from a document.
  ZEBIDOM_Node(std::shared_ptr<const ZEBIDOM_DocumentData> data, std::uint32_t index) noexcept;

  bool isNull() const noexcept { return m_data == nullptr; }
  /// One of the node types, 0 for a null handle.
  int getNodeType() const noexcept;
  /// The name of an element or attribute with its prefix as written, "#text" or "#document".
  I18NString getNodeName() const;
  /// The value of an attribute or the characters of a text; empty for the others.
  I18NString getNodeValue() const;

  /// Null for the document, and for an attribute, which is nobody's child.
  ZEBIDOM_Node getParentNode() const;
  ZEBIDOM_Node getFirstChild() const;
  ZEBIDOM_Node getNextSibling() const;
  ZEBIDOM_NodeList getChildNodes() const;
  /// The document that the node is part of; null for a document.
  ZEBIDOM_Document getOwnerDocument() const;

  /// Where the node begins in its file, counted from 1; 0 for a document. An attribute gives the
  /// place of its element.
  int getLine() const noexcept;
  int getColumn() const noexcept;

  /// Whether both are handles on the same node, or both null.
  friend bool operator==(const ZEBIDOM_Node& a, const ZEBIDOM_Node& b) noexcept {
    return a.m_data == b.m_data && (a.isNull() || a.m_index == b.m_index);
  }
  friend bool operator!=(const ZEBIDOM_Node& a, const ZEBIDOM_Node& b) noexcept {
    return !(a == b);
  }

 protected:
  /// The elements below this node that have the name, all elements for "*", in document order.
  ZEBIDOM_NodeList getElementsByTagName(const I18NString& tagName) const;

  std::shared_ptr<const ZEBIDOM_DocumentData> m_data;
  std::uint32_t m_index = 0;
};

#endif
