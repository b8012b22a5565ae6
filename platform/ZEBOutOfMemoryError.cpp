#include "platform/ZEBOutOfMemoryError.h"

ZEBOutOfMemoryError::ZEBOutOfMemoryError(const char* source, int line)
    : ZEBThrowable("out of memory", source, line) {}

ZEBOutOfMemoryError::~ZEBOutOfMemoryError() = default;
