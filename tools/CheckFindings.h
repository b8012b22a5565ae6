#ifndef TOOLS_CHECKFINDINGS_H
#define TOOLS_CHECKFINDINGS_H

#include <string>
#include <utility>
#include <vector>

#include "tools/CheckedDocument.h"

/// Something in a document that is probably not what its writer meant, or, as an error, that keeps
/// the whole document from being used.
struct CheckFinding {
  bool isError;
  std::string rule;  // a short name for programs that read the report
  CheckPlace place;
  std::string text;
  std::string instead;  // what to write; may be empty
};

/// Collects what the rules find in a document.
class CheckFindings {
 public:
  explicit CheckFindings(const CheckedDocument& document) : m_document(document) {}

  const CheckedDocument& document() const { return m_document; }

  void add(CheckFinding finding) { m_all.push_back(std::move(finding)); }
  /// Puts them in the order of their places.
  void sort();

  const std::vector<CheckFinding>& all() const { return m_all; }
  /// Whether the rule has found something at the line of the attribute.
  bool has(const char* rule, const CheckElement& element, const char* attribute) const;

 private:
  const CheckedDocument& m_document;
  std::vector<CheckFinding> m_all;
};

/// What every set of rules is made of: a document, and what is found in it.
class CheckRuleSet {
 public:
  explicit CheckRuleSet(CheckFindings& findings)
      : m_document(findings.document()), m_findings(findings) {}

 protected:
  /// At the attribute of that name, or at the element where the name is empty. The values take the
  /// places of the "{}" in the text and then in what to write instead.
  void warn(const char* rule, const CheckElement& element, const std::string& attribute,
            const std::string& text, const std::string& instead,
            const std::vector<std::string>& values = {}) const;

  /// The same on a condition. The values are made in any case.
  void warnIf(bool condition, const char* rule, const CheckElement& element,
              const std::string& attribute, const std::string& text, const std::string& instead,
              const std::vector<std::string>& values = {}) const {
    if (condition) {
      warn(rule, element, attribute, text, instead, values);
    }
  }

  const CheckedDocument& m_document;
  CheckFindings& m_findings;
};

#endif
