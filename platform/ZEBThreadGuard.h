#ifndef PLATFORM_ZEBTHREADGUARD_H
#define PLATFORM_ZEBTHREADGUARD_H

#include <utility>

#include "platform/ZEBForkGate.h"
#include "platform/ZEBThreadCriticalSection.h"
#include "platform/ZEBThreadLockableResource.h"

/// Holds a critical section from its construction to its destruction. Forks wait for it. The guards
/// of a thread end in the reverse order of their beginnings.
class LOG4ZEB_EXPORT ZEBThreadGuard {
 public:
  /// Waits for the lock; throws ZEBSystemError or ZEBOutOfMemoryError when it cannot be taken.
  explicit ZEBThreadGuard(ZEBThreadCriticalSection& section);
  /// The same for an object that carries its section, such as a ZEBThreadLockableResource.
  template <typename Lockable,
            typename = decltype(std::declval<const Lockable&>().getCriticalSection())>
  explicit ZEBThreadGuard(const Lockable& lockable)
      : ZEBThreadGuard(lockable.getCriticalSection()) {}
  ZEBThreadGuard(const ZEBThreadGuard&) = delete;
  ZEBThreadGuard& operator=(const ZEBThreadGuard&) = delete;
  LOG4ZEB_INLINE ~ZEBThreadGuard() { m_section.leave(); }

 protected:
  /// Within the library only: what is recorded of threads is not exported.
  LOG4ZEB_INLINE ZEBThreadGuard(ZEBThreadCriticalSection& section, ZEBForkGate::Held held)
      : m_scope(currentThread(), held), m_section(section) {
    m_section.enter(m_scope.thread());
    // A fork that did not see the scope yet has closed the gate before this.
    if (m_scope.isOutermost() && ZEBForkGate::isClosed()) {
      enterAfterFork();
    }
  }

 private:
  static ZEBForkGate::ThreadRecord& currentThread() {
    ZEBForkGate::ThreadRecord* const known = ZEBForkGate::selfIfKnown();
    return known != nullptr ? *known : ZEBThreadCriticalSection::currentThread();
  }
  void enterAfterFork();

  const ZEBForkGate::LockScope m_scope;
  ZEBThreadCriticalSection& m_section;
};

#endif
