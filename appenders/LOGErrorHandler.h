#ifndef APPENDERS_LOGERRORHANDLER_H
#define APPENDERS_LOGERRORHANDLER_H

#include "core/LOGObject.h"
#include "core/LOGOptionHandler.h"
#include "platform/ZEBThrowable.h"

class LOGAppenderSkeleton;
class LOGLogger;
class LOGLoggingEvent;

/// What an appender tells of its failures, so that they never reach the program that logs. This
/// base hears everything and does nothing. An appender owns its handler and calls it under its own
/// lock. The error codes are informational.
class LOG4ZEB_EXPORT LOGErrorHandler : public LOGOptionHandler, public LOGObject {
 public:
  LOGErrorHandler();
  LOGErrorHandler(const LOGErrorHandler& other);
  LOGErrorHandler& operator=(const LOGErrorHandler& other);
  ~LOGErrorHandler() override;

  void activateOptions() override {}
  virtual void setLogger(LOGLogger*) {}
  virtual void error(const I18NString& message, ZEBThrowable& e, int errorCode,
                     LOGLoggingEvent* event);
  virtual void error(const I18NString& message, ZEBThrowable& e, int errorCode);
  virtual void error(const I18NString& message);
  virtual void setAppender(LOGAppenderSkeleton*) {}
  virtual void setBackupAppender(LOGAppenderSkeleton*) {}

  LOGObject* clone() const override;
};

#endif
