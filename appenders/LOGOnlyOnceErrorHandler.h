#ifndef APPENDERS_LOGONLYONCEERRORHANDLER_H
#define APPENDERS_LOGONLYONCEERRORHANDLER_H

#include "appenders/LOGErrorHandler.h"

/// Reports the first error through the diagnostics and stays silent from then on, so that a full
/// disk does not fill the diagnostic file too. Nothing makes it report again.
class LOG4ZEB_EXPORT LOGOnlyOnceErrorHandler : public LOGErrorHandler {
 public:
  LOGOnlyOnceErrorHandler();

  using LOGErrorHandler::error;
  void error(const I18NString& message, ZEBThrowable& e, int errorCode,
             LOGLoggingEvent* event) override;
  void error(const I18NString& message, ZEBThrowable& e, int errorCode) override;
  void error(const I18NString& message) override;

  /// The clone of a handler that has reported stays silent.
  LOGObject* clone() const override;

 protected:
  // Kept for those who read them in a debugger; the diagnostics put prefixes of their own.
  I18NString WARN_PREFIX;
  I18NString ERROR_PREFIX;
  int firstTime = 1;  // guarded by the appender's lock
};

#endif
