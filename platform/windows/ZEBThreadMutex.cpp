#include "platform/ZEBThreadMutex.h"

#include <windows.h>

static_assert(sizeof(SRWLOCK) == sizeof(void*), "the lock is one pointer, null at first");

namespace {

SRWLOCK* slimLock(void*& lock) { return reinterpret_cast<SRWLOCK*>(&lock); }

}  // namespace

void ZEBThreadMutex::lock() { AcquireSRWLockExclusive(slimLock(m_lock)); }

void ZEBThreadMutex::unlock() noexcept { ReleaseSRWLockExclusive(slimLock(m_lock)); }
