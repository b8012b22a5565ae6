#include "tools/CheckFindings.h"

#include <algorithm>
#include <tuple>
#include <utility>

void CheckFindings::warn(const char* rule, CheckPlace place, std::string text,
                         std::string instead) {
  m_all.push_back(
      {CheckFinding::Severity::Warning, rule, place, std::move(text), std::move(instead)});
}

void CheckFindings::fail(const char* rule, CheckPlace place, std::string text,
                         std::string instead) {
  m_all.push_back(
      {CheckFinding::Severity::Error, rule, place, std::move(text), std::move(instead)});
}

void CheckFindings::sort() {
  std::stable_sort(m_all.begin(), m_all.end(), [](const CheckFinding& a, const CheckFinding& b) {
    return std::tie(a.place.line, a.place.column) < std::tie(b.place.line, b.place.column);
  });
}

std::size_t CheckFindings::count(CheckFinding::Severity severity) const {
  return static_cast<std::size_t>(std::count_if(
      m_all.begin(), m_all.end(),
      [severity](const CheckFinding& finding) { return finding.severity == severity; }));
}

bool CheckFindings::has(const std::string& rule, int line) const {
  return std::any_of(m_all.begin(), m_all.end(), [&](const CheckFinding& finding) {
    return finding.rule == rule && finding.place.line == line;
  });
}
