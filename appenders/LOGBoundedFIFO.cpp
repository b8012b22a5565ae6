#include "appenders/LOGBoundedFIFO.h"

#include <algorithm>
#include <chrono>

#include "core/LOGLogLog.h"
#include "core/LOGLoggingEvent.h"
#include "platform/ZEBThreadGuard.h"

namespace {

using Lock = std::unique_lock<std::mutex>;

}  // namespace

LOGBoundedFIFO::LOGBoundedFIFO(int capacity) : maxSize(capacity) {
  if (capacity < 1) {
    LOGLogLog::error(
        "LOGBoundedFIFO::LOGBoundedFIFO --- The maxSize argument is not a positive integer.");
  }
}

LOGBoundedFIFO::~LOGBoundedFIFO() { drop(); }

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

void LOGBoundedFIFO::putBeyondCapacity(LOGLoggingEvent* event) {
  const Lock lock(m_access);
  add(event);
}

void LOGBoundedFIFO::add(LOGLoggingEvent* event) {
  m_events.add(event);
  ++numElements;
  ++m_queuedCount;
  m_arrived.notify_one();
}

LOGLoggingEvent* LOGBoundedFIFO::get() {
  const Lock lock(m_access);
  if (numElements == 0) {
    return nullptr;
  }
  LOGLoggingEvent* const oldest = *m_events.begin();
  m_events.remove(m_events.begin());
  first = first + 1 >= maxSize ? 0 : first + 1;
  --numElements;
  if (hasSpaceLocked()) {
    m_freed.notify_one();
  }
  return oldest;
}

int LOGBoundedFIFO::isFull() const {
  const Lock lock(m_access);
  return numElements >= maxSize ? 1 : 0;
}

int LOGBoundedFIFO::wasEmpty() const { return length() == 1 ? 1 : 0; }

int LOGBoundedFIFO::wasFull() const {
  const Lock lock(m_access);
  return numElements + 1 == maxSize ? 1 : 0;
}

int LOGBoundedFIFO::length() const {
  const Lock lock(m_access);
  return numElements;
}

int LOGBoundedFIFO::getMaxSize() const {
  const Lock lock(m_access);
  return maxSize;
}

void LOGBoundedFIFO::resize(int newSize) {
  {
    const Lock lock(m_access);
    ++m_resizesWaiting;
    m_arrived.notify_all();
  }
  const ZEBThreadGuard guard(getCriticalSection());
  const Lock lock(m_access);
  maxSize = newSize;
  --m_resizesWaiting;
  m_freed.notify_all();
  m_arrived.notify_all();
}

void LOGBoundedFIFO::waitForEvent(unsigned int milliseconds) {
  Lock lock(m_access);
  m_arrived.wait_for(lock, std::chrono::milliseconds(milliseconds),
                     [this] { return numElements > 0 || m_waitingEnded || m_resizesWaiting > 0; });
}

bool LOGBoundedFIFO::hasSpaceLocked() const { return numElements < std::max(maxSize, 1); }

bool LOGBoundedFIFO::hasSpace() const {
  const Lock lock(m_access);
  return hasSpaceLocked();
}

bool LOGBoundedFIFO::waitForSpace(unsigned int milliseconds) {
  Lock lock(m_access);
  m_freed.wait_for(lock, std::chrono::milliseconds(milliseconds),
                   [this] { return hasSpaceLocked() || m_waitingEnded; });
  return hasSpaceLocked() && !m_waitingEnded;
}

void LOGBoundedFIFO::endWaiting() {
  const Lock lock(m_access);
  m_waitingEnded = true;
  m_arrived.notify_all();
  m_freed.notify_all();
  m_delivered.notify_all();
}

bool LOGBoundedFIFO::isWaitingEnded() const {
  const Lock lock(m_access);
  return m_waitingEnded;
}

void LOGBoundedFIFO::yieldToResize() {
  Lock lock(m_access);
  m_arrived.wait(lock, [this] { return m_resizesWaiting == 0 || m_waitingEnded; });
}

bool LOGBoundedFIFO::isResizeWaiting() const {
  const Lock lock(m_access);
  return m_resizesWaiting > 0;
}

void LOGBoundedFIFO::noteDelivered() {
  const Lock lock(m_access);
  ++m_deliveredCount;
  m_delivered.notify_all();
}

bool LOGBoundedFIFO::waitUntilDelivered(unsigned int milliseconds) {
  Lock lock(m_access);
  const std::uint64_t target = m_queuedCount;
  m_delivered.wait_for(lock, std::chrono::milliseconds(milliseconds),
                       [&] { return m_deliveredCount >= target || m_waitingEnded; });
  return m_deliveredCount >= target;
}

void LOGBoundedFIFO::drop() {
  const Lock lock(m_access);
  for (LOGLoggingEvent* const event : m_events) {
    delete event;
  }
  m_events.clear();
  numElements = 0;
}
