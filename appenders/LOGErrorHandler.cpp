#include "appenders/LOGErrorHandler.h"

#include "platform/ZEBTranslate.h"

LOGErrorHandler::LOGErrorHandler() { instance("LOGErrorHandler"); }

LOGErrorHandler::LOGErrorHandler(const LOGErrorHandler&) = default;
LOGErrorHandler& LOGErrorHandler::operator=(const LOGErrorHandler&) = default;
LOGErrorHandler::~LOGErrorHandler() = default;

void LOGErrorHandler::error(const I18NString&, ZEBThrowable&, int, LOGLoggingEvent*) {}

void LOGErrorHandler::error(const I18NString&, ZEBThrowable&, int) {}

void LOGErrorHandler::error(const I18NString&) {}

LOGObject* LOGErrorHandler::clone() const {
  return zebTranslate("LOGErrorHandler", __LINE__, [this] { return new LOGErrorHandler(*this); });
}
