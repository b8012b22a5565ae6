#ifndef TOOLS_CHECKPARAMRULES_H
#define TOOLS_CHECKPARAMRULES_H

#include <string>

#include "tools/CheckFindings.h"
#include "tools/CheckedDocument.h"

/// Finds params that a component does not read, values that mean something else than they seem to,
/// and what is odd in conversion patterns.
class CheckParamRules {
 public:
  explicit CheckParamRules(CheckFindings& findings) : m_findings(findings) {}

  /// All params of an appender, layout or filter.
  void checkParams(const ZEBIDOM_Element& component);
  /// Says that the class does not read the param.
  void warnOfIgnored(const ZEBIDOM_Element& param, const std::string& className);

 private:
  bool checkParam(const ZEBIDOM_Element& param, const std::string& className);
  void checkValue(const ZEBIDOM_Element& param, const std::string& className,
                  const std::string& name);
  void checkNumber(const ZEBIDOM_Element& param, const std::string& name);
  void checkFileSize(const ZEBIDOM_Element& param);
  void checkLevelValue(const ZEBIDOM_Element& param, const std::string& className,
                       const std::string& name);
  void checkPattern(const ZEBIDOM_Element& param);
  void checkPatternOptions(const ZEBIDOM_Element& param);

  CheckFindings& m_findings;
};

#endif
