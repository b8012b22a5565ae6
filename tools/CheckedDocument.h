#ifndef TOOLS_CHECKEDDOCUMENT_H
#define TOOLS_CHECKEDDOCUMENT_H

#include <map>
#include <string>
#include <vector>

#include "platform/ZEBIDOM_Document.h"
#include "tools/CheckElement.h"

/// A configuration document as the library parses it, and where in the file its elements and
/// attributes stand.
class CheckedDocument {
 public:
  /// Reads the file, or standard input for "-", once.
  explicit CheckedDocument(const std::string& fileName);
  CheckedDocument(const CheckedDocument&) = delete;
  CheckedDocument& operator=(const CheckedDocument&) = delete;

  bool isParsed() const { return !root().isNull(); }
  /// Why it is not, and where if that is known.
  const std::string& errorReason() const { return m_errorReason; }
  CheckPlace errorPlace() const { return m_errorPlace; }

  CheckElement root() const { return m_document.getDocumentElement(); }
  /// All elements of that name in document order, wherever they stand.
  std::vector<CheckElement> elements(const char* tag) const;
  /// The appender element that a reference to the name means, null when there is none.
  CheckElement appender(const std::string& name) const;
  /// Where the attribute is written; the element's place where the file does not show it, as in an
  /// encoding other than ASCII and its extensions.
  CheckPlace placeOf(const CheckElement& element, const std::string& attribute) const;

 private:
  void splitIntoLines();
  std::size_t offsetOf(CheckPlace place) const;
  CheckPlace placeAt(std::size_t offset) const;

  ZEBIDOM_Document m_document;
  std::string m_errorReason;
  CheckPlace m_errorPlace;
  std::string m_text;
  std::vector<std::size_t> m_lineStarts;
  std::map<std::string, CheckElement> m_appenders;  // the first one of each name
};

#endif
