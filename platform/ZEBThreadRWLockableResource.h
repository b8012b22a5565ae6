#ifndef PLATFORM_ZEBTHREADRWLOCKABLERESOURCE_H
#define PLATFORM_ZEBTHREADRWLOCKABLERESOURCE_H

#include "platform/LOG4ZEBExport.h"

/// An object that many readers or one writer may hold, through a ZEBThreadRWGuard. The lock is not
/// recursive.
class LOG4ZEB_EXPORT ZEBThreadRWLockableResource {
 public:
  ZEBThreadRWLockableResource() = default;
  ZEBThreadRWLockableResource(const ZEBThreadRWLockableResource&) = delete;
  ZEBThreadRWLockableResource& operator=(const ZEBThreadRWLockableResource&) = delete;
  virtual ~ZEBThreadRWLockableResource();

  /// Each waits for the lock and throws ZEBSystemError when it cannot be taken.
  virtual void lockForWriting() = 0;
  virtual void lockForReading() = 0;
  virtual void unlockAfterWriting() noexcept = 0;
  virtual void unlockAfterReading() noexcept = 0;
};

#endif
