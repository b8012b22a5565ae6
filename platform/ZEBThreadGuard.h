#ifndef PLATFORM_ZEBTHREADGUARD_H
#define PLATFORM_ZEBTHREADGUARD_H

#include <utility>

#include "platform/ZEBThreadCriticalSection.h"
#include "platform/ZEBThreadLockableResource.h"

/// Holds a critical section from its construction to its destruction.
class ZEBThreadGuard {
 public:
  /// Says that the calling thread holds the section.
  struct Held {};

  /// Waits for the lock; throws ZEBSystemError or ZEBOutOfMemoryError when it cannot be taken.
  explicit ZEBThreadGuard(ZEBThreadCriticalSection& section) : m_section(section) {
    m_section.enter();
  }
  /// The same for an object that carries its section, such as a ZEBThreadLockableResource.
  template <typename Lockable,
            typename = decltype(std::declval<const Lockable&>().getCriticalSection())>
  explicit ZEBThreadGuard(const Lockable& lockable)
      : ZEBThreadGuard(lockable.getCriticalSection()) {}
  /// Takes over a lock that was taken before.
  ZEBThreadGuard(ZEBThreadCriticalSection& section, Held) noexcept : m_section(section) {}
  ZEBThreadGuard(const ZEBThreadGuard&) = delete;
  ZEBThreadGuard& operator=(const ZEBThreadGuard&) = delete;
  ~ZEBThreadGuard() { m_section.leave(); }

 private:
  ZEBThreadCriticalSection& m_section;
};

#endif
