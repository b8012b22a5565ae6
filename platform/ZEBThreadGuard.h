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
  explicit ZEBThreadGuard(ZEBThreadCriticalSection& section)
      : ZEBThreadGuard(section, ZEBForkGate::LOCKS) {}
  /// The same for an object that carries its section, such as a ZEBThreadLockableResource.
  template <typename Lockable,
            typename = decltype(std::declval<const Lockable&>().getCriticalSection())>
  explicit ZEBThreadGuard(const Lockable& lockable)
      : ZEBThreadGuard(lockable.getCriticalSection()) {}
  ZEBThreadGuard(const ZEBThreadGuard&) = delete;
  ZEBThreadGuard& operator=(const ZEBThreadGuard&) = delete;
  ~ZEBThreadGuard();

 protected:
  ZEBThreadGuard(ZEBThreadCriticalSection& section, ZEBForkGate::Held held);

 private:
  const ZEBForkGate::LockScope m_scope;
  ZEBThreadCriticalSection& m_section;
};

#endif
