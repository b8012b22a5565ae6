#include "platform/ZEBStdExceptionError.h"

ZEBStdExceptionError::ZEBStdExceptionError(const std::exception& wrapped, const char* source,
                                           int line)
    : ZEBThrowable(wrapped.what(), source, line) {}

ZEBStdExceptionError::~ZEBStdExceptionError() = default;
