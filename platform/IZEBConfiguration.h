#ifndef PLATFORM_IZEBCONFIGURATION_H
#define PLATFORM_IZEBCONFIGURATION_H

#include "platform/I18NString.h"

/// What the program that hosts the library may say about its set-up.
class LOG4ZEB_EXPORT IZEBConfiguration {
 public:
  virtual ~IZEBConfiguration();
  /// The path that a file name in the configuration stands for. A file that is opened again, as for
  /// a rollover, keeps its path. Called under an appender's lock, from any thread; what it logs
  /// through the appender that is being opened is refused.
  virtual I18NString resolvePath(const I18NString& name) const = 0;
};

#endif
