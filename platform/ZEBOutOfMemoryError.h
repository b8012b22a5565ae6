#ifndef PLATFORM_ZEBOUTOFMEMORYERROR_H
#define PLATFORM_ZEBOUTOFMEMORYERROR_H

#include "platform/ZEBThrowable.h"

/// Memory could not be allocated.
class LOG4ZEB_EXPORT ZEBOutOfMemoryError : public ZEBThrowable {
 public:
  ZEBOutOfMemoryError(const char* source, int line);
  ~ZEBOutOfMemoryError() override;
  [[noreturn]] void raise() const override { throw *this; }
};

#endif
