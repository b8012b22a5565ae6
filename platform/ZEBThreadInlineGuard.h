#ifndef PLATFORM_ZEBTHREADINLINEGUARD_H
#define PLATFORM_ZEBTHREADINLINEGUARD_H

#include "platform/ZEBThreadGuard.h"

/// A ZEBThreadGuard for the locks that every event takes: no call where the lock is free.
class ZEBThreadInlineGuard : public ZEBThreadGuard {
 public:
  explicit ZEBThreadInlineGuard(ZEBThreadCriticalSection& section)
      : ZEBThreadGuard(section, ZEBForkGate::LOCKS) {}
  ZEBThreadInlineGuard(const ZEBThreadInlineGuard&) = delete;
  ZEBThreadInlineGuard& operator=(const ZEBThreadInlineGuard&) = delete;
  LOG4ZEB_INLINE ~ZEBThreadInlineGuard() = default;
};

#endif
