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
    throw ZEBSystemError("critical section", refused.code(), "ZEBThreadCriticalSection::enter",
                         __LINE__);
  }
  m_owner.store(self, std::memory_order_relaxed);
  m_depth = 1;
}

void ZEBThreadCriticalSection::leave() noexcept {
  if (--m_depth == 0) {
    m_owner.store(nullptr, std::memory_order_relaxed);
    m_mutex.unlock();
  }
}
