#ifndef PLATFORM_I18NRUNTIMEERROR_H
#define PLATFORM_I18NRUNTIMEERROR_H

#include "platform/ZEBThrowable.h"

/// A text could not be converted: the encoding is not known.
class LOG4ZEB_EXPORT I18NRuntimeError : public ZEBThrowable {
 public:
  I18NRuntimeError(const I18NString& description, const char* source, int line = 0);
  ~I18NRuntimeError() override;
  [[noreturn]] void raise() const override { throw *this; }
};

#endif
