#ifndef PLATFORM_ZEBFORKGATE_H
#define PLATFORM_ZEBFORKGATE_H

#include <atomic>

/// Lets a program that logs fork at any moment. The child of a fork has a copy of all data and only
/// the thread that forked; what another thread had locked stays locked there. So a fork closes this
/// gate and waits until no other thread holds a lock of the library; a thread that holds none waits
/// at the gate before it takes one. A fork waits half a second at most: a thread may be in code of
/// the application or in a call of the operating system. What such a thread holds is free in the
/// child, see ZEBThreadCriticalSection.
///
/// The gate stays open where the system has no forks. What is recorded of each thread also tells
/// whether it may wait for other threads.
class ZEBForkGate {
 public:
  /// The locks that a thread holds: none, only such under which it may wait for other threads, or
  /// others.
  enum Held : int { NOTHING, OUTER_LOCKS, LOCKS };

  /// What is recorded of a thread that has taken one of the library's locks. Never destroyed; the
  /// record of a thread that has ended goes to a new one.
  class alignas(64) ThreadRecord {  // a cache line, because each thread writes to its own
   public:
    /// Whether the thread is one of a process that this one was forked from.
    bool isLost() const noexcept { return m_isLost.load(std::memory_order_relaxed); }
    /// Whether the thread, which calls this itself, may wait for other threads.
    bool mayWait() const noexcept { return m_held.load(std::memory_order_relaxed) != LOCKS; }

   private:
    friend class ZEBForkGate;

    /// Records what the thread holds, or is about to take, and first waits for a fork to be over.
    void passGate(Held held) noexcept;

    std::atomic<Held> m_held{NOTHING};  // changed by the thread itself
    std::atomic<bool> m_isLost{false};
    std::atomic<bool> m_isUsed{true};  // by a thread that has not ended
    ThreadRecord* m_next = nullptr;
  };

  /// While one lives, its thread is recorded as holding a lock, and forks wait for it. Part of
  /// ZEBThreadGuard; code with another kind of lock makes one before it takes that. Those of a
  /// thread end in the reverse order of their beginnings.
  class LockScope {
   public:
    LockScope() : LockScope(self(), LOCKS) {
      if (isOutermost()) {
        m_thread.passGate(LOCKS);
      }
    }
    /// For a lock that is taken by a sequentially consistent exchange. When the scope is the
    /// outermost of its thread and the gate is closed after that, the lock is left again, and
    /// waitForFork() called.
    LockScope(ThreadRecord& thread, Held held) noexcept
        : m_thread(thread), m_before(thread.m_held.load(std::memory_order_relaxed)) {
      if (m_before < held) {
        m_thread.m_held.store(held, std::memory_order_relaxed);
      }
    }
    LockScope(const LockScope&) = delete;
    LockScope& operator=(const LockScope&) = delete;
    ~LockScope() { m_thread.m_held.store(m_before, std::memory_order_release); }

    const ThreadRecord& thread() const noexcept { return m_thread; }
    bool isOutermost() const noexcept { return m_before == NOTHING; }
    void waitForFork() const noexcept {
      m_thread.passGate(m_thread.m_held.load(std::memory_order_relaxed));
    }

   private:
    ThreadRecord& m_thread;
    const Held m_before;
  };

  /// While one lives, its thread waits for something and changes nothing under the locks that it
  /// holds, so that no fork waits for it. It is made before the lock that is used for waiting is
  /// taken, and that one is made anew in the child.
  class BlockedScope {
   public:
    BlockedScope() : m_thread(self()), m_held(m_thread.m_held.exchange(NOTHING)) {}
    BlockedScope(const BlockedScope&) = delete;
    BlockedScope& operator=(const BlockedScope&) = delete;
    ~BlockedScope() {
      if (m_held != NOTHING) {
        m_thread.passGate(m_held);
      }
    }

   private:
    ThreadRecord& m_thread;
    const Held m_held;
  };

  /// The calling thread's. Throws std::bad_alloc.
  static ThreadRecord& self() { return s_self != nullptr ? *s_self : makeSelf(); }
  /// The same; null when the thread has not taken a lock yet.
  static ThreadRecord* selfIfKnown() noexcept { return s_self; }
  /// Whether a fork waits for threads that hold locks, or is under way. A dispatcher then has the
  /// lines that it holds back written.
  static bool isClosed() noexcept { return s_isClosed.load(); }

 private:
  static ThreadRecord& makeSelf();
  static void leaveThread(void*) noexcept;
  static ThreadRecord* findUnused() noexcept;
  static void beforeFork();
  static void afterForkInParent() noexcept;
  static void afterForkInChild() noexcept;
  static void open() noexcept;

  inline static thread_local ThreadRecord* s_self = nullptr;
  inline static std::atomic<bool> s_isClosed{false};
  static const bool s_watchesForks;
};

#endif
