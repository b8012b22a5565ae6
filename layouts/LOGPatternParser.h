#ifndef LAYOUTS_LOGPATTERNPARSER_H
#define LAYOUTS_LOGPATTERNPARSER_H

#include <memory>

#include "layouts/LOGPatternConverter.h"
#include "layouts/LOGPatternScanner.h"
#include "platform/I18NString.h"

class LOGFormattingInfo;

/// Turns a conversion pattern into a chain of converters. A pattern is text with specifiers of the
/// form `%`, "-" for left alignment, the minimum width, "." and the maximum width, all optional,
/// and one conversion character, which some follow by an option in braces:
///
///     c{n}  the logger's name          C{n}  the class name      d{format}  the date
///     F     the file name              l     the full location   L          the line number
///     m     the message                M     the method name     p          the level
///     r     milliseconds since the library was loaded            t          the thread
///     x     the diagnostic context     X{key}  nothing but the minimum width
///
/// n keeps the last n components of a dotted name. `%%` is a percent sign and `%n` a line end. What
/// is not a specifier is text; an unknown conversion character is reported and is text as well.
class LOG4ZEB_EXPORT LOGPatternParser {
 public:
  static constexpr int LITERAL_STATE = 0;
  static constexpr int CONVERTER_STATE = 1;
  static constexpr int MINUS_STATE = 2;
  static constexpr int DOT_STATE = 3;
  static constexpr int MIN_STATE = 4;
  static constexpr int MAX_STATE = 5;

  static constexpr int FULL_LOCATION_CONVERTER = 1000;
  static constexpr int METHOD_LOCATION_CONVERTER = 1001;
  static constexpr int CLASS_LOCATION_CONVERTER = 1002;
  static constexpr int LINE_LOCATION_CONVERTER = 1003;
  static constexpr int FILE_LOCATION_CONVERTER = 1004;
  static constexpr int RELATIVE_TIME_CONVERTER = 2000;
  static constexpr int THREAD_CONVERTER = 2001;
  static constexpr int LEVEL_CONVERTER = 2002;
  static constexpr int NDC_CONVERTER = 2003;
  static constexpr int MESSAGE_CONVERTER = 2004;

  static const I18NString LITERAL_0;
  static const I18NString LITERAL_9;

  /// Throws ZEBOutOfMemoryError.
  explicit LOGPatternParser(const I18NString& pattern);
  LOGPatternParser(const LOGPatternParser&) = delete;
  LOGPatternParser& operator=(const LOGPatternParser&) = delete;
  virtual ~LOGPatternParser();

  /// Reads the pattern and returns the head of the chain, which the caller owns
  /// (LOGPatternConverter::Chain deletes one); null for an empty pattern. Only one parse runs at a
  /// time in the process. Throws ZEBAssertError for `%X` without an option, and
  /// ZEBOutOfMemoryError.
  LOGPatternConverter* parse();

  /// Adds the converter for the conversion character `ch`, which was just read.
  virtual void finalizeConverter(const I18NString& ch);
  /// Takes ownership of the converter, puts it at the end of the chain and begins a new literal.
  virtual void addConverter(LOGPatternConverter* converter);
  /// Reads an option in braces and returns it in a new string that the caller deletes; null when
  /// there is none, and then nothing is read.
  virtual I18NString* extractOption();
  /// Reads an option as a positive number; 0 when there is none or, reported, it is no such number.
  virtual int extractPrecisionOption();

 private:
  void flushLiteral();
  std::unique_ptr<LOGPatternConverter> createConverter(char16_t ch);
  std::unique_ptr<LOGPatternConverter> createDateConverter();
  std::unique_ptr<LOGPatternConverter> createMDCConverter();
  void addToList(LOGPatternConverter* converter);

  LOGPatternScanner m_scanner;
  I18NString m_currentLiteral;
  LOGPatternConverter::Chain m_head;
  LOGPatternConverter* m_tail = nullptr;
  std::unique_ptr<LOGFormattingInfo> m_formattingInfo;
};

#endif
