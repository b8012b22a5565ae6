#ifndef PLATFORM_ZEBTHREADRWGUARD_H
#define PLATFORM_ZEBTHREADRWGUARD_H

#include "platform/ZEBThreadRWLockableResource.h"

/// Holds a reader-writer lock from its construction to its destruction.
class ZEBThreadRWGuard {
 public:
  static constexpr int WRITING = 0;
  static constexpr int READING = 1;

  /// Waits for the lock, `mode` being WRITING or READING; throws ZEBSystemError when it cannot be
  /// taken.
  ZEBThreadRWGuard(ZEBThreadRWLockableResource& resource, int mode)
      : m_resource(resource), m_mode(mode) {
    if (m_mode == WRITING) {
      m_resource.lockForWriting();
    } else {
      m_resource.lockForReading();
    }
  }
  ZEBThreadRWGuard(const ZEBThreadRWGuard&) = delete;
  ZEBThreadRWGuard& operator=(const ZEBThreadRWGuard&) = delete;
  ~ZEBThreadRWGuard() {
    if (m_mode == WRITING) {
      m_resource.unlockAfterWriting();
    } else {
      m_resource.unlockAfterReading();
    }
  }

 private:
  ZEBThreadRWLockableResource& m_resource;
  int m_mode;
};

#endif
