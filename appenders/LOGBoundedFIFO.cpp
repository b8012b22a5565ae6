#include "appenders/LOGBoundedFIFO.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <new>

#include "core/LOGLogLog.h"
#include "core/LOGLoggingEvent.h"
#include "core/LOGPackedEvent.h"
#include "platform/ZEBForkGate.h"
#include "platform/ZEBForkHandler.h"
#include "platform/ZEBThreadGuard.h"

namespace {

using Lock = std::unique_lock<std::mutex>;

/// Says that a thread waits, as long as it does.
class Waiter {
 public:
  explicit Waiter(std::atomic<int>& waiters) : m_waiters(waiters) { ++m_waiters; }
  Waiter(const Waiter&) = delete;
  Waiter& operator=(const Waiter&) = delete;
  ~Waiter() { --m_waiters; }

 private:
  std::atomic<int>& m_waiters;
};

}  // namespace

LOGBoundedFIFO::LOGBoundedFIFO(int capacity) : maxSize(capacity) {
  if (capacity < 1) {
    LOGLogLog::error(
        "LOGBoundedFIFO::LOGBoundedFIFO --- The maxSize argument is not a positive integer.");
  }
}

LOGBoundedFIFO::~LOGBoundedFIFO() = default;

void LOGBoundedFIFO::put(LOGLoggingEvent* event) {
  {
    const Lock lock(m_access);
    if (length() < maxSize) {
      m_arriving.add(event);
      noteArrival();
      return;
    }
  }
  LOGLogLog::error("LOGBoundedFIFO:put --- The list of LOGEventLogger is full.");
}

LOG4ZEB_HOT void LOGBoundedFIFO::putCopy(const LOGLoggingEvent& event) {
  const std::size_t packed = LOGPackedEvent::sizeOf(event);
  // A message of a class of its own is cloned, which is code of the application: not under the
  // lock.
  std::unique_ptr<LOGLoggingEvent> copy;
  if (packed == 0) {
    copy = std::make_unique<LOGLoggingEvent>(event);
  }
  const Lock lock(m_access);
  if (packed != 0) {
    m_arriving.addPacked(event, packed);
  } else {
    m_arriving.add(copy.get());
    copy.release();
  }
  noteArrival();
}

inline void LOGBoundedFIFO::noteArrival() {
  if (!hasSpace()) {
    m_mayExceed = true;
  }
  // Only this side changes the count, so it needs no atomic addition.
  m_queuedCount.store(m_queuedCount.load(std::memory_order_relaxed) + 1, std::memory_order_release);
  if (m_isEventAwaited) {
    m_isEventAwaited = false;
    m_arrived.notify_all();
  }
}

LOGLoggingEvent* LOGBoundedFIFO::get() {
  void* memory = nullptr;
  try {
    return get(memory);
  } catch (...) {
    ::operator delete(memory);
    throw;
  }
}

LOG4ZEB_HOT LOGLoggingEvent* LOGBoundedFIFO::get(void*& memory) {
  LOGLoggingEvent* oldest = nullptr;
  {
    const Lock leaving(m_leavingAccess);
    if (m_leaving.isEmpty()) {
      const Lock lock(m_access);
      m_leaving.swap(m_arriving);
    }
    if (m_leaving.isEmpty()) {
      return nullptr;
    }
    oldest = m_leaving.take(memory);
    first = first + 1 >= maxSize ? 0 : first + 1;
    m_leftCount.store(m_leftCount.load(std::memory_order_relaxed) + 1);
  }
  if ((m_spaceWaiters > 0 && hasSpace()) || (m_roomWaiters > 0 && hasRoom())) {
    const Lock lock(m_access);
    m_freed.notify_all();
  }
  return oldest;
}

int LOGBoundedFIFO::isFull() const { return length() >= maxSize ? 1 : 0; }

int LOGBoundedFIFO::wasEmpty() const { return length() == 1 ? 1 : 0; }

int LOGBoundedFIFO::wasFull() const { return length() + 1 == maxSize ? 1 : 0; }

int LOGBoundedFIFO::length() const {
  std::uint64_t left = m_leftCount;
  for (;;) {
    const std::uint64_t queued = m_queuedCount;
    const std::uint64_t leftNow = m_leftCount;
    if (left == leftNow) {
      return static_cast<int>(queued - left);  // both at one instant
    }
    left = leftNow;
  }
}

bool LOGBoundedFIFO::hasEvents() const {
  const std::uint64_t left = m_leftCount;
  if (left < m_queuedAtLeast.load(std::memory_order_relaxed)) {
    return true;  // unlike after drop(), which may go beyond what was looked at
  }
  const std::uint64_t queued = m_queuedCount;
  m_queuedAtLeast.store(queued, std::memory_order_relaxed);
  return left != queued;
}

int LOGBoundedFIFO::excess() {
  if (!m_mayExceed) {
    return 0;
  }
  const Lock lock(m_access);
  const int excess = std::max(length() - std::max<int>(maxSize, 1), 0);
  m_mayExceed = excess > 0;
  return excess;
}

