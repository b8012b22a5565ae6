#ifndef PLATFORM_ZEBTHREADCRITICALSECTION_H
#define PLATFORM_ZEBTHREADCRITICALSECTION_H

#include <atomic>
#include <cstdint>

#include "platform/LOG4ZEBExport.h"
#include "platform/ZEBForkGate.h"

/// A lock that its owner may take again; it is free when it was left as often as it was taken.
/// Constant-initialised, so that an object of static storage works from the first static
/// initialiser to the last destructor of the process. Nothing orders those who wait. In the child
/// of a fork it is free unless the thread that forked holds it; only a ZEBThreadGuard has a fork
/// wait until what is changed under it is whole.
class LOG4ZEB_EXPORT ZEBThreadCriticalSection {
 public:
  /// The argument is kept for callers that pass one; it has no meaning.
  constexpr explicit ZEBThreadCriticalSection(int = 0) noexcept {}
  ZEBThreadCriticalSection(const ZEBThreadCriticalSection&) = delete;
  ZEBThreadCriticalSection& operator=(const ZEBThreadCriticalSection&) = delete;
#ifdef __SANITIZE_THREAD__
  ~ZEBThreadCriticalSection();
#endif

  /// Waits for the lock. Throws ZEBSystemError when the operating system refuses, and
  /// ZEBOutOfMemoryError, which only the first lock of a thread can meet.
  void enter() { enter(currentThread()); }
  /// Takes the lock unless another thread holds it. Returns whether it did. Throws
  /// ZEBOutOfMemoryError as enter() does.
  bool tryEnter();
  /// REQUIRES: the calling thread holds the lock.
  void leave() noexcept;
  /// Whether another thread holds the lock now.
  bool isHeldElsewhere() const noexcept {
    // Acquired, so that a thread that sees the lock free sees also what was done under it.
    const Owner owner = m_owner.load(std::memory_order_acquire);
    return owner > OTHERS_WAIT && isOfOther(owner);
  }
  bool isHeldHere() const noexcept;

 private:
  friend class ZEBThreadGuard;
  friend class ZEBThreadInlineGuard;
  using Owner = std::uintptr_t;
  static constexpr Owner OTHERS_WAIT = 1;

  /// What is recorded of the calling thread. Throws ZEBOutOfMemoryError.
  static ZEBForkGate::ThreadRecord& currentThread();
  LOG4ZEB_INLINE void enter(const ZEBForkGate::ThreadRecord& thread) {
    const auto self = reinterpret_cast<Owner>(&thread);
    Owner owner = 0;
    if (m_owner.compare_exchange_strong(owner, self, std::memory_order_seq_cst,
                                        std::memory_order_relaxed)) {
      noteTaken();
    } else {
      enterHeld(self, owner);
    }
  }
  static bool isOwner(Owner self, Owner owner) noexcept {
    return (owner | OTHERS_WAIT) == (self | OTHERS_WAIT);
  }
  /// Whether that is no thread, or one lost by a fork.
  static bool isFree(Owner owner) noexcept {
    const auto* const thread =
        reinterpret_cast<const ZEBForkGate::ThreadRecord*>(owner & ~OTHERS_WAIT);
    return thread == nullptr || thread->isLost();
  }
  static bool isOfOther(Owner owner) noexcept;
  LOG4ZEB_INLINE void leaveInline() noexcept {
    if (m_repeats != 0) {
      --m_repeats;
      return;
    }
    noteLeft();
    // From the exchange on, another thread may take the lock and destroy it.
    if ((m_owner.exchange(0, std::memory_order_release) & OTHERS_WAIT) != 0) {
      wakeWaiting();
    }
  }
  void enterHeld(Owner self, Owner owner);
  void waitFor(Owner self);
  void sleepUntilTaken(Owner self);
#ifdef __SANITIZE_THREAD__
  void noteTaken(bool hasWaited = true) noexcept;
  void noteLeft() noexcept;
#else
  void noteTaken(bool = true) noexcept {}
  void noteLeft() noexcept {}
#endif
  void wakeWaiting() const noexcept;

  // The address of the owner's record, with the lowest bit set when others may wait; 0 while the
  // lock is free. Taking a free lock is one atomic exchange, and so is leaving it while nobody
  // waits.
  std::atomic<Owner> m_owner{0};
  int m_repeats = 0;  // how often the owner has taken it again
};

#endif
