#include "appenders/LOGBoundedFIFO.h"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <thread>
#include <utility>

#include "core/LOGFailures.h"
#include "core/LOGLoggingEvent.h"
#include "core/LOGPackedEvent.h"
#include "platform/ZEBForkGate.h"
#include "platform/ZEBForkHandler.h"
#include "platform/ZEBThreadGuard.h"

namespace {

using Clock = std::chrono::steady_clock;
using Lock = std::unique_lock<std::mutex>;

constexpr std::chrono::seconds BETWEEN_REPORTS(10);
constexpr std::chrono::microseconds SHORTEST_BETWEEN_WAKES(100);

// After an event the dispatcher looks for the next one, first without a pause, then in pauses that
// double, and sleeps until it is woken when there was none for so long.
constexpr int LOOKS_WITHOUT_PAUSE = 20;
constexpr unsigned int SHORTEST_PAUSE = 50;   // microseconds
constexpr unsigned int LONGEST_PAUSE = 1000;  // microseconds
constexpr std::chrono::milliseconds AWAKE(30);

/// Counts a thread that sleeps, as long as it does.
class Sleeper {
 public:
  explicit Sleeper(std::atomic<int>& sleepers) : m_sleepers(sleepers) { ++m_sleepers; }
  Sleeper(const Sleeper&) = delete;
  Sleeper& operator=(const Sleeper&) = delete;
  ~Sleeper() { --m_sleepers; }

 private:
  std::atomic<int>& m_sleepers;
};

}  // namespace

LOGBoundedFIFO::Caller::Caller(LOGBoundedFIFO& queue) : m_queue(queue) {
  const Lock lock(m_queue.m_sleeping);
  m_number = m_queue.m_callers++;
  m_forks = m_queue.m_forks;
  m_previous = std::exchange(m_queue.m_newestCaller, this);
  (m_previous == nullptr ? m_queue.m_oldestCaller : m_previous->m_next) = this;
}

LOGBoundedFIFO::Caller::~Caller() {
  const Lock lock(m_queue.m_sleeping);
  if (m_forks == m_queue.m_forks) {
    (m_previous == nullptr ? m_queue.m_oldestCaller : m_previous->m_next) = m_next;
    (m_next == nullptr ? m_queue.m_newestCaller : m_next->m_previous) = m_previous;
    m_queue.m_delivered.notify_all();
  }
}

LOGBoundedFIFO::LOGBoundedFIFO(int capacity) : maxSize(capacity) {
  if (capacity < 1) {
    LOGLogLog::error(
        "LOGBoundedFIFO::LOGBoundedFIFO --- The maxSize argument is not a positive integer.");
  }
}

LOGBoundedFIFO::~LOGBoundedFIFO() = default;

void LOGBoundedFIFO::put(LOGLoggingEvent* event) {
  {
    const ZEBForkGate::LockScope scope;
    const Lock lock(m_writing);
    if (length() < maxSize) {
      m_records.add(event);
      noteQueued();
      event = nullptr;
    }
  }
  if (event != nullptr) {
    LOGLogLog::error("LOGBoundedFIFO:put --- The list of LOGEventLogger is full.");
  }
  wakeDispatcher();
}

LOG4ZEB_HOT bool LOGBoundedFIFO::hasRoom() {
  const auto fits = [this](std::uint64_t left) {
    return static_cast<std::int64_t>(m_queuedCount.load(std::memory_order_relaxed) - left) <
           capacity();
  };
  if (fits(m_leftAtLeast)) {
    return true;  // whatever has left since
  }
  m_leftAtLeast = m_leftCount;
  return fits(m_leftAtLeast);
}

inline void LOGBoundedFIFO::noteQueued() {
  // Sequentially consistent, as m_isAsleep is: either the dispatcher sees the event before it falls
  // asleep, or the writer sees that it sleeps.
  m_queuedCount.store(m_queuedCount.load(std::memory_order_relaxed) + 1);
}

