#include "platform/ZEBThreadGuard.h"

LOG4ZEB_HOT ZEBThreadGuard::ZEBThreadGuard(ZEBThreadCriticalSection& section,
                                           ZEBForkGate::Held held)
    : m_scope(ZEBThreadCriticalSection::currentThread(), held), m_section(section) {
  m_section.enter(m_scope.thread());
  // A fork that did not see the scope yet has closed the gate before this.
  if (m_scope.isOutermost() && ZEBForkGate::isClosed()) {
    m_section.leave();
    m_scope.waitForFork();
    m_section.enter();
  }
}

LOG4ZEB_HOT ZEBThreadGuard::~ZEBThreadGuard() { m_section.leave(); }
