#ifndef TOOLS_CHECKFINDINGS_H
#define TOOLS_CHECKFINDINGS_H

#include <string>
#include <vector>

#include "tools/CheckFinding.h"

/// Collects what the rules find.
class CheckFindings {
 public:
  void warn(const char* rule, CheckPlace place, std::string text, std::string instead);
  void fail(const char* rule, CheckPlace place, std::string text, std::string instead);
  /// Puts them in the order of their places.
  void sort();

  const std::vector<CheckFinding>& all() const { return m_all; }
  std::size_t count(CheckFinding::Severity severity) const;
  /// Whether the rule has found something at the line.
  bool has(const std::string& rule, int line) const;

 private:
  std::vector<CheckFinding> m_all;
};

#endif
