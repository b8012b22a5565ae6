#ifndef APPENDERS_LOGBOUNDEDFIFO_H
#define APPENDERS_LOGBOUNDEDFIFO_H

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "core/LOGMutex.h"
#include "platform/ZEBList.h"

class LOGLoggingEvent;

/// The queue between the threads that log and an asynchronous appender's dispatcher. It owns the
/// events in it. Its LOGMutex lock is the dispatcher's, held for a whole pass over the queue; none
/// of the operations but resize() takes it. What they share is guarded by a lock of its own, under
/// which nothing else happens.
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
  /// Queues the event whatever the capacity.
  void putBeyondCapacity(LOGLoggingEvent* event);
  /// The oldest event, owned by the caller, or null.
  LOGLoggingEvent* get();
  /// Each returns 1 or 0. wasEmpty() holds just after the first put, wasFull() just after a get
  /// from a full queue.
  int isFull() const;
  int wasEmpty() const;
  int wasFull() const;
  int length() const;
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
  /// Ends all waiting, now and from now on.
  void endWaiting();
  bool isWaitingEnded() const;
  /// Lets a resize() that waits for the dispatcher's lock go first. Called without that lock.
  void yieldToResize();
  bool isResizeWaiting() const;

  /// Notes that an event from get() was delivered.
  void noteDelivered();
  /// Waits until all that is queued now was delivered (true) or the time is up (false).
  bool waitUntilDelivered(unsigned int milliseconds);
  /// Deletes what is queued.
  void drop();

 private:
  bool hasSpaceLocked() const;
  void add(LOGLoggingEvent* event);

  mutable std::mutex m_access;
  std::condition_variable m_arrived;
  std::condition_variable m_freed;
  std::condition_variable m_delivered;

  // All guarded by m_access.
  ZEBList<LOGLoggingEvent*> m_events;  // oldest first
  int numElements = 0;
  int first = 0;  // index of the oldest event, modulo the capacity
  [[maybe_unused]] int nextIndex = 0;
  int maxSize;
  int m_resizesWaiting = 0;
  bool m_waitingEnded = false;
  std::uint64_t m_queuedCount = 0;
  std::uint64_t m_deliveredCount = 0;
};

#endif
