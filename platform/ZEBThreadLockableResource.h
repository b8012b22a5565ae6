#ifndef PLATFORM_ZEBTHREADLOCKABLERESOURCE_H
#define PLATFORM_ZEBTHREADLOCKABLERESOURCE_H

#include "platform/ZEBThreadCriticalSection.h"

/// An object that carries its own recursive lock, taken through a ZEBThreadGuard.
class LOG4ZEB_EXPORT ZEBThreadLockableResource {
 public:
  ZEBThreadLockableResource() = default;
  ZEBThreadLockableResource(const ZEBThreadLockableResource&) = delete;
  ZEBThreadLockableResource& operator=(const ZEBThreadLockableResource&) = delete;
  virtual ~ZEBThreadLockableResource();

  ZEBThreadCriticalSection& getCriticalSection() const noexcept { return m_criticalSection; }

 private:
  mutable ZEBThreadCriticalSection m_criticalSection;
};

#endif
