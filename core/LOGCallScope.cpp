#include "core/LOGCallScope.h"

#include <utility>

#include "appenders/LOGDispatcher.h"
#include "platform/ZEBForkGate.h"

LOGCallScope::Waiting::~Waiting() = default;

bool LOGCallScope::hasLeft(const void* queue) const noexcept {
  for (const Waiting* waiting = m_first.get(); waiting != nullptr;
       waiting = waiting->m_next.get()) {
    if (waiting->m_queue == queue) {
      return true;
    }
  }
  return false;
}

void LOGCallScope::leave(std::unique_ptr<Waiting> waiting) noexcept {
  Waiting* const last = waiting.get();
  (m_last == nullptr ? m_first : m_last->m_next) = std::move(waiting);
  m_last = last;
}

void LOGCallScope::finish() noexcept {
  while (m_first != nullptr) {
    const std::unique_ptr<Waiting> waiting = std::move(m_first);
    m_first = std::move(waiting->m_next);
    waiting->finish();
  }
}

bool LOGCallScope::mayWait() {
  return s_innermost == nullptr && !LOGDispatcher::isAnyCurrentThread() &&
         ZEBForkGate::self().mayWait();
}
