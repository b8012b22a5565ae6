#ifndef PLATFORM_ZEBTHREADCRITICALSECTION_H
#define PLATFORM_ZEBTHREADCRITICALSECTION_H

#include <atomic>

#include "platform/ZEBThreadMutex.h"

/// A lock that its owner may take again; it is free when it was left as often as it was taken.
/// Constant-initialised, so that an object of static storage works from the first static
/// initialiser to the last destructor of the process.
class LOG4ZEB_EXPORT ZEBThreadCriticalSection {
 public:
  /// The argument is kept for callers that pass one; it has no meaning.
  constexpr explicit ZEBThreadCriticalSection(int = 0) noexcept {}
  ZEBThreadCriticalSection(const ZEBThreadCriticalSection&) = delete;
  ZEBThreadCriticalSection& operator=(const ZEBThreadCriticalSection&) = delete;

  /// Waits for the lock. Throws ZEBSystemError when the operating system refuses.
  void enter();
  /// REQUIRES: the calling thread holds the lock.
  void leave() noexcept;

 private:
  ZEBThreadMutex m_mutex;
  // Only the owner ever reads its own mark here, so no order with other memory is needed.
  std::atomic<const void*> m_owner{nullptr};
  int m_depth = 0;  // used by the owner only
};

#endif
