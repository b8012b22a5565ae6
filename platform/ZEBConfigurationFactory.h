#ifndef PLATFORM_ZEBCONFIGURATIONFACTORY_H
#define PLATFORM_ZEBCONFIGURATIONFACTORY_H

#include "platform/IZEBConfiguration.h"

/// Gives access to the process's IZEBConfiguration.
class LOG4ZEB_EXPORT ZEBConfigurationFactory {
 public:
  /// The configuration in force; never null. By default it resolves every path to itself.
  static const IZEBConfiguration* getInstance() noexcept;
  /// Puts `configuration` in force; it is not owned and must stay until it is replaced. Null brings
  /// the default back.
  static void setInstance(const IZEBConfiguration* configuration) noexcept;
};

#endif
