#ifndef PLATFORM_ZEBFORKGATE_H
#define PLATFORM_ZEBFORKGATE_H

#include <atomic>

/// Lets a program that logs fork at any moment. The child of a fork has a copy of all data and only
/// the thread that forked; what another thread held, it never leaves there. A fork therefore closes
/// this gate, at which threads that hold none of the library's locks wait, until those that hold
/// some have left them. It does not wait for ever: a thread may be in code of the application or in
/// a call of the operating system, where it changes nothing of the library's. What such a thread
/// holds is free in the child.
///
/// Where the system has no forks the gate is always open. What it knows of each thread also tells
/// whether the thread may wait for others.
class ZEBForkGate {
 public:
  /// A thread that has held one of the library's locks. Never destroyed; a thread that ends leaves
  /// its own to another one.
  class alignas(64) Visitor {  // a cache line, because each thread writes to its own all the time
   public:
    /// Called before a lock is taken and after it was left. Where the lock is not taken by an
    /// atomic exchange, std::memory_order_seq_cst takes its part.
    void comeIn(std::memory_order order = std::memory_order_relaxed) noexcept {
      m_locks.store(m_locks.load(std::memory_order_relaxed) + 1, order);
    }
    void goOut() noexcept {
      m_locks.store(m_locks.load(std::memory_order_relaxed) - 1, std::memory_order_release);
    }
    /// Whether the thread is one of a process that this one was forked from.
    bool isGone() const noexcept { return m_isGone.load(std::memory_order_relaxed); }

    /// Called by the thread itself when it has taken, and when it leaves, a lock under which it may
    /// wait for other threads.
    void outerLockTaken() noexcept { ++m_outerLocks; }
    void outerLockLeft() noexcept { --m_outerLocks; }
    /// Whether the thread, which calls this itself, holds no lock but such ones.
    bool mayWait() const noexcept {
      return m_locks.load(std::memory_order_relaxed) == m_outerLocks;
    }

   private:
    friend class ZEBForkGate;
    std::atomic<int> m_locks{0};  // changed by the thread itself
    std::atomic<bool> m_isGone{false};
    std::atomic<bool> m_isUsed{true};  // by a thread that has not ended
    int m_outerLocks = 0;
    Visitor* m_next = nullptr;
  };

  /// Counts as a lock of the library, for code that uses another kind of lock.
  class Stay {
   public:
    Stay();
    Stay(const Stay&) = delete;
    Stay& operator=(const Stay&) = delete;
    ~Stay() { m_visitor.goOut(); }

   private:
    Visitor& m_visitor;
  };

  /// While one lives, its thread waits for something and changes nothing under the locks that it
  /// holds, so that no fork need wait for it. It is made before the lock that is used for waiting
  /// is taken, and that one's data are renewed in the child.
  class Rest {
   public:
    Rest();
    Rest(const Rest&) = delete;
    Rest& operator=(const Rest&) = delete;
    ~Rest();

   private:
    Visitor& m_visitor;
    const int m_locks;
  };

  /// The calling thread, which `cache`, a variable of the thread, keeps until the thread ends.
  /// Throws std::bad_alloc.
  static Visitor& join(Visitor*& cache);
  static Visitor& self();
  /// Whether a thread that has come in to take its first lock must leave it again, and wait.
  static bool turnsAway(const Visitor& visitor) noexcept {
    return s_isClosed.load() && mustWait(visitor);
  }
  static void waitUntilOpen();
  /// Whether a fork waits for those inside, or is under way. Who holds a lock for long without need
  /// to looks at this now and then, and rests.
  static bool isClosed() noexcept { return s_isClosed.load(); }
  /// Changes in the child of a fork, unless the thread that forked held locks itself: what is left
  /// from before is of threads that do not exist.
  static unsigned epoch() noexcept { return s_epoch.load(std::memory_order_relaxed); }

  /// Has the operating system call the following on each thread that forks, where it has forks.
  static bool watchForks() noexcept;
  static void beforeFork();
  static void afterForkInParent() noexcept;
  static void afterForkInChild() noexcept;

 private:
  static Visitor& enterThread();
  static void leaveThread(void*) noexcept;
  static Visitor* findUnused() noexcept;
  static bool mustWait(const Visitor& visitor) noexcept;
  static void waitUntilAllRest(const Visitor& forking);
  static void open() noexcept;

  static std::atomic<bool> s_isClosed;
  static std::atomic<unsigned> s_epoch;
};

#endif
