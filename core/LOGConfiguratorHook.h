#ifndef CORE_LOGCONFIGURATORHOOK_H
#define CORE_LOGCONFIGURATORHOOK_H

/// Lets the hierarchy end the configurator, which is built on top of it: the configurator registers
/// how it is shut down, and the hierarchy's shutdown calls that.
class LOGConfiguratorHook {
 public:
  static void registerShutdown(void (*shutdown)()) noexcept;
  /// Calls what was registered, if anything.
  static void shutdown();
};

#endif
