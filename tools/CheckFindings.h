#ifndef TOOLS_CHECKFINDINGS_H
#define TOOLS_CHECKFINDINGS_H

#include <string>
#include <vector>

#include "tools/CheckFinding.h"

class CheckedDocument;
class ZEBIDOM_Element;

/// Collects what the rules find in a document.
class CheckFindings {
 public:
  explicit CheckFindings(const CheckedDocument& document) : m_document(document) {}

  /// At the attribute of that name, or at the element where the name is empty.
  void warn(const char* rule, const ZEBIDOM_Element& element, const char* attribute,
            std::string text, std::string instead);
  void fail(const char* rule, CheckPlace place, std::string text, std::string instead);
  /// Puts them in the order of their places.
  void sort();

  const std::vector<CheckFinding>& all() const { return m_all; }
  std::size_t count(CheckFinding::Severity severity) const;
  /// Whether the rule has found something at the line of the attribute.
  bool has(const char* rule, const ZEBIDOM_Element& element, const char* attribute) const;

 private:
  const CheckedDocument& m_document;
  std::vector<CheckFinding> m_all;
};

#endif
