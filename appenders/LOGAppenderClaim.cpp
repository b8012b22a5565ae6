#include "appenders/LOGAppenderClaim.h"

#include <atomic>

#include "appenders/LOGAppenderSkeleton.h"
#include "platform/ZEBThreadGuard.h"

namespace {

ZEBThreadCriticalSection g_lock;
LOGAppenderClaim* g_first = nullptr;  // guarded by g_lock
std::atomic<int> g_count{0};          // changed under g_lock

}  // namespace

LOGAppenderClaim::LOGAppenderClaim(const LOGAppenderAttachable& list, LOGAppenderSkeleton& appender)
    : m_list(list), m_appender(&appender) {
  const ZEBThreadGuard guard(g_lock);
  m_next = g_first;
  if (m_next != nullptr) {
    m_next->m_previous = this;
  }
  g_first = this;
  ++g_count;
}

LOGAppenderClaim::~LOGAppenderClaim() {
  const ZEBThreadGuard guard(g_lock);
  (m_previous == nullptr ? g_first : m_previous->m_next) = m_next;
  if (m_next != nullptr) {
    m_next->m_previous = m_previous;
  }
  --g_count;
}

bool LOGAppenderClaim::pinUnlessRevoked(LOGAppenderPin& pin) const {
  const ZEBThreadGuard guard(g_lock);
  if (!m_isRevoked) {
    pin.set(m_list, *m_appender);
  }
  return !m_isRevoked;
}

template <typename Condition>
bool LOGAppenderClaim::revokeIf(Condition condition) noexcept {
  if (g_count.load(std::memory_order_acquire) == 0) {
    return false;
  }
  bool isAny = false;
  const ZEBThreadGuard guard(g_lock);
  for (LOGAppenderClaim* claim = g_first; claim != nullptr; claim = claim->m_next) {
    // What was revoked may be gone, and is not looked at.
    if (!claim->m_isRevoked && condition(*claim)) {
      claim->m_isRevoked = true;
      isAny = true;
    }
  }
  return isAny;
}

void LOGAppenderClaim::revoke(const LOGAppenderSkeleton* appender) noexcept {
  revokeIf([&](const LOGAppenderClaim& claim) { return claim.m_appender == appender; });
}

bool LOGAppenderClaim::revokeNamed(const LOGAppenderAttachable& list,
                                   const I18NString& name) noexcept {
  return revokeIf([&](const LOGAppenderClaim& claim) {
    return &claim.m_list == &list && claim.m_appender->getName() == name;
  });
}

void LOGAppenderClaim::revokeAll(const LOGAppenderAttachable& list) noexcept {
  revokeIf([&](const LOGAppenderClaim& claim) { return &claim.m_list == &list; });
}
