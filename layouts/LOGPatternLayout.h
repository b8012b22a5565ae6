#ifndef LAYOUTS_LOGPATTERNLAYOUT_H
#define LAYOUTS_LOGPATTERNLAYOUT_H

#include <memory>
#include <vector>

#include "layouts/LOGDirectConverter.h"
#include "layouts/LOGLayout.h"
#include "layouts/LOGPatternConverter.h"

class LOGPatternParser;

/// Formats events by a conversion pattern: text in which specifiers such as `%-5p` stand for parts
/// of the event. LOGPatternParser tells what a pattern may hold. The widths in a pattern are not
/// those of this layout alone, as LOGPatternConverter tells.
class LOG4ZEB_EXPORT LOGPatternLayout : public LOGLayout {
 public:
  static const I18NString DEFAULT_CONVERSION_PATTERN;
  static const I18NString TTCC_CONVERSION_PATTERN;

  /// The pattern `%m%n`.
  LOGPatternLayout();
  /// Throws as setConversionPattern().
  explicit LOGPatternLayout(const I18NString& pattern);
  LOGPatternLayout(const LOGPatternLayout&) = delete;
  ~LOGPatternLayout() override;

  /// Parses the pattern and uses it from now on; takes the layout's lock. Throws ZEBAssertError for
  /// `%X` without an option, and ZEBOutOfMemoryError; the layout then keeps its pattern.
  void setConversionPattern(const I18NString& pattern);
  const I18NString& getConversionPattern() const { return m_conversionPattern; }

  /// Every failure ends here: it is reported, and the text is returned as far as it was built. A
  /// null event gives an empty text and a warning.
  const I18NString& format(LOGLoggingEvent* event) override;
  int ignoresThrowable() override { return 1; }

 private:
  class Walk;

  static std::unique_ptr<LOGPatternParser> createPatternParser(const I18NString& pattern);

  void build(I18NString& text, LOGLoggingEvent* event);
  const I18NString& buildInBuffer(LOGLoggingEvent* event);

  I18NString m_conversionPattern;
  /// A converter, null in front of the first literal only, and the literal text that follows it.
  struct Step {
    LOGPatternConverter* converter = nullptr;
    LOGDirectConverter* direct = nullptr;  // the converter's direct side, or null
    LOGEventPart part = LOGEventPart::NONE;
    bool isLiteralShort = true;
    I18NString literal;
  };
  /// A parsed pattern: the chain, and the same once more in the order and form of its use.
  struct Program {
    LOGPatternConverter::Chain chain;
    std::vector<Step> steps;
  };
  static Program programOf(LOGPatternConverter::Chain chain);

  Program m_program;
  // A message that is rendered may set another pattern: the one that it is part of stays.
  int m_walks = 0;
  std::vector<Program> m_replaced;  // empty when nobody walks
};

#endif
