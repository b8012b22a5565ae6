#ifndef CORE_LOGCALLSCOPE_H
#define CORE_LOGCALLSCOPE_H

#include <forward_list>
#include <functional>
#include <utility>

#include "platform/ZEBForkGate.h"

class LOGAppenderSkeleton;
class LOGDispatcher;

/// One call that passes an event on: a request to log, an append that the program makes itself, or
/// the delivery of one event by a dispatcher. Calls nest where what is called logs. What has to
/// wait is left to the end of the thread's outermost call, which holds no lock any more. Lives on
/// the stack.
class LOGCallScope {
 public:
  LOGCallScope() noexcept {
    if (s_outermost == nullptr) {
      s_outermost = this;
    }
  }
  /// A delivery by that dispatcher.
  explicit LOGCallScope(const LOGDispatcher& dispatcher) noexcept : LOGCallScope() {
    m_dispatcher = &dispatcher;
  }
  LOGCallScope(const LOGCallScope&) = delete;
  LOGCallScope& operator=(const LOGCallScope&) = delete;
  ~LOGCallScope() {
    if (s_outermost == this) {
      s_outermost = nullptr;
      finish();
    }
  }

  /// The outermost call of the calling thread, null outside of all.
  static LOGCallScope* outermost() noexcept { return s_outermost; }
  /// The dispatcher whose delivery this is, or null.
  const LOGDispatcher* dispatcher() const noexcept { return m_dispatcher; }
  /// Notes that the delivery passes the event to `target` now.
  void deliverTo(const LOGAppenderSkeleton* target) noexcept { m_target = target; }
  bool isDeliveryTo(const LOGAppenderSkeleton& appender) const noexcept {
    return m_target == &appender;
  }
  /// Leaves an operation, which does not throw, to the end of this call. Throws std::bad_alloc.
  void atEnd(std::function<void()> operation) { m_atEnd.push_front(std::move(operation)); }

  /// Whether the calling thread may wait for other threads: it is in no such call and holds no lock
  /// under which that is forbidden.
  static bool mayWait() { return s_outermost == nullptr && ZEBForkGate::self().mayWait(); }

 private:
  void finish() const noexcept {
    for (const std::function<void()>& operation : m_atEnd) {
      operation();
    }
  }

  inline static thread_local LOGCallScope* s_outermost = nullptr;

  const LOGDispatcher* m_dispatcher = nullptr;
  const LOGAppenderSkeleton* m_target = nullptr;
  std::forward_list<std::function<void()>> m_atEnd;
};

#endif
