#ifndef CORE_LOGMUTEX_H
#define CORE_LOGMUTEX_H

#include "platform/ZEBThreadCriticalSection.h"

/// Base of the classes that carry their own recursive lock, which is taken with a ZEBThreadGuard on
/// getCriticalSection(). A copy has a lock of its own.
class LOG4ZEB_EXPORT LOGMutex {
 public:
  LOGMutex() = default;
  LOGMutex(const LOGMutex&) {}
  LOGMutex& operator=(const LOGMutex&) { return *this; }
  virtual ~LOGMutex();

  ZEBThreadCriticalSection& getCriticalSection() const noexcept { return m_criticalSection; }

 private:
  mutable ZEBThreadCriticalSection m_criticalSection{0};
};

#endif
