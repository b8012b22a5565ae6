#ifndef PLATFORM_ZEBTHREADINLINEGUARD_H
#define PLATFORM_ZEBTHREADINLINEGUARD_H

#include "platform/ZEBForkGate.h"
#include "platform/ZEBThreadCriticalSection.h"

/// A ZEBThreadGuard for the locks that every event takes: no call where the lock is free. Within
/// the library only, because what is recorded of threads is not exported.
class ZEBThreadInlineGuard {
 public:
  LOG4ZEB_INLINE explicit ZEBThreadInlineGuard(ZEBThreadCriticalSection& section)
      : m_scope(currentThread(), ZEBForkGate::LOCKS), m_section(section) {
    enter(m_scope, m_section);
  }
  ZEBThreadInlineGuard(const ZEBThreadInlineGuard&) = delete;
  ZEBThreadInlineGuard& operator=(const ZEBThreadInlineGuard&) = delete;
  LOG4ZEB_INLINE ~ZEBThreadInlineGuard() { m_section.leaveInline(); }

 private:
  friend class ZEBThreadGuard;

  static ZEBForkGate::ThreadRecord& currentThread() {
    ZEBForkGate::ThreadRecord* const known = ZEBForkGate::selfIfKnown();
    return known != nullptr ? *known : ZEBThreadCriticalSection::currentThread();
  }
  LOG4ZEB_INLINE static void enter(const ZEBForkGate::LockScope& scope,
                                   ZEBThreadCriticalSection& section) {
    section.enter(scope.thread());
    // A fork that did not see the scope yet has closed the gate before this.
    if (scope.isOutermost() && ZEBForkGate::isClosed()) {
      enterAfterFork(scope, section);
    }
  }
  static void enterAfterFork(const ZEBForkGate::LockScope& scope,
                             ZEBThreadCriticalSection& section);

  const ZEBForkGate::LockScope m_scope;
  ZEBThreadCriticalSection& m_section;
};

#endif
