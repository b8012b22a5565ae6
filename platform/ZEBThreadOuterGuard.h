#ifndef PLATFORM_ZEBTHREADOUTERGUARD_H
#define PLATFORM_ZEBTHREADOUTERGUARD_H

#include "platform/ZEBThreadGuard.h"

/// Holds a lock that comes before all others, and under which its thread may therefore wait for
/// other threads: for room in a queue, a thread's end, a delivery. Under any other lock a thread
/// waits for nothing but a further lock.
class ZEBThreadOuterGuard : public ZEBThreadGuard {
 public:
  explicit ZEBThreadOuterGuard(ZEBThreadCriticalSection& section)
      : ZEBThreadGuard(section, ZEBForkGate::OUTER_LOCKS) {}
  explicit ZEBThreadOuterGuard(const ZEBThreadLockableResource& resource)
      : ZEBThreadOuterGuard(resource.getCriticalSection()) {}
};

#endif
