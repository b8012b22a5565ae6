#ifndef PLATFORM_ZEBTHREADOUTERGUARD_H
#define PLATFORM_ZEBTHREADOUTERGUARD_H

#include "platform/ZEBForkGate.h"
#include "platform/ZEBThreadGuard.h"

/// Holds a lock that comes before all others, and under which its thread may therefore wait for
/// other threads: for room in a queue, a thread's end, a delivery. Under any other lock a thread
/// waits for nothing but a further lock.
class ZEBThreadOuterGuard {
 public:
  explicit ZEBThreadOuterGuard(ZEBThreadCriticalSection& section)
      : m_isOutermost(!section.isHeldHere()), m_guard(section) {
    if (m_isOutermost) {
      ZEBForkGate::self().outerLockTaken();
    }
  }
  explicit ZEBThreadOuterGuard(const ZEBThreadLockableResource& resource)
      : ZEBThreadOuterGuard(resource.getCriticalSection()) {}
  ZEBThreadOuterGuard(const ZEBThreadOuterGuard&) = delete;
  ZEBThreadOuterGuard& operator=(const ZEBThreadOuterGuard&) = delete;
  ~ZEBThreadOuterGuard() {
    if (m_isOutermost) {
      ZEBForkGate::self().outerLockLeft();
    }
  }

 private:
  const bool m_isOutermost;
  const ZEBThreadGuard m_guard;
};

#endif
