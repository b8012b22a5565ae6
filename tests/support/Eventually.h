#ifndef TESTS_SUPPORT_EVENTUALLY_H
#define TESTS_SUPPORT_EVENTUALLY_H

#include <chrono>
#include <thread>

/// Waits until the condition holds, which another thread brings about; false when it never does.
template <typename Condition>
bool eventually(Condition condition, std::chrono::seconds patience = std::chrono::seconds(20)) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

#endif
