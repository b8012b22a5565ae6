#include "core/LOGConfiguratorHook.h"

#include <atomic>

namespace {

std::atomic<void (*)()> g_shutdown{nullptr};

}  // namespace

void LOGConfiguratorHook::registerShutdown(void (*shutdown)()) noexcept { g_shutdown = shutdown; }

void LOGConfiguratorHook::shutdown() {
  void (*const registered)() = g_shutdown;
  if (registered != nullptr) {
    registered();
  }
}
