#include "core/LOGDiagnosticContext.h"

#include "platform/ZEBTranslate.h"

LOGDiagnosticContext::LOGDiagnosticContext(const I18NString& message,
                                           const LOGDiagnosticContext* parent)
    : LOGObject(message),
      fullMessage(parent == nullptr ? message : parent->fullMessage + " " + message) {
  instance("LOGDiagnosticContext");
}

LOGObject* LOGDiagnosticContext::clone() const {
  return zebTranslate("LOGDiagnosticContext", __LINE__,
                      [this] { return new LOGDiagnosticContext(*this); });
}
