#include "appenders/LOGBoundedFIFO.h"

#include <algorithm>
#include <cassert>

#include "core/LOGFailures.h"
#include "core/LOGLoggingEvent.h"
#include "platform/ZEBForkGate.h"
#include "platform/ZEBForkHandler.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBThreadInlineGuard.h"

namespace {

using Lock = std::unique_lock<std::mutex>;

constexpr std::chrono::seconds BETWEEN_REPORTS(10);
constexpr std::chrono::hours FOR_EVER(1'000'000);

// After an event the dispatcher looks for the next one in pauses that double, and sleeps until it
// is woken when there was none for so long.
constexpr std::chrono::microseconds SHORTEST_PAUSE(50);
constexpr std::chrono::microseconds LONGEST_PAUSE(1000);
constexpr std::chrono::milliseconds AWAKE(30);

}  // namespace

LOGBoundedFIFO::LOGBoundedFIFO(int capacity) : maxSize(capacity) {
  if (capacity < 1) {
    LOGLogLog::error(
        "LOGBoundedFIFO::LOGBoundedFIFO --- The maxSize argument is not a positive integer.");
  }
}

LOGBoundedFIFO::~LOGBoundedFIFO() {
  LOGLoggingEvent unpacked;
  while (hasEvents()) {
    std::unique_ptr<LOGLoggingEvent> whole;
    take(unpacked, whole);
  }
}

void LOGBoundedFIFO::put(LOGLoggingEvent* event) {
  {
    const ZEBThreadGuard guard(m_writing);
    if (isFull() == 0) {
      m_records.addWhole(std::unique_ptr<LOGLoggingEvent>(event));
      ++m_queuedCount;
      event = nullptr;
    }
  }
  if (event != nullptr) {
    LOGLogLog::error("LOGBoundedFIFO:put --- The list of LOGEventLogger is full.");
  }
  wakeAll();
}

LOG4ZEB_HOT std::uint64_t LOGBoundedFIFO::add(const LOGLoggingEvent& event) {
  std::uint64_t place = 0;
  {
    const ZEBThreadInlineGuard guard(m_writing);
    if (isClosed()) {
      return 0;
    }
    m_records.add(event);
    place = m_queuedCount.load(std::memory_order_relaxed) + 1;
    // Sequentially consistent, as m_isAsleep is: either the dispatcher sees the event before it
    // falls asleep, or this thread sees that it sleeps.
    m_queuedCount = place;
    const auto most = static_cast<std::uint64_t>(capacity());
    if (place - m_leftAtLeast > most) {
      m_leftAtLeast = m_leftCount;  // which the dispatcher writes to, so it is looked at seldom
    }
    if (place - m_leftAtLeast <= most) {
      place = 0;
    }
  }
  if (m_isAsleep && m_isAsleep.exchange(false)) {
    wakeAll();
  }
  return place;
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
  std::uint64_t place = 0;
  {
    const ZEBThreadInlineGuard guard(getCriticalSection());
    if (!hasEvents()) {
      return nullptr;
    }
    event = m_records.take(unpacked, whole);
    place = m_leftCount.load(std::memory_order_relaxed) + 1;
    m_leftCount = place;
  }
  return isClosed() || place <= m_dropUntil ? nullptr : event;
}

void LOGBoundedFIFO::wakeCallers(int places) {
  const std::uint64_t left = m_leftCount;
  const bool isTime = places == 0 || lengthSince(left) <= capacity() - places ||
                      left - m_leftAtWake >= static_cast<std::uint64_t>(capacity());
  if (m_callersAsleep > 0 && isTime) {
    m_leftAtWake = left;
    wakeAll();
  }
}

void LOGBoundedFIFO::resize(int newSize) {
  {
    const ZEBThreadGuard guard(getCriticalSection());
    maxSize = newSize;
  }
  wakeAll();
}

void LOGBoundedFIFO::wakeAll() {
  const Lock lock(m_sleeping);
  m_arrived.notify_all();
  m_left.notify_all();
}

template <typename Condition>
bool LOGBoundedFIFO::waitUntil(Clock::time_point end, std::atomic<int>& sleepers,
                               Condition isOver) {
  assert(ZEBForkGate::self().mayWait());
  const ZEBForkGate::BlockedScope blocked;
  Lock lock(m_sleeping);
  ++sleepers;
  m_arrived.notify_all();  // ends a pause of the dispatcher
  const bool result = m_left.wait_until(lock, end, isOver);
  --sleepers;
  return result;
}

bool LOGBoundedFIFO::waitForRoom(std::uint64_t place) {
  const auto hasRoom = [&] {
    return place <= m_leftCount + static_cast<std::uint64_t>(capacity()) || place <= m_dropUntil;
  };
  for (bool isOver = hasRoom() || isClosed(); !isOver;) {
    logContainingFailures(LOGFailureTexts::same("LOGBoundedFIFO -- a note was lost"),
                          [] { LOGLogLog::debug("Waiting for free space in buffer, "); });
    isOver = waitUntil(Clock::now() + BETWEEN_REPORTS, m_callersAsleep,
                       [&] { return hasRoom() || isClosed(); });
  }
  return hasRoom();
}

bool LOGBoundedFIFO::flush(int milliseconds) {
  const std::uint64_t target = m_queuedCount;
  const auto isDelivered = [&] { return m_deliveredCount >= target || m_dropUntil >= target; };
  if (milliseconds > 0 && !isDelivered()) {
    waitUntil(Clock::now() + std::chrono::milliseconds(milliseconds), m_flushesAsleep,
              [&] { return isDelivered() || isClosed(); });
  }
  return isDelivered();
}

void LOGBoundedFIFO::waitForEnd(const std::atomic<bool>& isRunning) {
  waitUntil(Clock::now() + FOR_EVER, m_flushesAsleep, [&] { return !isRunning; });
}

void LOGBoundedFIFO::noteDelivered() {
  m_deliveredCount = m_leftCount.load();
  if (m_flushesAsleep > 0) {
    wakeAll();
  }
}

bool LOGBoundedFIFO::waitForEvent(const std::atomic<int>& interrupted) {
  const auto isOver = [&] { return hasEvents() || interrupted != 0 || isClosed(); };
  assert(ZEBForkGate::self().mayWait());
  Lock lock(m_sleeping);
  const auto end = Clock::now() + AWAKE;
  for (auto pause = SHORTEST_PAUSE; !isOver() && Clock::now() < end;
       pause = std::min(2 * pause, LONGEST_PAUSE)) {
    m_arrived.wait_for(lock, pause);
  }
  while (!isOver()) {
    // Each time anew: a thread that was late has set it back for an event that was seen before.
    m_isAsleep = true;
    if (!isOver()) {
      m_arrived.wait(lock);
    }
  }
  m_isAsleep = false;
  return hasEvents();
}

void LOGBoundedFIFO::close() {
  m_isClosed = true;
  wakeAll();
}

void LOGBoundedFIFO::renewInChild() noexcept {
  ZEBForkHandler::renew(m_sleeping);
  ZEBForkHandler::renew(m_arrived);
  ZEBForkHandler::renew(m_left);
  m_callersAsleep = 0;
  m_flushesAsleep = 0;
  m_isAsleep = false;
  m_dropUntil = m_queuedCount.load();
}
