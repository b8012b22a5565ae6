#include "layouts/LOGPatternLayout.h"

#include <utility>

#include "core/LOGFailures.h"
#include "layouts/LOGPatternParser.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBTranslate.h"

namespace {

constexpr const char* SOURCE = "LOGPatternLayout";

}  // namespace

const I18NString LOGPatternLayout::DEFAULT_CONVERSION_PATTERN = "%m%n";
const I18NString LOGPatternLayout::TTCC_CONVERSION_PATTERN = "%r [%t] %p %c %x - %m%n";

LOGPatternLayout::LOGPatternLayout() : LOGPatternLayout(DEFAULT_CONVERSION_PATTERN) {}

LOGPatternLayout::LOGPatternLayout(const I18NString& pattern) {
  instance(SOURCE);
  setConversionPattern(pattern);
}

LOGPatternLayout::~LOGPatternLayout() = default;

void LOGPatternLayout::setConversionPattern(const I18NString& pattern) {
  const ZEBThreadGuard guard =
      logReportingAndPassing("LOGPatternLayout::setConversionPattern -- unable to lock mutex",
                             [this] { return ZEBThreadGuard(getCriticalSection()); });
  LOGPatternConverter::Chain chain(createPatternParser(pattern)->parse());
  m_conversionPattern = pattern;
  m_head = std::move(chain);
}

const I18NString& LOGPatternLayout::format(LOGLoggingEvent* event) {
  I18NString text = takeBuffer();
  if (event == nullptr) {
    LOGLogLog::warn("LOGPatternLayout::format --- Event is NULL.");
    return keep(std::move(text));
  }
  try {
    I18NString piece;
    // Kept while it is walked: a message that is rendered may set another pattern.
    const std::shared_ptr<LOGPatternConverter> chain = m_head;
    for (LOGPatternConverter* converter = chain.get(); converter != nullptr;
         converter = converter->getNext()) {
      converter->format(piece, event);
      if (!piece.isEmpty()) {
        text.append(piece);
        piece.clear();
      }
    }
  } catch (...) {
    LOGLogLog::error("LOGPatternLayout::format --- An unknown error occurred.");
  }
  return keep(std::move(text));
}

int LOGPatternLayout::ignoresThrowable() { return 1; }

std::unique_ptr<LOGPatternParser> LOGPatternLayout::createPatternParser(const I18NString& pattern) {
  return zebTranslate(SOURCE, __LINE__,
                      [&pattern] { return std::make_unique<LOGPatternParser>(pattern); });
}
