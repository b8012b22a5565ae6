#include "core/LOGThrowableText.h"

#include <string>

#include "platform/ZEBThrowable.h"
#include "platform/ZEBTranslate.h"

namespace {

constexpr const char* SOURCE = "LOGThrowableText";

void appendLine(std::string& text, const std::string& line) {
  if (!text.empty()) {
    text += '\n';
  }
  text += line;
}

void appendPlace(std::string& text, const std::string& source, int line) {
  appendLine(text, "  at " + source + (line == 0 ? "" : ':' + std::to_string(line)));
}

/// Appends the lines of one exception and returns what is nested in it, or null.
std::exception_ptr appendOne(std::string& text, const std::exception& thrown) {
  appendLine(text, thrown.what());
  if (const auto* const own = dynamic_cast<const ZEBThrowable*>(&thrown)) {
    appendPlace(text, own->getSource(), own->getLine());
    for (const ZEBThrowable::BackTraceEntry& entry : own->getBackTrace()) {
      appendPlace(text, entry.source, entry.line);
    }
  }
  const auto* const nesting = dynamic_cast<const std::nested_exception*>(&thrown);
  return nesting == nullptr ? nullptr : nesting->nested_ptr();
}

void appendWithNested(std::string& text, std::exception_ptr thrown) {
  while (thrown != nullptr) {
    try {
      std::rethrow_exception(thrown);
    } catch (const std::exception& caught) {
      thrown = appendOne(text, caught);
    } catch (...) {
      appendLine(text, "unknown exception");
      return;
    }
  }
}

}  // namespace

I18NString LOGThrowableText::of(const std::exception& thrown) {
  return zebTranslate(SOURCE, __LINE__, [&]() -> I18NString {
    std::string text;
    appendWithNested(text, appendOne(text, thrown));
    return text;
  });
}

I18NString LOGThrowableText::of(const std::exception_ptr& thrown) {
  return zebTranslate(SOURCE, __LINE__, [&]() -> I18NString {
    std::string text;
    appendWithNested(text, thrown);
    return text;
  });
}
