#include "platform/ZEBThreadGuard.h"

ZEBThreadGuard::ZEBThreadGuard(ZEBThreadCriticalSection& section)
    : ZEBThreadGuard(section, ZEBForkGate::LOCKS) {}

LOG4ZEB_COLD void ZEBThreadGuard::enterAfterFork() {
  m_section.leave();
  m_scope.waitForFork();
  m_section.enter();
}
