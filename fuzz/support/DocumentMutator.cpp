#include "support/DocumentMutator.h"

namespace {

std::string replaced(const std::string& text, std::size_t begin, std::size_t end,
                     const std::string& by) {
  return text.substr(0, begin) + by + text.substr(end);
}

}  // namespace

std::string DocumentMutator::mutate(const std::string& document) {
  switch (below(4)) {
    case 0:
      return m_changeBytes(document);
    case 1:
      return changeElements(document);
    default:
      return changeValue(document);
  }
}

std::vector<DocumentMutator::Range> DocumentMutator::values(const std::string& document) {
  std::vector<Range> found;
  for (std::size_t begin = 0;
       (begin = document.find_first_of("'\"", begin)) != std::string::npos;) {
    const std::size_t end = document.find(document[begin], begin + 1);
    if (end == std::string::npos) {
      break;
    }
    found.push_back({begin + 1, end});
    begin = end + 1;
  }
  return found;
}

std::size_t DocumentMutator::endOfElement(const std::string& document, std::size_t begin) {
  int depth = 0;
  while (begin != std::string::npos) {
    const std::size_t end = document.find('>', begin);
    if (end == std::string::npos) {
      return end;
    }
    if (document.compare(begin, 2, "</") == 0) {
      --depth;
    } else if (document[end - 1] != '/') {
      ++depth;
    }
    if (depth <= 0) {
      return end + 1;
    }
    begin = document.find('<', end);
  }
  return begin;
}

std::vector<DocumentMutator::Range> DocumentMutator::elements(const std::string& document) {
  std::vector<Range> found;
  for (std::size_t i = document.find('<', 1); i != std::string::npos;
       i = document.find('<', i + 1)) {
    const std::size_t end = endOfElement(document, i);
    if (document.compare(i, 2, "</") != 0 && end != std::string::npos) {
      found.push_back({i, end});
    }
  }
  return found;
}

std::string DocumentMutator::changeValue(const std::string& document) {
  const std::vector<Range> found = values(document);
  if (found.empty()) {
    return m_changeBytes(document);
  }
  const Range value = found[below(found.size())];
  const Range other = found[below(found.size())];
  return replaced(document, value.begin, value.end,
                  below(3) == 0
                      ? document.substr(other.begin, other.end - other.begin)
                      : m_changeBytes(document.substr(value.begin, value.end - value.begin)));
}

std::string DocumentMutator::changeElements(const std::string& document) {
  const std::vector<Range> found = elements(document);
  if (found.empty()) {
    return m_changeBytes(document);
  }
  const Range element = found[below(found.size())];
  const Range other = found[below(found.size())];
  const std::string copy = document.substr(element.begin, element.end - element.begin);
  switch (below(3)) {
    case 0:  // leave it out
      return replaced(document, element.begin, element.end, "");
    case 1:  // once more in front of the other
      return replaced(document, other.begin, other.begin, copy);
    default:  // in place of the other
      return replaced(document, other.begin, other.end, copy);
  }
}
