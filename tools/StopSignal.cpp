#include "tools/StopSignal.h"

#include <atomic>
#include <csignal>

#include "platform/ZEBUtTerminal.h"

namespace {

std::atomic<int> g_received{0};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler stores it");

extern "C" void rememberStopSignal(int number) {
  g_received.store(number);
  std::signal(number, SIG_DFL);
}

}  // namespace

void StopSignal::watch() {
  for (const int number : ZEBUtTerminal::stopSignals()) {
    if (std::signal(number, &rememberStopSignal) == SIG_IGN) {
      std::signal(number, SIG_IGN);
    }
  }
}

int StopSignal::received() noexcept { return g_received.load(); }
