#ifndef TOOLS_CHECKSTRUCTURERULES_H
#define TOOLS_CHECKSTRUCTURERULES_H

#include <set>
#include <string>
#include <vector>

#include "tools/CheckFindings.h"
#include "tools/CheckedDocument.h"

/// Finds what a document says in vain by its elements, attributes and names: what the library skips
/// without a message, reads in another way than it looks, or refers to without finding it.
class CheckStructureRules {
 public:
  CheckStructureRules(const CheckedDocument& document, CheckFindings& findings)
      : m_document(document), m_findings(findings) {
    collectUnused();
  }

  /// Returns false when the document cannot be used at all; the finding tells why.
  bool checkRoot();
  void checkAll();

 private:
  void checkElement(const ZEBIDOM_Element& element, const std::string& parent);
  void checkAttributes(const ZEBIDOM_Element& element);
  void checkAttribute(const ZEBIDOM_Element& element, const ZEBIDOM_Node& attribute);
  void checkText(const ZEBIDOM_Element& element);
  void checkRootAttributes();
  void checkLogger(const ZEBIDOM_Element& element);
  void checkLevels(const ZEBIDOM_Element& logger);
  void checkLevel(const ZEBIDOM_Element& level, bool isRoot);
  void checkAppender(const ZEBIDOM_Element& element);
  void checkReference(const ZEBIDOM_Element& reference, const std::string& parent);
  void checkNames(const char* what, const std::vector<ZEBIDOM_Element>& elements,
                  const std::string& consequence);
  void checkOrder(const std::vector<ZEBIDOM_Element>& loggers);
  void checkTruthValue(const ZEBIDOM_Element& element, const char* attribute,
                       bool caseCounts = false);
  void checkLibraries(const ZEBIDOM_Element& element, const std::string& tag);
  void checkLibraryName(const ZEBIDOM_Element& element, const char* attribute);
  void collectUnused();

  const CheckedDocument& m_document;
  CheckFindings& m_findings;
  std::set<std::string> m_unused;  // appenders that no logger leads to
};

#endif
