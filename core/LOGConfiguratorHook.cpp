#include "core/LOGConfiguratorHook.h"

#include <atomic>

namespace {

std::atomic<LOGConfiguratorHook::Shutdown> g_shutdown{nullptr};
std::atomic<LOGConfiguratorHook::RunExclusively> g_runExclusively{nullptr};
std::atomic<LOGConfiguratorHook::ForgetRepository> g_forgetRepository{nullptr};

}  // namespace

void LOGConfiguratorHook::registerConfigurator(Shutdown shutdown, RunExclusively runExclusively,
                                               ForgetRepository forgetRepository) noexcept {
  g_shutdown = shutdown;
  g_forgetRepository = forgetRepository;
  g_runExclusively = runExclusively;
}

void LOGConfiguratorHook::forgetRepository(LOGLoggerRepository* repository) {
  const ForgetRepository registered = g_forgetRepository;
  if (registered != nullptr) {
    registered(repository);
  }
}

void LOGConfiguratorHook::shutdown() {
  const Shutdown registered = g_shutdown;
  if (registered != nullptr) {
    registered();
  }
}

void LOGConfiguratorHook::runExclusively(const std::function<void()>& operation) {
  const RunExclusively registered = g_runExclusively;
  if (registered != nullptr) {
    registered(operation);
  } else {
    operation();
  }
}
