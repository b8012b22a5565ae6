#ifndef PLATFORM_ZEBTHREADRWGUARD_H
#define PLATFORM_ZEBTHREADRWGUARD_H

#include "platform/ZEBThreadRWLockableResource.h"

/// Holds the lock of a ZEBThreadRWLockableResource from its construction to its destruction.
class ZEBThreadRWGuard {
 public:
  static constexpr int WRITING = 0;

  /// Waits for the lock, `mode` being WRITING; throws ZEBSystemError when it cannot be taken.
  ZEBThreadRWGuard(ZEBThreadRWLockableResource& resource, int /*mode*/) : m_resource(resource) {
    m_resource.lockForWriting();
  }
  ZEBThreadRWGuard(const ZEBThreadRWGuard&) = delete;
  ZEBThreadRWGuard& operator=(const ZEBThreadRWGuard&) = delete;
  ~ZEBThreadRWGuard() { m_resource.unlockAfterWriting(); }

 private:
  ZEBThreadRWLockableResource& m_resource;
};

#endif
