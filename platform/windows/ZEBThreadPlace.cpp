#include "platform/ZEBThreadPlace.h"

#include <windows.h>

// The compiler's own locks and conditions are made of kernel objects, and many times slower.
class ZEBThreadPlace::Handle {
 public:
  SRWLOCK mutex = SRWLOCK_INIT;
  CONDITION_VARIABLE woken = CONDITION_VARIABLE_INIT;
};

ZEBThreadPlace::ZEBThreadPlace() : m_handle(new Handle) {}

void ZEBThreadPlace::lock() { AcquireSRWLockExclusive(&m_handle->mutex); }

void ZEBThreadPlace::unlock() noexcept { ReleaseSRWLockExclusive(&m_handle->mutex); }

void ZEBThreadPlace::sleep() {
  SleepConditionVariableSRW(&m_handle->woken, &m_handle->mutex, INFINITE, 0);
}

void ZEBThreadPlace::wakeAll() noexcept { WakeAllConditionVariable(&m_handle->woken); }
