#ifndef CORE_LOGDEFAULTLOGGERFACTORY_H
#define CORE_LOGDEFAULTLOGGERFACTORY_H

#include "core/LOGLoggerFactory.h"

/// Makes plain loggers.
class LOG4ZEB_EXPORT LOGDefaultLoggerFactory : public LOGLoggerFactory {
 public:
  LOGLogger* makeNewLoggerInstance(const I18NString& name) override;
};

#endif
