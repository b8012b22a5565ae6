#ifndef PLATFORM_ZEBIDOM_PARSER_H
#define PLATFORM_ZEBIDOM_PARSER_H

#include <iosfwd>
#include <string>

#include "platform/I18NString.h"

class ZEBIDOM_Document;

/// Reads an XML file into a document. Nothing but the named file is ever opened: an external DTD
/// that the document names is passed over, and a document that uses an entity from outside, in text
/// or in an attribute, is refused. Namespaces mean nothing, so a prefix needs no declaration. Known
/// encodings: UTF-8, UTF-16, ISO-8859-1 and US-ASCII.
///
/// What a document can cost is bounded. Refused are files above 4 MiB, elements nested more than
/// 256 deep, more than 250,000 nodes, attributes above 64 KiB, more than 256 entity and attribute
/// declarations, and entities or default attributes that multiply the size of the document.
class LOG4ZEB_EXPORT ZEBIDOM_Parser {
 public:
  /// REQUIRES: validation == 0, there is no validation. Throws ZEBAssertError otherwise.
  explicit ZEBIDOM_Parser(int validation);
  /// REQUIRES: load == 0, an external DTD is never loaded. Throws ZEBAssertError otherwise.
  void setLoadExternalDTD(int load);

  /// Parses the file and makes `document` a handle on the result. Returns 1, or 0 when the file
  /// cannot be read or is refused; `document` is then what it was, and the operations below tell
  /// why. Throws ZEBOutOfMemoryError.
  int parse(const I18NString& fileName, ZEBIDOM_Document& document);
  /// Parses what the stream holds, likewise.
  int parse(std::istream& in, ZEBIDOM_Document& document);
  /// The bytes that the last parse() parsed.
  const std::string& getText() const noexcept { return m_text; }

  /// Where the last parse() failed, both counted from 1; 0 when it did not, or at no such place.
  int getErrorLine() const noexcept { return m_errorLine; }
  int getErrorColumn() const noexcept { return m_errorColumn; }
  /// Why the last parse() failed, without the file's name; empty when it did not.
  const I18NString& getErrorReason() const noexcept { return m_errorReason; }

 private:
  /// Parses what `read` returns.
  template <typename Reading>
  int parseAfter(Reading read, ZEBIDOM_Document& document);

  std::string m_text;
  int m_errorLine = 0;
  int m_errorColumn = 0;
  I18NString m_errorReason;
};

#endif
