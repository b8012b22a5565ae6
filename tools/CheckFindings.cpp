#include "tools/CheckFindings.h"

#include <algorithm>
#include <tuple>

namespace {

/// The text with values in its gaps; they are taken off the front of what is left of them.
std::string filled(std::string text, std::vector<std::string>& values) {
  std::size_t at = text.find("{}");
  while (at != std::string::npos && !values.empty()) {
    text.replace(at, 2, values.front());
    at = text.find("{}", at + values.front().size());
    values.erase(values.begin());
  }
  return text;
}

}  // namespace

void CheckRuleSet::warn(const char* rule, const CheckElement& element, const std::string& attribute,
                        const std::string& text, const std::string& instead,
                        const std::vector<std::string>& values) const {
  std::vector<std::string> rest = values;
  std::string complete = filled(text, rest);
  m_findings.add(
      {false, rule, m_document.placeOf(element, attribute), complete, filled(instead, rest)});
}

void CheckFindings::sort() {
  std::stable_sort(m_all.begin(), m_all.end(), [](const CheckFinding& a, const CheckFinding& b) {
    return std::tie(a.place.line, a.place.column) < std::tie(b.place.line, b.place.column);
  });
}

bool CheckFindings::has(const char* rule, const CheckElement& element,
                        const char* attribute) const {
  const int line = m_document.placeOf(element, attribute).line;
  return std::any_of(m_all.begin(), m_all.end(), [&](const CheckFinding& finding) {
    return finding.rule == rule && finding.place.line == line;
  });
}
