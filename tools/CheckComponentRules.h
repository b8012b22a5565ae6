#ifndef TOOLS_CHECKCOMPONENTRULES_H
#define TOOLS_CHECKCOMPONENTRULES_H

#include <string>
#include <vector>

#include "tools/CheckFindings.h"
#include "tools/CheckParamRules.h"
#include "tools/CheckedDocument.h"

/// Finds what is wrong with single components: classes that are not known, layouts that are missing
/// or do not suit the appender, appenders and handlers that do nothing, and odd params.
class CheckComponentRules {
 public:
  CheckComponentRules(const CheckedDocument& document, CheckFindings& findings)
      : m_document(document), m_findings(findings), m_params(findings) {}

  void checkAll();

 private:
  void checkAppender(const ZEBIDOM_Element& appender);
  void checkLayouts(const ZEBIDOM_Element& appender);
  void checkLineEnd(const ZEBIDOM_Element& layout, const std::string& appenderClass);
  void checkFilter(const ZEBIDOM_Element& filter);
  void checkErrorHandler(const ZEBIDOM_Element& handler);
  bool checkClass(const ZEBIDOM_Element& element, const std::vector<std::string>& classes,
                  const std::string& consequence);

  const CheckedDocument& m_document;
  CheckFindings& m_findings;
  CheckParamRules m_params;
};

#endif
