#include "platform/ZEBThreadGuard.h"

#include "platform/ZEBThreadInlineGuard.h"

ZEBThreadGuard::ZEBThreadGuard(ZEBThreadCriticalSection& section, ZEBForkGate::Held held)
    : m_scope(ZEBThreadInlineGuard::currentThread(), held), m_section(section) {
  ZEBThreadInlineGuard::enter(m_scope, m_section);
}

ZEBThreadGuard::~ZEBThreadGuard() { m_section.leaveInline(); }

LOG4ZEB_COLD void ZEBThreadInlineGuard::enterAfterFork(const ZEBForkGate::LockScope& scope,
                                                       ZEBThreadCriticalSection& section) {
  section.leave();
  scope.waitForFork();
  section.enter();
}
