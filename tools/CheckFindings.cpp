#include "tools/CheckFindings.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "tools/CheckedDocument.h"

void CheckFindings::warn(const char* rule, const ZEBIDOM_Element& element, const char* attribute,
                         std::string text, std::string instead) {
  m_all.push_back({CheckFinding::Severity::Warning, rule, m_document.placeOf(element, attribute),
                   std::move(text), std::move(instead)});
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

bool CheckFindings::has(const char* rule, const ZEBIDOM_Element& element,
                        const char* attribute) const {
  const int line = m_document.placeOf(element, attribute).line;
  return std::any_of(m_all.begin(), m_all.end(), [&](const CheckFinding& finding) {
    return finding.rule == rule && finding.place.line == line;
  });
}
