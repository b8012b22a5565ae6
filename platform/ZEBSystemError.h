#ifndef PLATFORM_ZEBSYSTEMERROR_H
#define PLATFORM_ZEBSYSTEMERROR_H

#include <system_error>

#include "platform/ZEBThrowable.h"

/// A call of the operating system failed on a named object, a file as a rule.
class LOG4ZEB_EXPORT ZEBSystemError : public ZEBThrowable {
 public:
  /// `errorCode` is the code of the operating system.
  ZEBSystemError(const I18NString& objectName, int errorCode, const char* source, int line);
  /// The same for a code of the standard library, which may have a numbering of its own.
  ZEBSystemError(const I18NString& objectName, const std::error_code& error, const char* source,
                 int line);
  ~ZEBSystemError() override;
  [[noreturn]] void raise() const override { throw *this; }

  const I18NString& getObjectName() const noexcept { return m_objectName; }
  int getErrorCode() const noexcept { return m_errorCode; }

 private:
  I18NString m_objectName;
  int m_errorCode;
};

#endif
