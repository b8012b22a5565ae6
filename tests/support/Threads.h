#ifndef TESTS_SUPPORT_THREADS_H
#define TESTS_SUPPORT_THREADS_H

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <vector>

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

/// Threads that run beside the test, and are joined at its end.
class Threads {
 public:
  Threads() = default;
  /// Runs body(0), body(1), ..., each on a thread of its own.
  template <typename Body>
  Threads(int count, Body body) {
    for (int i = 0; i < count; ++i) {
      add([body, i] { body(i); });
    }
  }
  ~Threads() { join(); }

  void add(std::function<void()> body) { m_threads.emplace_back(std::move(body)); }
  void join() {
    for (std::thread& thread : m_threads) {
      thread.join();
    }
    m_threads.clear();
  }

 private:
  std::vector<std::thread> m_threads;
};

/// Runs operations again and again, each on a thread of its own, until it is stopped or destroyed.
class Repeating {
 public:
  explicit Repeating(const std::vector<std::function<void()>>& operations) {
    for (const auto& operation : operations) {
      m_threads.add([this, operation] {
        while (!m_stops) {
          operation();
        }
      });
    }
  }
  ~Repeating() { stop(); }
  void stop() {
    m_stops = true;
    m_threads.join();
  }

 private:
  std::atomic<bool> m_stops{false};
  Threads m_threads;
};

/// A place where threads wait until the test opens it.
class Gate {
 public:
  void pass() {
    m_isReached = true;
    EXPECT_TRUE(eventually([this] { return m_isOpen.load(); }));
  }
  /// Waits until a thread has come to it.
  bool isReached() const {
    return eventually([this] { return m_isReached.load(); });
  }
  void open() { m_isOpen = true; }

 private:
  std::atomic<bool> m_isReached{false};
  std::atomic<bool> m_isOpen{false};
};

#endif
