#ifndef LOGGER_FACTORY_AUDITLOGGERFACTORY_H
#define LOGGER_FACTORY_AUDITLOGGERFACTORY_H

#include "AuditLogger.h"
#include "core/LOGLoggerFactory.h"

/// Makes the loggers for which a document asks with the attribute class.
class AuditLoggerFactory : public LOGLoggerFactory {
 public:
  LOGLogger* makeNewLoggerInstance(const I18NString& name) override {
    return new AuditLogger(name);
  }
};

#endif
