#ifndef CORE_LOGDIAGNOSTICCONTEXT_H
#define CORE_LOGDIAGNOSTICCONTEXT_H

#include "core/LOGObject.h"

/// One entry of a thread's diagnostic stack: its message, and the messages from the bottom of the
/// stack up to it, joined by blanks.
class LOG4ZEB_EXPORT LOGDiagnosticContext : public LOGObject {
 public:
  /// `parent` is the entry below, null at the bottom; it is only read here.
  LOGDiagnosticContext(const I18NString& message, const LOGDiagnosticContext* parent);

  const I18NString& getFullMessage() const noexcept { return fullMessage; }
  LOGObject* clone() const override;

 private:
  I18NString fullMessage;
};

#endif
