#ifndef TOOLS_CHECKCOMPONENTRULES_H
#define TOOLS_CHECKCOMPONENTRULES_H

#include <string>
#include <vector>

#include "tools/CheckFindings.h"
#include "tools/CheckedDocument.h"

/// Finds what is wrong with single components: classes that are not known, params that are ignored
/// or mean something else than they seem to, patterns, missing layouts, and files that cannot be
/// written.
class CheckComponentRules {
 public:
  /// `directory` is the one that the program will run in, from which relative names are taken.
  CheckComponentRules(const CheckedDocument& document, std::string directory,
                      CheckFindings& findings);

  void checkAll();

 private:
  void checkAppender(const ZEBIDOM_Element& appender);
  void checkLayouts(const ZEBIDOM_Element& appender);
  void checkLineEnd(const ZEBIDOM_Element& layout, const std::string& appenderClass);
  void checkFilter(const ZEBIDOM_Element& filter);
  void checkErrorHandler(const ZEBIDOM_Element& handler);
  bool checkClass(const ZEBIDOM_Element& element, const std::vector<std::string>& classes,
                  const std::string& consequence);

  void checkParams(const ZEBIDOM_Element& component);
  void checkParam(const ZEBIDOM_Element& param, const std::string& className);
  void warnOfIgnored(const ZEBIDOM_Element& param, const std::string& className);
  void checkValue(const ZEBIDOM_Element& param, const std::string& className,
                  const std::string& name);
  void checkNumber(const ZEBIDOM_Element& param, const std::string& name);
  void checkFileSize(const ZEBIDOM_Element& param);
  void checkLevelValue(const ZEBIDOM_Element& param, const std::string& className,
                       const std::string& name);
  void checkPattern(const ZEBIDOM_Element& param);
  void checkPatternOptions(const ZEBIDOM_Element& param);

  void checkFile(const ZEBIDOM_Element& appender, const ZEBIDOM_Element& param);
  void checkPlaceOfFile(const ZEBIDOM_Element& param, const std::string& value, bool isRolling);
  void checkSharedFiles();

  /// The param that the component takes under that name: the last one with a value, or null.
  static ZEBIDOM_Element paramOf(const ZEBIDOM_Element& component, const char* name,
                                 bool isInAnyCase = false);
  void warn(const char* rule, const ZEBIDOM_Element& element, const char* attribute,
            const std::string& text, const std::string& instead);

  const CheckedDocument& m_document;
  const std::string m_directory;
  CheckFindings& m_findings;
};

#endif
