#ifndef TOOLS_CHECKELEMENT_H
#define TOOLS_CHECKELEMENT_H

#include <string>
#include <vector>

#include "platform/ZEBIDOM_Element.h"

/// A place in a document, counted from 1; 0 where there is none.
struct CheckPlace {
  int line = 0;
  int column = 0;
};

/// An element of a document as the rules ask for it, or a null one, which answers with nothing.
/// Texts are UTF-8.
class CheckElement {
 public:
  CheckElement() = default;
  CheckElement(const ZEBIDOM_Node& node) : m_element(node) {}  // NOLINT: implicit

  bool isNull() const { return m_element.isNull(); }
  const ZEBIDOM_Element& dom() const { return m_element; }
  CheckPlace place() const { return {m_element.getLine(), m_element.getColumn()}; }
  int line() const { return m_element.getLine(); }
  std::string tag() const { return m_element.getTagName().toStdString(); }
  /// The attribute's value; empty when there is no such attribute.
  std::string get(const char* name) const { return m_element.getAttribute(name).toStdString(); }
  bool has(const std::string& name) const { return m_element.hasAttribute(name); }
  /// The class attribute from behind its last dot, as the library reads it.
  std::string className() const;

  CheckElement parent() const { return m_element.getParentNode(); }
  /// All, or those of one name.
  std::vector<CheckElement> children(const std::string& tag = "") const;
  /// The param that a component takes under the name: the last one with a value, or null.
  CheckElement param(const std::string& name, bool isInAnyCase = false) const;

  friend bool operator==(const CheckElement& a, const CheckElement& b) {
    return a.m_element == b.m_element;
  }
  friend bool operator!=(const CheckElement& a, const CheckElement& b) { return !(a == b); }

 private:
  ZEBIDOM_Element m_element;
};

#endif
