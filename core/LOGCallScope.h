#ifndef CORE_LOGCALLSCOPE_H
#define CORE_LOGCALLSCOPE_H

#include <memory>

class LOGAppenderSkeleton;

/// One call that passes an event on: a request to log, an append that the program makes itself, or
/// the delivery of one event by a dispatcher. Calls nest where what is called logs. An appender
/// that would have to wait leaves that to the outermost call of its thread, which does it when all
/// locks have been left. Lives on the stack.
class LOGCallScope {
 public:
  /// What is left to the end of the outermost call.
  class Waiting {
   public:
    /// `queue` tells those of one queue from others.
    explicit Waiting(const void* queue) : m_queue(queue) {}
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;
    virtual ~Waiting();
    /// Called once, without locks unless the program holds some; mayWait() tells.
    virtual void finish() noexcept = 0;

   private:
    friend class LOGCallScope;
    const void* const m_queue;
    std::unique_ptr<Waiting> m_next;
  };

  LOGCallScope() noexcept
      : m_outer(s_innermost), m_outermost(m_outer ? m_outer->m_outermost : this) {
    s_innermost = this;
  }
  LOGCallScope(const LOGCallScope&) = delete;
  LOGCallScope& operator=(const LOGCallScope&) = delete;
  ~LOGCallScope() {
    s_innermost = m_outer;
    if (m_first != nullptr) {
      finish();
    }
  }

  /// Says that this call is a dispatcher's delivery, which passes the event to `target` now.
  void deliverTo(const LOGAppenderSkeleton* target) noexcept { m_target = target; }

  /// The outermost call of the calling thread, null outside of all.
  static LOGCallScope* outermost() noexcept {
    return s_innermost == nullptr ? nullptr : s_innermost->m_outermost;
  }
  /// Whether the call is a delivery that passes the event to `appender` now.
  bool isDeliveryTo(const LOGAppenderSkeleton& appender) const noexcept {
    return m_target == &appender;
  }
  /// Whether something is left that is of that queue.
  bool hasLeft(const void* queue) const noexcept;
  void leave(std::unique_ptr<Waiting> waiting) noexcept;

  /// Whether the calling thread may wait for other threads: it is in no such call, is no
  /// dispatcher, on whose thread messages are destroyed after their delivery, and holds no lock
  /// under which that is forbidden.
  static bool mayWait();

 private:
  void finish() noexcept;

  inline static thread_local LOGCallScope* s_innermost = nullptr;

  LOGCallScope* const m_outer;
  LOGCallScope* const m_outermost;
  const LOGAppenderSkeleton* m_target = nullptr;
  std::unique_ptr<Waiting> m_first;
  Waiting* m_last = nullptr;
};

#endif
