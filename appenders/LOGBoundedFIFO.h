#ifndef APPENDERS_LOGBOUNDEDFIFO_H
#define APPENDERS_LOGBOUNDEDFIFO_H

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>

#include "appenders/LOGEventRecords.h"
#include "core/LOGMutex.h"

class LOGLoggingEvent;

/// The queue between the threads that log and an asynchronous appender's dispatcher. It owns the
/// events in it. Its LOGMutex lock is the dispatcher's, held for a whole pass over the queue; none
/// of the operations but resize() takes it. What they share is guarded by locks of its own, under
/// which nothing else happens: one for what comes in and one for what goes out, so that the two
/// sides meet only when all that came in changes sides at once.
class LOG4ZEB_EXPORT LOGBoundedFIFO : public LOGMutex {
 public:
  /// A capacity below 1 is reported and kept; waitForSpace() then treats it as 1.
  explicit LOGBoundedFIFO(int maxSize);
  LOGBoundedFIFO(const LOGBoundedFIFO&) = delete;
  LOGBoundedFIFO& operator=(const LOGBoundedFIFO&) = delete;
  /// Deletes the events that are still queued.
  ~LOGBoundedFIFO() override;

  /// Queues the event and owns it from now on; on a full queue reports that and takes nothing.
  void put(LOGLoggingEvent* event);
  /// Queues a copy of the event whatever the capacity.
  void putCopy(const LOGLoggingEvent& event);
  /// The oldest event, owned by the caller, or null. Throws std::bad_alloc where there is no memory
  /// for it; it stays in the queue then.
  LOGLoggingEvent* get();
  /// The same, made in `memory` if it has to be made; `memory` is of one event from operator new,
  /// or null, and is null when it was used.
  LOGLoggingEvent* get(void*& memory);
  /// Each returns 1 or 0. wasEmpty() holds just after the first put, wasFull() just after a get
  /// from a full queue.
  int isFull() const;
  int wasEmpty() const;
  int wasFull() const;
  int length() const;
  /// Whether length() is not 0. For the dispatcher, which hardly ever has to look at the other side
  /// for the answer.
  bool hasEvents() const;
  /// By how much length() exceeds the capacity, 0 when it does not.
  int excess();
  int getMaxSize() const;
  int minimum(int a, int b) const { return a < b ? a : b; }
  /// Changes the capacity; queued events stay, even beyond it. Takes the dispatcher's lock, which
  /// the dispatcher leaves for it.
  void resize(int newSize);

  /// Waits until an event is queued, endWaiting() or resize() is called, or the time is up.
  void waitForEvent(unsigned int milliseconds);
  /// Waits until there is room for one more event (true), endWaiting() is called (false) or the
  /// time is up (false).
  bool waitForSpace(unsigned int milliseconds);
  bool hasSpace() const;
  /// The same, but it ends when half of the queue is free: for those who need not be woken for
  /// every single event, because nothing waits for them.
  void waitForRoom(unsigned int milliseconds);
  /// Ends all waiting, now and from now on.
  void endWaiting();
  bool isWaitingEnded() const;
  /// Lets a resize() that waits for the dispatcher's lock go first. Called without that lock.
  void yieldToResize();
  bool isResizeWaiting() const;

  /// Notes that so many events from get() were delivered.
  void noteDelivered(int events);
  /// Waits until all that is queued now was delivered (true) or the time is up (false).
  bool waitUntilDelivered(unsigned int milliseconds);
  /// Deletes what is queued.
  void drop();

  /// Makes the queue usable in the child of a fork, where nobody waits at it. What is queued are
  /// the parent's events, until forgetParent() drops them.
  void renewInChild() noexcept;
  void forgetParent();

 private:
  static constexpr std::size_t CACHE_LINE = 64;

  void noteArrival();
  bool hasRoom() const;
  bool hasFewerThan(int events) const;

  // What is read without a lock. A change that somebody may wait for is followed by a look at who
  // waits, and who waits says so before a last look at these. The queue's length is the difference
  // of two counts, one for each side, so that neither side waits for the other's part of the cache.
  std::atomic<int> maxSize;
  std::atomic<int> m_resizesWaiting{0};
  std::atomic<bool> m_waitingEnded{false};
  std::atomic<bool> m_mayExceed{false};  // cleared under m_access
  std::atomic<int> m_spaceWaiters{0};
  std::atomic<int> m_roomWaiters{0};
  std::atomic<int> m_deliveryWaiters{0};
  std::condition_variable m_arrived;
  std::condition_variable m_freed;
  std::condition_variable m_delivered;

  // The side that events come in at.
  alignas(CACHE_LINE) mutable std::mutex m_access;
  std::atomic<std::uint64_t> m_queuedCount{0};          // changed under m_access
  mutable std::atomic<std::uint64_t> m_leftAtLeast{0};  // m_leftCount when it was looked at last
  // Guarded by m_access.
  LOGEventRecords m_arriving;  // the newer events
  bool m_isEventAwaited = false;

  // The side that events go out at.
  alignas(CACHE_LINE) mutable std::mutex m_leavingAccess;  // taken before m_access
  std::atomic<std::uint64_t> m_leftCount{0};               // changed under m_leavingAccess
  mutable std::atomic<std::uint64_t> m_queuedAtLeast{0};   // m_queuedCount, looked at last
  std::atomic<std::uint64_t> m_deliveredCount{0};
  // Guarded by m_leavingAccess.
  LOGEventRecords m_leaving;  // the older events
  int first = 0;              // index of the oldest event, modulo the capacity
  [[maybe_unused]] int nextIndex = 0;
};

#endif
