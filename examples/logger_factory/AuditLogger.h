#ifndef LOGGER_FACTORY_AUDITLOGGER_H
#define LOGGER_FACTORY_AUDITLOGGER_H

#include "core/LOGLogger.h"

/// A logger that no document can silence by its level: whatever level it is given, INFO and above
/// are logged.
class AuditLogger : public LOGLogger {
 public:
  explicit AuditLogger(const I18NString& name);
  void setLevel(LOGLevel* level) override;
};

#endif
