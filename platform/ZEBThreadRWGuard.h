#ifndef PLATFORM_ZEBTHREADRWGUARD_H
#define PLATFORM_ZEBTHREADRWGUARD_H

#include "platform/ZEBForkGate.h"
#include "platform/ZEBThreadRWLockableResource.h"

/// Holds the lock of a ZEBThreadRWLockableResource from its construction to its destruction. Forks
/// wait for it, as for a ZEBThreadGuard.
class LOG4ZEB_EXPORT ZEBThreadRWGuard {
 public:
  static constexpr int WRITING = 0;

  /// Waits for the lock, `mode` being WRITING; throws ZEBSystemError when it cannot be taken.
  ZEBThreadRWGuard(ZEBThreadRWLockableResource& resource, int mode);
  ZEBThreadRWGuard(const ZEBThreadRWGuard&) = delete;
  ZEBThreadRWGuard& operator=(const ZEBThreadRWGuard&) = delete;
  ~ZEBThreadRWGuard();

 private:
  const ZEBForkGate::LockScope m_scope;
  ZEBThreadRWLockableResource& m_resource;
};

#endif
