#ifndef PLATFORM_ZEBSTDEXCEPTIONERROR_H
#define PLATFORM_ZEBSTDEXCEPTIONERROR_H

#include "platform/ZEBThrowable.h"

/// Wraps a standard exception that was caught inside the library; the description is its text.
class LOG4ZEB_EXPORT ZEBStdExceptionError : public ZEBThrowable {
 public:
  ZEBStdExceptionError(const std::exception& wrapped, const char* source, int line);
  ~ZEBStdExceptionError() override;
  [[noreturn]] void raise() const override { throw *this; }
};

#endif
