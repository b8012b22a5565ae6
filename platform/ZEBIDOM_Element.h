#ifndef PLATFORM_ZEBIDOM_ELEMENT_H
#define PLATFORM_ZEBIDOM_ELEMENT_H

#include "platform/ZEBIDOM_Node.h"

class ZEBIDOM_NamedNodeMap;

/// A handle on an element, or a null handle.
class LOG4ZEB_EXPORT ZEBIDOM_Element : public ZEBIDOM_Node {
 public:
  ZEBIDOM_Element() noexcept = default;
  /// The element that `node` is; null when it is something else.
  explicit ZEBIDOM_Element(const ZEBIDOM_Node& node);

  /// The element's name with its prefix, as written.
  I18NString getTagName() const { return getNodeName(); }
  /// The attribute's value; empty when there is no such attribute.
  I18NString getAttribute(const I18NString& name) const;
  bool hasAttribute(const I18NString& name) const;
  ZEBIDOM_NamedNodeMap getAttributes() const;
  /// The elements inside this one that have the name, all for "*", in document order.
  using ZEBIDOM_Node::getElementsByTagName;

 private:
  ZEBIDOM_Node attribute(const I18NString& name) const;
};

#endif
