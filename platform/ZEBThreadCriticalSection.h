#ifndef PLATFORM_ZEBTHREADCRITICALSECTION_H
#define PLATFORM_ZEBTHREADCRITICALSECTION_H

#include <atomic>
#include <cstdint>

#include "platform/LOG4ZEBExport.h"
#include "platform/ZEBForkGate.h"

/// A lock that its owner may take again; it is free when it was left as often as it was taken.
/// Constant-initialised, so that an object of static storage works from the first static
/// initialiser to the last destructor of the process. Nothing orders those who wait. In the child
/// of a fork it is free unless the thread that forked holds it.
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
  void enter();
  /// Takes the lock unless another thread holds it or a fork is under way. Returns whether it did.
  bool tryEnter();
  /// REQUIRES: the calling thread holds the lock.
  void leave() noexcept;
  /// Whether another thread holds the lock now.
  bool isHeldElsewhere() const noexcept;
  bool isHeldHere() const noexcept;
  /// Whether the lock was held when this process was forked, and not taken since.
  bool isLeftByFork() const noexcept;

 private:
  using Mark = std::uintptr_t;

  void waitFor(Mark self);
  void sleepUntilTaken(Mark self);
  void noteTaken(bool hasWaited = true) noexcept;
  void noteTakenFromLostThread() noexcept;
  void noteLeft() noexcept;
  void wakeWaiting() const noexcept;

  // The holder's visitor of the fork gate as a number, with the lowest bit set when others may
  // wait; 0 while the lock is free. Taking a free lock is one atomic exchange, and so is leaving it
  // while nobody waits.
  std::atomic<Mark> m_state{0};
  int m_depth = 0;  // used by the holder only
};

#endif
