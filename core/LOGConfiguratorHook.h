#ifndef CORE_LOGCONFIGURATORHOOK_H
#define CORE_LOGCONFIGURATORHOOK_H

#include <functional>

class LOGLoggerRepository;

/// Lets the hierarchy work with the configurator, which is built on top of it: the configurator
/// registers how it is shut down and how its runs are kept away, and the hierarchy's shutdown uses
/// both.
class LOGConfiguratorHook {
 public:
  using Shutdown = void (*)();
  using RunExclusively = bool (*)(const std::function<void()>& operation);

  using ForgetRepository = void (*)(LOGLoggerRepository* repository);

  static void registerConfigurator(Shutdown shutdown, RunExclusively runExclusively,
                                   ForgetRepository forgetRepository) noexcept;
  /// Has the configurator take its appenders from a repository that is about to be destroyed.
  static void forgetRepository(LOGLoggerRepository* repository);
  /// Calls what was registered, if anything.
  static void shutdown();
  /// Runs `operation` while no run of the configurator is under way. Reports and does nothing where
  /// one on this thread has called.
  static void runExclusively(const std::function<void()>& operation);
};

#endif
