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
/// events in it. Its LOGMutex lock is for who takes events out; threads that put events in have a
/// lock of their own, which the taker never takes, and a third one is for those who sleep. Nothing
/// but memory and the diagnostics is used under any of them.
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
  /// Each returns 1 or 0. A queue that was shrunk is full until enough has gone. wasEmpty() holds
  /// just after the first put, wasFull() just after a get from a full queue.
  int isFull() const { return length() >= maxSize ? 1 : 0; }
  int wasEmpty() const { return length() == 1 ? 1 : 0; }
  int wasFull() const { return length() + 1 == maxSize ? 1 : 0; }
  int length() const;
  int getMaxSize() const { return maxSize; }
  int minimum(int a, int b) const { return a < b ? a : b; }
  /// Changes the capacity; queued events stay, even beyond it.
  void resize(int newSize);

  // For the threads that log.
  /// A thread that has found no room and is going to put an event in later. A flush waits for those
  /// that were there when it began.
  class Caller {
   public:
    explicit Caller(LOGBoundedFIFO& queue);
    Caller(const Caller&) = delete;
    Caller& operator=(const Caller&) = delete;
    ~Caller();

   private:
    friend class LOGBoundedFIFO;
    LOGBoundedFIFO& m_queue;
    std::uint64_t m_number;
    unsigned m_forks;
    Caller* m_previous = nullptr;
    Caller* m_next = nullptr;
  };
  /// Queues a copy of the event if there is room and the queue is not closed. Returns whether it
  /// did.
  bool tryPut(const LOGLoggingEvent& event);
  /// The same whatever the capacity.
  void putBeyond(const LOGLoggingEvent& event);
  /// The same when there is room, for which it waits. Says so in the diagnostics, at first and
  /// every ten seconds. Returns false when the queue is closed. REQUIRES: the thread may wait.
  bool putWhenThereIsRoom(const LOGLoggingEvent& event);

  // For a dispatcher.
  /// Waits until there is an event (true), or until there is none and `interrupted` is not 0 or the
  /// queue was closed (false). For some time after the last event it looks for the next one by
  /// itself; a thread that puts one in wakes it only later.
  bool waitForEvent(const std::atomic<int>& interrupted);
  bool hasEvents() const noexcept { return m_queuedCount != m_leftCount; }
  /// Takes the first event out, as LOGEventRecords::take does. From now on it counts as being
  /// delivered. Null where there is none, or one that is not to be delivered because the queue was
  /// closed or is that of a forked process.
  LOGLoggingEvent* take(LOGLoggingEvent& unpacked, std::unique_ptr<LOGLoggingEvent>& whole);
  /// Notes that so many calls of take() have led to the end.
  void noteDelivered(int events);
  /// Ends the dispatcher's wait.
  void wakeDispatcher();

  /// Waits until all that is queued now, and what threads wait to queue now, was delivered (true),
  /// or until the time is up (false). REQUIRES: the thread may wait, or 0 milliseconds.
  bool waitUntilDelivered(int milliseconds);
  /// Takes nothing more, lets threads go that wait for room, and has what is queued dropped.
  void close();
  bool isClosed() const noexcept { return m_isClosed.load(std::memory_order_acquire); }
  /// Waits until `isRunning` is false, which noteEnd() tells. REQUIRES: the thread may wait.
  void waitForEnd(const std::atomic<bool>& isRunning);
  void noteEnd();

  /// Makes the queue usable in the child of a fork, where nobody waits at it.
  void renewInChild() noexcept;
  /// Has what is queued dropped, which is the parent's.
  void forgetParent() noexcept;

 private:
  int capacity() const { return maxSize > 1 ? maxSize.load() : 1; }
  bool hasRoom();
  template <typename MayPut>
  bool put(const LOGLoggingEvent& event, MayPut mayPut);
  void noteQueued();
  void wakeCallers();
  void pause(std::unique_lock<std::mutex>& lock, unsigned int& microseconds);

  std::atomic<int> maxSize;
  std::atomic<bool> m_isClosed{false};
  std::atomic<std::uint64_t> m_dropUntil{0};  // events before that number are dropped

  // Those who sleep. A change that they may wait for is followed by a look at their numbers, and
  // they are counted before a last look at what they wait for, so that no wake-up is missed.
  std::mutex m_sleeping;
  std::condition_variable m_arrived;
  std::condition_variable m_freed;
  std::condition_variable m_delivered;
  std::atomic<bool> m_isAsleep{false};  // the dispatcher, until it is woken
  std::atomic<int> m_callersAsleep{0};
  std::atomic<int> m_flushesAsleep{0};
  Caller* m_oldestCaller = nullptr;  // guarded by m_sleeping, like the next two
  Caller* m_newestCaller = nullptr;
  std::uint64_t m_callers = 0;  // so many there have been
  unsigned m_forks = 0;         // callers of another process count as none
  std::chrono::steady_clock::time_point m_lastWake;

  LOGEventRecords m_records;
  // The writers' side.
  alignas(64) std::mutex m_writing;
  std::atomic<std::uint64_t> m_queuedCount{0};  // changed under m_writing
  std::uint64_t m_leftAtLeast = 0;              // m_leftCount, looked at last; guarded by m_writing
  // The dispatcher's side.
  alignas(64) std::atomic<std::uint64_t> m_leftCount{0};
  std::atomic<std::uint64_t> m_deliveredCount{0};
};

#endif
