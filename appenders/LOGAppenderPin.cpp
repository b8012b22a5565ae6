#include "appenders/LOGAppenderPin.h"

#include <cassert>

#include "core/LOGCallScope.h"
#include "platform/ZEBForkHandler.h"
#include "platform/ZEBThreadPlace.h"

namespace {

/// How many threads wait for pins; none in the child of a fork.
std::atomic<int> g_waiters{0};
const ZEBForkHandler FORK_HANDLER(nullptr, [](void*) { g_waiters = 0; });

/// Where they sleep.
ZEBThreadPlace& place() {
  static auto* const place = new ZEBThreadPlace;  // static destructors remove appenders, too
  return *place;
}

/// Made when the library is loaded: a fork beside its making would leave the child waiting for
/// ever.
[[maybe_unused]] const ZEBThreadPlace* const PLACE = &place();

}  // namespace

bool LOGAppenderPin::Record::isOfOtherThread(const ZEBForkGate::ThreadRecord& self) const noexcept {
  const ZEBForkGate::ThreadRecord* const thread = owner.load(std::memory_order_acquire);
  return thread != nullptr && thread != &self && !thread->isLost();
}

std::atomic<LOGAppenderPin::Record*>& LOGAppenderPin::first() {
  // The first ones cost no memory, so that a shutdown needs none.
  constexpr int MADE_IN_ADVANCE = 8;
  static Record records[MADE_IN_ADVANCE];
  static std::atomic<Record*> first = [] {
    for (int i = 1; i < MADE_IN_ADVANCE; ++i) {
      records[i].next = &records[i - 1];
    }
    return &records[MADE_IN_ADVANCE - 1];
  }();
  return first;
}

[[maybe_unused]] const std::atomic<LOGAppenderPin::Record*>& LOGAppenderPin::s_first = first();

LOGAppenderPin::Record& LOGAppenderPin::take() {
  const ZEBForkGate::ThreadRecord* const self = &ZEBForkGate::self();
  for (Record* record = first().load(); record != nullptr; record = record->next) {
    const ZEBForkGate::ThreadRecord* owner = record->owner.load();
    // A thread that a fork has left behind uses nothing any more.
    if ((owner == nullptr || owner->isLost()) &&
        record->owner.compare_exchange_strong(owner, self)) {
      record->appender = nullptr;
      return *record;
    }
  }
  auto* const made = new Record;
  made->owner = self;
  made->next = first().load();
  while (!first().compare_exchange_weak(made->next, made)) {
  }
  return *made;
}

LOGAppenderPin::~LOGAppenderPin() {
  clear();
  m_record.owner.store(nullptr, std::memory_order_release);
}

void LOGAppenderPin::set(const LOGAppenderAttachable& list,
                         const LOGAppenderSkeleton& appender) noexcept {
  clear();
  m_record.uses.store(m_record.uses.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
  m_record.list.store(&list, std::memory_order_relaxed);
  // Whoever removes the appender takes the lock that keeps the list from changing now, and sees it.
  m_record.appender.store(&appender, std::memory_order_release);
}

void LOGAppenderPin::clear() noexcept {
  if (m_record.appender.load(std::memory_order_relaxed) == nullptr) {
    return;
  }
  m_record.appender.store(nullptr);
  if (g_waiters.load() != 0) {
    place().lock();
    place().wakeAll();
    place().unlock();
  }
}

void LOGAppenderPin::awaitOthers(const LOGAppenderAttachable* list,
                                 const LOGAppenderSkeleton* appender) {
  if (!LOGCallScope::mayWait()) {
    return;
  }
  const ZEBForkGate::ThreadRecord& self = ZEBForkGate::self();
  for (const Record* record = first().load(); record != nullptr; record = record->next) {
    const unsigned uses = record->uses.load(std::memory_order_acquire);
    const auto isUsed = [&] {
      const LOGAppenderSkeleton* const pinned = record->appender.load();
      const bool isMeant = appender != nullptr ? pinned == appender
                                               : pinned != nullptr && record->list.load() == list;
      return isMeant && record->uses.load(std::memory_order_relaxed) == uses &&
             record->isOfOtherThread(self);
    };
    if (!isUsed()) {
      continue;
    }
    assert(self.mayWait());
    const ZEBForkGate::BlockedScope blocked;
    place().lock();
    ++g_waiters;
    while (isUsed()) {
      place().sleep();
    }
    --g_waiters;
    place().unlock();
  }
}
