#ifndef TOOLS_CHECKEDDOCUMENT_H
#define TOOLS_CHECKEDDOCUMENT_H

#include <map>
#include <string>
#include <vector>

#include "platform/ZEBIDOM_Document.h"
#include "platform/ZEBIDOM_Element.h"
#include "tools/CheckFinding.h"

/// A configuration document as the library parses it, and where in the file its elements and
/// attributes stand. Texts are UTF-8.
class CheckedDocument {
 public:
  /// Reads the file, or standard input for "-", once.
  explicit CheckedDocument(const std::string& fileName);
  CheckedDocument(const CheckedDocument&) = delete;
  CheckedDocument& operator=(const CheckedDocument&) = delete;

  const std::string& fileName() const { return m_fileName; }
  bool isParsed() const { return m_isParsed; }
  /// Why it is not, and where if that is known.
  const std::string& errorReason() const { return m_errorReason; }
  CheckPlace errorPlace() const { return m_errorPlace; }

  ZEBIDOM_Element root() const { return m_document.getDocumentElement(); }
  /// All elements of that name in document order, wherever they stand.
  std::vector<ZEBIDOM_Element> elements(const char* tag) const;
  /// The appender element that a reference to the name means, null when there is none.
  ZEBIDOM_Element appender(const std::string& name) const;

  static CheckPlace placeOf(const ZEBIDOM_Node& node);
  /// Where the attribute is written; the element's place where the file does not show it, as in an
  /// encoding other than ASCII and its extensions.
  CheckPlace placeOf(const ZEBIDOM_Element& element, const std::string& attribute) const;

  static std::string tag(const ZEBIDOM_Element& element);
  static std::string attribute(const ZEBIDOM_Element& element, const char* name);
  static std::vector<ZEBIDOM_Element> children(const ZEBIDOM_Element& element);
  /// Those of one name.
  static std::vector<ZEBIDOM_Element> children(const ZEBIDOM_Element& element, const char* tag);
  /// The param that a component takes under the name: the last one with a value, or null.
  static ZEBIDOM_Element paramOf(const ZEBIDOM_Element& component, const std::string& name,
                                 bool isInAnyCase = false);
  /// The class attribute from behind its last dot, as the library reads it.
  static std::string classOf(const ZEBIDOM_Element& element);

 private:
  void splitIntoLines();
  std::size_t offsetOf(CheckPlace place) const;
  CheckPlace placeAt(std::size_t offset) const;

  const std::string m_fileName;
  ZEBIDOM_Document m_document;
  bool m_isParsed = false;
  std::string m_errorReason;
  CheckPlace m_errorPlace;
  std::string m_text;
  std::vector<std::size_t> m_lineStarts;
  std::map<std::string, ZEBIDOM_Element> m_appenders;  // the first one of each name
};

#endif
