#ifndef PLATFORM_ZEBTHREADRWLOCKABLERESOURCE_H
#define PLATFORM_ZEBTHREADRWLOCKABLERESOURCE_H

#include "platform/LOG4ZEBExport.h"

/// An object that one writer at a time may hold, through a ZEBThreadRWGuard. The lock is not
/// recursive.
class LOG4ZEB_EXPORT ZEBThreadRWLockableResource {
 public:
  ZEBThreadRWLockableResource() = default;
  ZEBThreadRWLockableResource(const ZEBThreadRWLockableResource&) = delete;
  ZEBThreadRWLockableResource& operator=(const ZEBThreadRWLockableResource&) = delete;
  virtual ~ZEBThreadRWLockableResource();

  /// Waits for the lock and throws ZEBSystemError when it cannot be taken.
  virtual void lockForWriting() = 0;
  virtual void unlockAfterWriting() noexcept = 0;
};

#endif
