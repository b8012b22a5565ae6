#ifndef TOOLS_CHECKFILERULES_H
#define TOOLS_CHECKFILERULES_H

#include <string>
#include <utility>

#include "tools/CheckFindings.h"
#include "tools/CheckedDocument.h"

/// Finds log files that cannot be written, that have another name than it seems, or that appenders
/// take from each other. Nothing is opened.
class CheckFileRules {
 public:
  /// `directory` is the one that the program will run in, from which relative names are taken.
  CheckFileRules(const CheckedDocument& document, std::string directory, CheckFindings& findings)
      : m_document(document), m_directory(std::move(directory)), m_findings(findings) {}

  void checkAll();

 private:
  void checkFile(const ZEBIDOM_Element& appender, const ZEBIDOM_Element& param);
  void checkPlaceOfFile(const ZEBIDOM_Element& param, const std::string& value, bool isRolling);
  bool takeTheSameEvents(const ZEBIDOM_Element& one, const ZEBIDOM_Element& other) const;
  void checkSharedFiles();

  const CheckedDocument& m_document;
  const std::string m_directory;
  CheckFindings& m_findings;
};

#endif
