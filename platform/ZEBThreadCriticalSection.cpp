#include "platform/ZEBThreadCriticalSection.h"

#include <system_error>

#include "platform/ZEBSystemError.h"

namespace {

/// A mark that differs from thread to thread: the address of a thread's own variable.
const void* currentThreadMark() noexcept {
  static thread_local char mark;
  return &mark;
}

}  // namespace

void ZEBThreadCriticalSection::enter() {
  const void* const self = currentThreadMark();
  if (m_owner.load(std::memory_order_relaxed) == self) {
    ++m_depth;
    return;
  }
  try {
    m_mutex.lock();
  } catch (const std::system_error& refused) {
    throw ZEBSystemError("critical section", refused.code().value(),
                         "ZEBThreadCriticalSection::enter", __LINE__);
  }
  m_owner.store(self, std::memory_order_relaxed);
  m_depth = 1;
}

bool ZEBThreadCriticalSection::isHeldElsewhere() const noexcept {
  const void* const owner = m_owner.load(std::memory_order_acquire);
  return owner != nullptr && owner != currentThreadMark();
}

void ZEBThreadCriticalSection::leave() noexcept {
  if (--m_depth == 0) {
    // Released, so that who sees the lock free sees also what was done under it.
    m_owner.store(nullptr, std::memory_order_release);
    m_mutex.unlock();
  }
}
