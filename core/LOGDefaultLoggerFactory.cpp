#include "core/LOGDefaultLoggerFactory.h"

#include "core/LOGLogger.h"

LOGLogger* LOGDefaultLoggerFactory::makeNewLoggerInstance(const I18NString& name) {
  return new LOGLogger(name);
}
