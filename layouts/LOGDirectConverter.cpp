#include "layouts/LOGDirectConverter.h"

#include <memory>

#include "platform/ZEBAssertError.h"
#include "platform/ZEBTranslate.h"

constexpr const char* SOURCE = "LOGPatternParserUtils";

LOGDirectConverter::~LOGDirectConverter() = default;

I18NString* LOGDirectConverter::newText(LOGLoggingEvent* event) {
  ZEB_ASSERT(event, SOURCE, __LINE__);
  return zebTranslate(SOURCE, __LINE__, [this, event] {
    auto text = std::make_unique<I18NString>();
    return appendText(*text, event) ? text.release() : nullptr;
  });
}
