// A conversion pattern applied to an event. Lines of the input: pattern, logger, diagnostic
// context; what follows is the message, whose length picks the level.
//
// Expected beyond not failing: a layout writes what the converters of its pattern write one by one,
// widths hold, a pattern without specifiers is written as it is, and the only exception is the one
// for "%X" without an option.

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>

#include "core/LOGLogger.h"
#include "core/LOGLoggingEvent.h"
#include "core/LOGNDC.h"
#include "layouts/LOGLiteralPatternConverter.h"
#include "layouts/LOGPatternLayout.h"
#include "layouts/LOGPatternParser.h"
#include "platform/ZEBAssertError.h"
#include "support/Expect.h"
#include "support/FreshHierarchy.h"
#include "support/FuzzInput.h"
#include "support/PatternWidths.h"

namespace {

// Each component of a name costs the hierarchy an entry.
constexpr std::size_t LONGEST_NAME = 64;

constexpr int RANKS[] = {LOGLevel::DEBUG_RANK, LOGLevel::INFO_RANK, LOGLevel::WARN_RANK,
                         LOGLevel::ERROR_RANK, LOGLevel::FATAL_RANK};

/// What the converters give one after the other.
I18NString pieceByPiece(const LOGPatternConverter::Chain& chain, LOGLoggingEvent& event) {
  I18NString text;
  for (LOGPatternConverter* converter = chain.get(); converter != nullptr;
       converter = converter->getNext()) {
    I18NString piece;
    converter->format(piece, &event);
    if (dynamic_cast<LOGLiteralPatternConverter*>(converter) == nullptr) {
      const auto length = static_cast<long>(piece.length());
      const std::unique_ptr<I18NString> whole(converter->convert(&event));
      // What is cut is cut to the maximum, also where the minimum is larger.
      const bool isCut =
          whole != nullptr && static_cast<long>(whole->length()) > PatternWidths::maximum();
      expect(isCut ? length == PatternWidths::maximum() : length >= PatternWidths::minimum(),
             "a piece keeps to the widths");
    }
    text += piece;
  }
  return text;
}

/// The text with every digit as a 0: the milliseconds of a date are those of its format's making.
I18NString withoutTime(const I18NString& text) {
  std::u16string units = text.toUtf16();
  std::replace_if(
      units.begin(), units.end(), [](char16_t c) { return c >= u'0' && c <= u'9'; }, u'0');
  return I18NString(units.data(), units.size());
}

void formatBothWays(const I18NString& pattern, LOGLoggingEvent& event) {
  LOGPatternLayout layout(pattern);
  PatternWidths::limit();
  const I18NString text = layout.format(&event);
  const LOGPatternConverter::Chain chain(LOGPatternParser(pattern).parse());
  PatternWidths::limit();
  const I18NString pieces = pieceByPiece(chain, event);
  const bool hasDate = pattern.indexOf("d") != I18NString::NOT_FOUND;
  expect(hasDate ? withoutTime(text) == withoutTime(pieces) : text == pieces,
         "a layout writes what its converters write");
  expect(text == layout.format(&event), "the same event gives the same text");
  if (pattern.indexOf("%") == I18NString::NOT_FOUND) {
    expect(text == pattern, "a pattern without specifiers is text");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const I18NString pattern = I18NString::fromUtf8(input.line());
  FreshHierarchy hierarchy;
  LOGLogger* const logger =
      hierarchy.get().getLogger(I18NString::fromUtf8(input.line().substr(0, LONGEST_NAME)));
  LOGNDC::push(I18NString::fromUtf8(input.line()));
  const I18NString message = I18NString::fromUtf8(input.rest());
  LOGLoggingEvent event(logger, LOGLevel::toLevel(RANKS[message.length() % std::size(RANKS)]),
                        LOGMessageText{message});
  try {
    formatBothWays(pattern, event);
  } catch (const ZEBAssertError&) {
    expect(pattern.indexOf("X") != I18NString::NOT_FOUND, "only %X needs an option");
  }
  LOGNDC::remove();
  return 0;
}