template <typename MayPut>
LOG4ZEB_HOT bool LOGBoundedFIFO::put(const LOGLoggingEvent& event, MayPut mayPut) {
  const std::size_t packed = LOGPackedEvent::sizeOf(event);
  std::unique_ptr<LOGLoggingEvent> whole;
  if (packed == 0) {
    whole = event.copyForQueue();
  }
  {
    const ZEBForkGate::LockScope scope;  // a fork in between would leave half a record
    const Lock lock(m_writing);
    if (isClosed() || !mayPut()) {
      return false;
    }
    if (packed != 0) {
      m_records.addPacked(event, packed);
    } else {
      m_records.add(whole.get());
      whole.release();
    }
    noteQueued();
  }
  return true;
}

LOG4ZEB_HOT bool LOGBoundedFIFO::tryPut(const LOGLoggingEvent& event) {
  const bool isPut = put(event, [this] { return hasRoom(); });
  if (isPut && m_isAsleep) {
    wakeDispatcher();
  }
  return isPut;
}

void LOGBoundedFIFO::putBeyond(const LOGLoggingEvent& event) {
  if (put(event, [] { return true; }) && m_isAsleep) {
    wakeDispatcher();
  }
}

bool LOGBoundedFIFO::putWhenThereIsRoom(const LOGLoggingEvent& event) {
  assert(ZEBForkGate::self().mayWait());
  for (auto nextReport = Clock::now(); !isClosed();) {
    if (Clock::now() >= nextReport) {
      nextReport += BETWEEN_REPORTS;
      logContainingFailures(LOGFailureTexts::same("LOGBoundedFIFO -- a note was lost"),
                            [] { LOGLogLog::debug("Waiting for free space in buffer, "); });
    }
    if (tryPut(event)) {
      return true;
    }
    const ZEBForkGate::BlockedScope blocked;
    Lock lock(m_sleeping);
    const Sleeper sleeper(m_callersAsleep);
    m_arrived.notify_all();  // ends a pause of the dispatcher
    m_freed.wait_until(lock, nextReport, [this] { return length() < capacity() || isClosed(); });
  }
  return false;
}

LOGLoggingEvent* LOGBoundedFIFO::get() {
  auto unpacked = std::make_unique<LOGLoggingEvent>();
  std::unique_ptr<LOGLoggingEvent> whole;
  const LOGLoggingEvent* const oldest = take(*unpacked, whole);
  return oldest == unpacked.get() ? unpacked.release() : whole.release();
}

LOG4ZEB_HOT LOGLoggingEvent* LOGBoundedFIFO::take(LOGLoggingEvent& unpacked,
                                                  std::unique_ptr<LOGLoggingEvent>& whole) {
  LOGLoggingEvent* event = nullptr;
  std::uint64_t number = 0;
  {
    const ZEBThreadGuard guard(getCriticalSection());
    if (!hasEvents()) {
      return nullptr;
    }
    event = m_records.take(unpacked, whole);
    number = m_leftCount.load(std::memory_order_relaxed);
    m_leftCount = number + 1;
  }
  if (m_callersAsleep > 0) {
    wakeCallers();
  }
  return isClosed() || number < m_dropUntil ? nullptr : event;
}

void LOGBoundedFIFO::wakeCallers() {
  const Clock::time_point now = Clock::now();
  const Lock lock(m_sleeping);
  // While events go fast, for several at a time, so that callers and dispatcher take turns less
  // often.
  if (length() > capacity() / 2 && now - m_lastWake < SHORTEST_BETWEEN_WAKES) {
    return;
  }
  m_lastWake = now;
  const int room = capacity() - length();
  if (room >= m_callersAsleep) {
    m_freed.notify_all();
  } else {
    for (int i = 0; i < room; ++i) {
      m_freed.notify_one();
    }
  }
}

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

void LOGBoundedFIFO::resize(int newSize) {
  {
    const ZEBThreadGuard guard(getCriticalSection());
    maxSize = newSize;
  }
  const Lock lock(m_sleeping);
  m_freed.notify_all();
}

