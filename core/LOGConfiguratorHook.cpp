#include "core/LOGConfiguratorHook.h"

#include <atomic>

namespace {

std::atomic<LOGConfiguratorHook::Shutdown> g_shutdown{nullptr};
std::atomic<LOGConfiguratorHook::RunExclusively> g_runExclusively{nullptr};

}  // namespace

void LOGConfiguratorHook::registerConfigurator(Shutdown shutdown,
                                               RunExclusively runExclusively) noexcept {
  g_shutdown = shutdown;
  g_runExclusively = runExclusively;
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
