#include "appenders/LOGOnlyOnceErrorHandler.h"

#include "core/LOGFailures.h"
#include "platform/ZEBTranslate.h"

LOGOnlyOnceErrorHandler::LOGOnlyOnceErrorHandler()
    : WARN_PREFIX("log4zeb warning: "), ERROR_PREFIX("log4zeb error: ") {
  instance("LOGOnlyOnceErrorHandler");
}

void LOGOnlyOnceErrorHandler::error(const I18NString& message, ZEBThrowable& e, int,
                                    LOGLoggingEvent*) {
  if (firstTime == 1) {
    logReportSwallowed(message, e);
    firstTime = 0;
  }
}

void LOGOnlyOnceErrorHandler::error(const I18NString& message, ZEBThrowable& e, int errorCode) {
  error(message, e, errorCode, nullptr);
}

void LOGOnlyOnceErrorHandler::error(const I18NString& message) {
  if (firstTime == 1) {
    LOGLogLog::error(message);
    firstTime = 0;
  }
}

LOGObject* LOGOnlyOnceErrorHandler::clone() const {
  return zebTranslate("LOGOnlyOnceErrorHandler", __LINE__,
                      [this] { return new LOGOnlyOnceErrorHandler(*this); });
}