void LOGBoundedFIFO::pause(Lock& lock, unsigned int& microseconds) {
  m_arrived.wait_for(lock, std::chrono::microseconds(microseconds));
  microseconds = std::min(2 * microseconds, LONGEST_PAUSE);
}

bool LOGBoundedFIFO::waitForEvent(const std::atomic<int>& interrupted) {
  const auto isOver = [&] { return hasEvents() || interrupted != 0 || isClosed(); };
  for (int i = 0; i < LOOKS_WITHOUT_PAUSE && !isOver(); ++i) {
    std::this_thread::yield();
  }
  if (!isOver()) {
    assert(ZEBForkGate::self().mayWait());
    const ZEBForkGate::BlockedScope blocked;
    Lock lock(m_sleeping);
    const auto end = Clock::now() + AWAKE;
    for (unsigned int microseconds = SHORTEST_PAUSE; !isOver() && Clock::now() < end;) {
      pause(lock, microseconds);
    }
    m_isAsleep = true;
    m_arrived.wait(lock, isOver);
    m_isAsleep = false;
  }
  return hasEvents();
}

void LOGBoundedFIFO::wakeDispatcher() {
  const Lock lock(m_sleeping);
  m_arrived.notify_all();
}

void LOGBoundedFIFO::noteDelivered(int events) {
  m_deliveredCount += static_cast<std::uint64_t>(events);
  if (m_flushesAsleep > 0) {
    const Lock lock(m_sleeping);
    m_delivered.notify_all();
  }
}

bool LOGBoundedFIFO::waitUntilDelivered(int milliseconds) {
  if (milliseconds <= 0) {
    const Lock lock(m_sleeping);
    return m_oldestCaller == nullptr && m_deliveredCount >= m_queuedCount;
  }
  assert(ZEBForkGate::self().mayWait());
  const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
  const ZEBForkGate::BlockedScope blocked;
  Lock lock(m_sleeping);
  const Sleeper sleeper(m_flushesAsleep);
  m_arrived.notify_all();  // ends a pause of the dispatcher
  const std::uint64_t laterCallers = m_callers;
  const auto areCallersThrough = [&] {
    return m_oldestCaller == nullptr || m_oldestCaller->m_number >= laterCallers || isClosed();
  };
  if (!m_delivered.wait_until(lock, end, areCallersThrough)) {
    return false;
  }
  const std::uint64_t target = m_queuedCount;
  m_delivered.wait_until(lock, end, [&] { return m_deliveredCount >= target || isClosed(); });
  return m_deliveredCount >= target;
}

void LOGBoundedFIFO::close() {
  const Lock lock(m_sleeping);
  m_isClosed = true;
  for (std::condition_variable* const condition : {&m_arrived, &m_freed, &m_delivered}) {
    condition->notify_all();
  }
}

void LOGBoundedFIFO::waitForEnd(const std::atomic<bool>& isRunning) {
  assert(ZEBForkGate::self().mayWait());
  const ZEBForkGate::BlockedScope blocked;
  Lock lock(m_sleeping);
  m_delivered.wait(lock, [&] { return !isRunning; });
}

void LOGBoundedFIFO::noteEnd() {
  const Lock lock(m_sleeping);
  m_delivered.notify_all();
}

void LOGBoundedFIFO::renewInChild() noexcept {
  ZEBForkHandler::renew(m_writing);
  ZEBForkHandler::renew(m_sleeping);
  for (std::condition_variable* const condition : {&m_arrived, &m_freed, &m_delivered}) {
    ZEBForkHandler::renew(*condition);
  }
  m_callersAsleep = 0;
  m_flushesAsleep = 0;
  m_isAsleep = false;
  m_oldestCaller = m_newestCaller = nullptr;
  ++m_forks;
}

void LOGBoundedFIFO::forgetParent() noexcept {
  m_dropUntil = m_queuedCount.load();
  m_deliveredCount = m_leftCount.load();
}
