#include "appenders/LOGBoundedFIFO.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <typeinfo>
#include <utility>

#include "core/LOGLogLog.h"
#include "core/LOGLoggingEvent.h"
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

LOGBoundedFIFO::~LOGBoundedFIFO() {
  drop();
  freeAll(m_spare);
  freeAll(m_returned.load());
}

void LOGBoundedFIFO::freeAll(Memory* memory) noexcept {
  while (memory != nullptr) {
    ::operator delete(std::exchange(memory, memory->next));
  }
}

void LOGBoundedFIFO::put(LOGLoggingEvent* event) {
  {
    const Lock lock(m_access);
    if (numElements < maxSize) {
      add(event);
      return;
    }
  }
  LOGLogLog::error("LOGBoundedFIFO:put --- The list of LOGEventLogger is full.");
}

void LOGBoundedFIFO::putCopy(const LOGLoggingEvent& event) {
  void* const memory = takeMemory();
  LOGLoggingEvent* copy = nullptr;
  try {
    copy = new (memory) LOGLoggingEvent(event);
    const Lock lock(m_access);
    add(copy);
  } catch (...) {
    if (copy != nullptr) {
      copy->~LOGLoggingEvent();
    }
    ::operator delete(memory);
    throw;
  }
}

void LOGBoundedFIFO::add(LOGLoggingEvent* event) {
  m_arriving.push_back(event);
  ++numElements;
  ++m_queuedCount;
  if (m_isEventAwaited) {
    m_isEventAwaited = false;
    m_arrived.notify_all();
  }
}

void* LOGBoundedFIFO::takeMemory() {
  if (m_spare == nullptr) {
    m_spare = m_returned.exchange(nullptr, std::memory_order_acquire);
  }
  if (m_spare == nullptr) {
    return ::operator new(sizeof(LOGLoggingEvent));
  }
  return std::exchange(m_spare, m_spare->next);
}

void LOGBoundedFIFO::recycle(LOGLoggingEvent* event) noexcept {
  if (event == nullptr || typeid(*event) != typeid(LOGLoggingEvent)) {
    delete event;
    return;
  }
  event->~LOGLoggingEvent();
  auto* const memory = new (event) Memory{m_returned.load(std::memory_order_relaxed)};
  while (!m_returned.compare_exchange_weak(memory->next, memory, std::memory_order_release,
                                           std::memory_order_relaxed)) {
  }
}

LOGLoggingEvent* LOGBoundedFIFO::get() {
  LOGLoggingEvent* oldest = nullptr;
  {
    const Lock leaving(m_leavingAccess);
    if (m_nextLeaving == m_leaving.size()) {
      m_leaving.clear();
      m_nextLeaving = 0;
      const Lock lock(m_access);
      m_leaving.swap(m_arriving);
    }
    if (m_leaving.empty()) {
      return nullptr;
    }
    oldest = m_leaving[m_nextLeaving++];
    first = first + 1 >= maxSize ? 0 : first + 1;
    --numElements;
  }
  if ((m_spaceWaiters > 0 && hasSpace()) || (m_roomWaiters > 0 && hasRoom())) {
    const Lock lock(m_access);
    m_freed.notify_all();
  }
  return oldest;
}

int LOGBoundedFIFO::isFull() const { return numElements >= maxSize ? 1 : 0; }

int LOGBoundedFIFO::wasEmpty() const { return length() == 1 ? 1 : 0; }

int LOGBoundedFIFO::wasFull() const { return numElements + 1 == maxSize ? 1 : 0; }

int LOGBoundedFIFO::length() const { return numElements; }

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
  }
  const Lock lock(m_access);
  m_freed.notify_all();
  m_arrived.notify_all();
}

void LOGBoundedFIFO::waitForEvent(unsigned int milliseconds) {
  Lock lock(m_access);
  m_isEventAwaited = true;
  m_arrived.wait_for(lock, std::chrono::milliseconds(milliseconds),
                     [this] { return numElements > 0 || m_waitingEnded || m_resizesWaiting > 0; });
  m_isEventAwaited = false;
}

bool LOGBoundedFIFO::hasSpace() const { return numElements < std::max<int>(maxSize, 1); }

bool LOGBoundedFIFO::hasRoom() const { return numElements <= maxSize / 2; }

void LOGBoundedFIFO::waitForRoom(unsigned int milliseconds) {
  Lock lock(m_access);
  const Waiter waiter(m_roomWaiters);
  m_freed.wait_for(lock, std::chrono::milliseconds(milliseconds),
                   [this] { return hasRoom() || m_waitingEnded; });
}

bool LOGBoundedFIFO::waitForSpace(unsigned int milliseconds) {
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
  Lock lock(m_access);
  const Waiter waiter(m_deliveryWaiters);
  const std::uint64_t target = m_queuedCount;
  m_delivered.wait_for(lock, std::chrono::milliseconds(milliseconds),
                       [&] { return m_deliveredCount >= target || m_waitingEnded; });
  return m_deliveredCount >= target;
}

void LOGBoundedFIFO::drop() {
  // Without memory, too: a dispatcher ends only when nothing is queued.
  Events left;
  Events arrived;
  std::size_t next = 0;
  {
    const Lock leaving(m_leavingAccess);
    const Lock lock(m_access);
    left.swap(m_leaving);
    arrived.swap(m_arriving);
    next = std::exchange(m_nextLeaving, 0);
    numElements = 0;
  }
  for (; next < left.size(); ++next) {
    delete left[next];
  }
  for (LOGLoggingEvent* const event : arrived) {
    delete event;
  }
}
