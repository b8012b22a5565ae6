#ifndef CORE_LOGLOGGERFACTORY_H
#define CORE_LOGLOGGERFACTORY_H

#include "platform/I18NString.h"

class LOGLogger;

/// Makes the logger objects of a repository. An application that wants loggers of a class of its
/// own hands its factory to getLogger(), or has a configuration document load one.
class LOG4ZEB_EXPORT LOGLoggerFactory {
 public:
  virtual ~LOGLoggerFactory();
  /// A new logger of that name; the repository owns it. Called under the repository's lock.
  virtual LOGLogger* makeNewLoggerInstance(const I18NString& name) = 0;
};

#endif
