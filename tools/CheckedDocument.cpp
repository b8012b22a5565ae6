#include "tools/CheckedDocument.h"

#include <algorithm>
#include <iostream>
#include <iterator>

#include "platform/ZEBIDOM_DOMImplementation.h"
#include "platform/ZEBIDOM_NodeList.h"
#include "platform/ZEBIDOM_Parser.h"

namespace {

constexpr const char* STANDARD_INPUT = "-";
constexpr const char* BLANKS = " \t\r\n";

bool beginsCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }

}  // namespace

CheckedDocument::CheckedDocument(const std::string& fileName)
    : m_document(ZEBIDOM_DOMImplementation::getInstance().createDocument()) {
  const I18NString name = I18NString::fromUtf8(fileName);
  if (name.toStdString() != fileName) {
    m_errorReason = "the name of the file is not UTF-8, so that the library cannot open it";
    return;
  }
  ZEBIDOM_Parser parser(0);
  parser.setLoadExternalDTD(0);
  if ((fileName == STANDARD_INPUT ? parser.parse(std::cin, m_document)
                                  : parser.parse(name, m_document)) == 0) {
    m_errorReason = parser.getErrorReason().toStdString();
    m_errorPlace = {parser.getErrorLine(), parser.getErrorColumn()};
    return;
  }
  m_text = parser.getText();
  if (m_text.compare(0, 3, "\xEF\xBB\xBF") == 0) {
    m_text.erase(0, 3);  // it is no column of its line
  }
  splitIntoLines();
  for (const CheckElement& element : elements("appender")) {
    m_appenders.emplace(element.get("name"), element);
  }
}

void CheckedDocument::splitIntoLines() {
  m_lineStarts.push_back(0);
  for (std::size_t i = 0; i < m_text.size(); ++i) {
    const bool isLoneReturn = m_text[i] == '\r' && m_text.compare(i + 1, 1, "\n") != 0;
    if (m_text[i] == '\n' || isLoneReturn) {
      m_lineStarts.push_back(i + 1);
    }
  }
}

std::size_t CheckedDocument::offsetOf(CheckPlace place) const {
  const auto line = static_cast<std::size_t>(place.line);
  if (place.line < 1 || line > m_lineStarts.size()) {
    return m_text.size();
  }
  std::size_t offset = m_lineStarts[line - 1];
  for (int column = 1; column < place.column && offset < m_text.size(); ++column) {
    do {
      ++offset;
    } while (offset < m_text.size() && !beginsCharacter(m_text[offset]));
  }
  return offset;
}

CheckPlace CheckedDocument::placeAt(std::size_t offset) const {
  const auto next = std::upper_bound(m_lineStarts.begin(), m_lineStarts.end(), offset);
  const auto begin = m_text.begin() + static_cast<std::ptrdiff_t>(*std::prev(next));
  const auto end = m_text.begin() + static_cast<std::ptrdiff_t>(offset);
  return {static_cast<int>(next - m_lineStarts.begin()),
          static_cast<int>(std::count_if(begin, end, beginsCharacter)) + 1};
}

std::vector<CheckElement> CheckedDocument::elements(const char* tag) const {
  std::vector<CheckElement> found;
  const ZEBIDOM_NodeList nodes = m_document.getElementsByTagName(tag);
  for (std::size_t i = 0; i < nodes.getLength(); ++i) {
    found.emplace_back(nodes.item(i));
  }
  return found;
}

CheckElement CheckedDocument::appender(const std::string& name) const {
  const auto known = m_appenders.find(name);
  return known == m_appenders.end() ? CheckElement() : known->second;
}

CheckPlace CheckedDocument::placeOf(const CheckElement& element,
                                    const std::string& attribute) const {
  const CheckPlace fallback = element.place();
  const std::string beginning = "<" + element.tag();
  std::size_t at = offsetOf(fallback);
  if (m_text.compare(at, beginning.size(), beginning) != 0) {
    return fallback;
  }
  at = m_text.find_first_not_of(BLANKS, at + beginning.size());
  while (at != std::string::npos && m_text[at] != '>' && m_text[at] != '/') {
    const std::size_t nameEnd = m_text.find_first_of(std::string(BLANKS) + "=", at);
    const std::size_t quote = m_text.find_first_of("'\"", at);
    if (nameEnd == std::string::npos || quote == std::string::npos) {
      return fallback;
    }
    if (m_text.compare(at, nameEnd - at, attribute) == 0) {
      return placeAt(at);
    }
    const std::size_t close = m_text.find(m_text[quote], quote + 1);
    at = close == std::string::npos ? close : m_text.find_first_not_of(BLANKS, close + 1);
  }
  return fallback;
}