int LOGBoundedFIFO::getMaxSize() const { return maxSize; }

void LOGBoundedFIFO::resize(int newSize) {
  {
    const Waiter waiter(m_resizesWaiting);
    {
      const Lock lock(m_access);
      m_arrived.notify_all();
    }
    const ZEBThreadGuard guard(getCriticalSection());
    maxSize = newSize;
    m_mayExceed = true;
  }
  const Lock lock(m_access);
  m_freed.notify_all();
  m_arrived.notify_all();
}

void LOGBoundedFIFO::waitForEvent(unsigned int milliseconds) {
  const ZEBForkGate::Rest rest;
  Lock lock(m_access);
  m_isEventAwaited = true;
  m_arrived.wait_for(lock, std::chrono::milliseconds(milliseconds),
                     [this] { return length() > 0 || m_waitingEnded || m_resizesWaiting > 0; });
  m_isEventAwaited = false;
}

bool LOGBoundedFIFO::hasFewerThan(int events) const {
  const auto isFewer = [&](std::uint64_t left) {
    return static_cast<std::int64_t>(m_queuedCount - left) < events;
  };
  if (isFewer(m_leftAtLeast.load(std::memory_order_acquire))) {
    return true;  // whatever has left since
  }
  const std::uint64_t left = m_leftCount;
  m_leftAtLeast.store(left, std::memory_order_release);
  return isFewer(left);
}

bool LOGBoundedFIFO::hasSpace() const { return hasFewerThan(std::max<int>(maxSize, 1)); }

bool LOGBoundedFIFO::hasRoom() const { return hasFewerThan(maxSize / 2 + 1); }

void LOGBoundedFIFO::waitForRoom(unsigned int milliseconds) {
  const ZEBForkGate::Rest rest;
  Lock lock(m_access);
  const Waiter waiter(m_roomWaiters);
  m_freed.wait_for(lock, std::chrono::milliseconds(milliseconds),
                   [this] { return hasRoom() || m_waitingEnded; });
}

bool LOGBoundedFIFO::waitForSpace(unsigned int milliseconds) {
  const ZEBForkGate::Rest rest;
  Lock lock(m_access);
  const Waiter waiter(m_spaceWaiters);
  m_freed.wait_for(lock, std::chrono::milliseconds(milliseconds),
                   [this] { return hasSpace() || m_waitingEnded; });
  return hasSpace() && !m_waitingEnded;
}

void LOGBoundedFIFO::endWaiting() {
  const Lock lock(m_access);
  m_waitingEnded = true;
  m_arrived.notify_all();
  m_freed.notify_all();
  m_delivered.notify_all();
}

bool LOGBoundedFIFO::isWaitingEnded() const { return m_waitingEnded; }

void LOGBoundedFIFO::yieldToResize() {
  if (isResizeWaiting()) {
    Lock lock(m_access);
    m_arrived.wait(lock, [this] { return m_resizesWaiting == 0 || m_waitingEnded; });
  }
}

bool LOGBoundedFIFO::isResizeWaiting() const { return m_resizesWaiting > 0; }

void LOGBoundedFIFO::noteDelivered(int events) {
  m_deliveredCount += static_cast<std::uint64_t>(events);
  if (m_deliveryWaiters > 0) {
    const Lock lock(m_access);
    m_delivered.notify_all();
  }
}

bool LOGBoundedFIFO::waitUntilDelivered(unsigned int milliseconds) {
  const ZEBForkGate::Rest rest;
  Lock lock(m_access);
  const Waiter waiter(m_deliveryWaiters);
  const std::uint64_t target = m_queuedCount;
  m_delivered.wait_for(lock, std::chrono::milliseconds(milliseconds),
                       [&] { return m_deliveredCount >= target || m_waitingEnded; });
  return m_deliveredCount >= target;
}

void LOGBoundedFIFO::drop() {
  // Without memory, too: a dispatcher ends only when nothing is queued. What was is deleted without
  // the locks.
  LOGEventRecords older;
  LOGEventRecords newer;
  const Lock leaving(m_leavingAccess);
  const Lock lock(m_access);
  older.swap(m_leaving);
  newer.swap(m_arriving);
  m_leftCount = m_queuedCount.load();
}

void LOGBoundedFIFO::renewInChild() noexcept {
  ZEBForkHandler::renew(m_access);
  ZEBForkHandler::renew(m_leavingAccess);
  for (std::condition_variable* const condition : {&m_arrived, &m_freed, &m_delivered}) {
    ZEBForkHandler::renew(*condition);
  }
  for (std::atomic<int>* const waiters :
       {&m_resizesWaiting, &m_spaceWaiters, &m_roomWaiters, &m_deliveryWaiters}) {
    *waiters = 0;
  }
  m_isEventAwaited = false;
}

void LOGBoundedFIFO::forgetParent() {
  drop();
  const Lock lock(m_access);
  m_deliveredCount = m_queuedCount.load();
}
