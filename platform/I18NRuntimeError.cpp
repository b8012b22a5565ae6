#include "platform/I18NRuntimeError.h"

I18NRuntimeError::I18NRuntimeError(const I18NString& description, const char* source, int line)
    : ZEBThrowable(description, source, line) {}

I18NRuntimeError::~I18NRuntimeError() = default;
