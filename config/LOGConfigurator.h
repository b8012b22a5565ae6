#ifndef CONFIG_LOGCONFIGURATOR_H
#define CONFIG_LOGCONFIGURATOR_H

#include "platform/I18NString.h"

class LOGLoggerRepository;

/// Sets up a repository from a configuration document.
class LOG4ZEB_EXPORT LOGConfigurator {
 public:
  virtual ~LOGConfigurator();
  /// Reads the document in the named file. Returns 1 when it was read and applied, else 0.
  virtual int doConfigure(const I18NString& fileName, LOGLoggerRepository* repository) = 0;
};

#endif
