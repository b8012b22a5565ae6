#include "tools/CheckElement.h"

#include "tools/CheckWords.h"

std::string CheckElement::className() const {
  const std::string text = get("class");
  const std::size_t dot = text.rfind('.');
  std::string name =
      dot == std::string::npos || dot + 1 == text.size() ? text : text.substr(dot + 1);
  if (tag() == "appender" && (name == "LogLocalUDPAppender" || name == "LogTCPSocketAppender")) {
    name.replace(0, 3, "LOG");
  }
  return name;
}

std::vector<CheckElement> CheckElement::children(const std::string& tag) const {
  std::vector<CheckElement> found;
  for (ZEBIDOM_Node child = m_element.getFirstChild(); !child.isNull();
       child = child.getNextSibling()) {
    const CheckElement element(child);  // null where it is text
    if (!element.isNull() && (tag.empty() || element.tag() == tag)) {
      found.push_back(element);
    }
  }
  return found;
}

CheckElement CheckElement::param(const std::string& name, bool isInAnyCase) const {
  CheckElement found;
  for (const CheckElement& param : children("param")) {
    const std::string given = param.get("name");
    const bool isIt =
        isInAnyCase ? CheckWords::lower(given) == CheckWords::lower(name) : given == name;
    if (isIt && !param.get("value").empty()) {
      found = param;
    }
  }
  return found;
}
