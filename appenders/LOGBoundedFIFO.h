#ifndef APPENDERS_LOGBOUNDEDFIFO_H
#define APPENDERS_LOGBOUNDEDFIFO_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>

#include "appenders/LOGEventRecords.h"
#include "core/LOGMutex.h"

class LOGLoggingEvent;

/// The queue between the threads that log and an asynchronous appender's dispatcher. It owns the
/// events in it. add() puts an event in also where the queue is full; the caller then waits until
/// it is within the capacity. put() and get() are for programs that use a queue by itself. Its
/// LOGMutex lock is for who takes events out; threads that put events in have a lock of their own,
/// which the taker never takes, and a third one is for those who sleep. Nothing but memory and the
/// diagnostics is used under any of them.
class LOG4ZEB_EXPORT LOGBoundedFIFO : public LOGMutex {
 public:
  /// A capacity below 1 is reported and kept; for those who wait for room it counts as 1.
  explicit LOGBoundedFIFO(int maxSize);
  LOGBoundedFIFO(const LOGBoundedFIFO&) = delete;
  LOGBoundedFIFO& operator=(const LOGBoundedFIFO&) = delete;
  /// Deletes the events that are still queued.
  ~LOGBoundedFIFO() override;

  /// Queues the event, which may be null, and owns it from now on; on a full queue reports that and
  /// takes nothing.
  void put(LOGLoggingEvent* event);
  /// The oldest event, owned by the caller, or null. Throws std::bad_alloc where there is no memory
  /// for it; it stays in the queue then.
  LOGLoggingEvent* get();
  /// Each returns 1 or 0. wasEmpty() holds just after the first put, wasFull() just after a get
  /// from a full queue. Deliberate: full also with more than its size, after that was made smaller
  /// or is below 1.
  int isFull() const { return length() >= maxSize ? 1 : 0; }
  int wasEmpty() const { return length() == 1 ? 1 : 0; }
  int wasFull() const { return length() + 1 == maxSize ? 1 : 0; }
  int length() const { return lengthSince(m_leftCount); }
  int getMaxSize() const { return maxSize; }
  int minimum(int a, int b) const { return a < b ? a : b; }
  /// Changes the capacity; queued events stay, even beyond it.
  void resize(int newSize);

  // For the threads that log.
  /// Queues a copy of the event, beyond the capacity too, unless the queue is closed. Returns 0
  /// when the caller goes on, else its place, for which it calls waitForRoom() when it may.
  std::uint64_t add(const LOGLoggingEvent& event);
  /// Waits until the event at that place is within the capacity. Says so in the diagnostics, at
  /// first and every ten seconds. Returns false when the queue was closed before. REQUIRES: the
  /// thread may wait.
  bool waitForRoom(std::uint64_t place);
  /// Waits until all that is queued now was delivered (true), or until the time is up or the queue
  /// was closed (false). REQUIRES: the thread may wait, or 0 milliseconds.
  bool flush(int milliseconds);
  /// Takes nothing more, lets threads go that wait for room, and has what is queued dropped.
  void close();
  bool isClosed() const noexcept { return m_isClosed.load(std::memory_order_acquire); }

  // For a dispatcher.
  /// Waits until there is an event (true), or until there is none and `interrupted` is not 0 or the
  /// queue was closed (false). For 30 ms it looks for one by itself; only later it has to be woken.
  bool waitForEvent(const std::atomic<int>& interrupted);
  bool hasEvents() const noexcept { return m_queuedCount != m_leftCount; }
  /// Takes the first event out, as LOGEventRecords::take does. Null where there is none, or one
  /// that is not to be delivered because the queue was closed or is that of a forked process.
  LOGLoggingEvent* take(LOGLoggingEvent& unpacked, std::unique_ptr<LOGLoggingEvent>& whole);
  /// Has callers go on that there is room for since events were taken out, once so many places are
  /// free or as many events have gone as the queue holds. Called with 0 before a delivery that may
  /// take long; while events go fast, callers and the dispatcher take turns less often.
  void wakeCallers(int places);
  /// Notes that what was taken out has been delivered.
  void noteDelivered();
  /// Waits until `isRunning` is false. REQUIRES: the thread may wait.
  void waitForEnd(const std::atomic<bool>& isRunning);
  /// Has all who wait here look again at what they wait for.
  void wakeAll();

  /// Makes the queue usable in the child of a fork: nobody waits at it, and what it holds is
  /// dropped, being the parent's.
  void renewInChild() noexcept;

 private:
  using Clock = std::chrono::steady_clock;

  int capacity() const { return maxSize > 1 ? maxSize.load() : 1; }
  int lengthSince(std::uint64_t left) const { return static_cast<int>(m_queuedCount - left); }
  template <typename Condition>
  bool waitUntil(Clock::time_point end, std::atomic<int>& sleepers, Condition isOver);

  std::atomic<int> maxSize;
  std::atomic<bool> m_isClosed{false};
  std::atomic<std::uint64_t> m_dropUntil{0};  // so many, from the first on, were the parent's

  // Those who sleep. A change that they may wait for is followed by a look at their numbers, and
  // they are counted before a last look at what they wait for, so that no wake-up is missed.
  std::mutex m_sleeping;
  std::condition_variable m_arrived;    // where the dispatcher sleeps
  std::condition_variable m_left;       // where all others sleep
  std::atomic<bool> m_isAsleep{false};  // the dispatcher, until it is woken
  std::atomic<int> m_callersAsleep{0};  // for room
  std::atomic<int> m_flushesAsleep{0};  // until events are delivered, or the dispatcher ends

  LOGEventRecords m_records;
  // The writers' side.
  alignas(64) ZEBThreadCriticalSection m_writing;
  std::atomic<std::uint64_t> m_queuedCount{0};  // changed under m_writing
  std::uint64_t m_leftAtLeast = 0;              // m_leftCount, looked at last; guarded by m_writing
  // The dispatcher's side.
  alignas(64) std::atomic<std::uint64_t> m_leftCount{0};
  std::atomic<std::uint64_t> m_deliveredCount{0};
  std::uint64_t m_leftAtWake = 0;  // m_leftCount, when callers were woken last
};

#endif
