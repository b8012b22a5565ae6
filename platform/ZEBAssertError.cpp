#include "platform/ZEBAssertError.h"

ZEBAssertError::ZEBAssertError(const I18NString& description, const char* source, int line)
    : ZEBThrowable(description, source, line) {}

ZEBAssertError::~ZEBAssertError() = default;

void ZEBAssertError::fail(const char* text, const char* source, int line) {
  ZEBAssertError error(text, source, line);
  error.addBackTrace("ZEB_THROW", source, line);
  throw error;
}
