#ifndef APPENDERS_LOGBOUNDEDFIFO_H
#define APPENDERS_LOGBOUNDEDFIFO_H

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

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
  /// Queues a copy of the event whatever the capacity, in memory from recycle() if there is some.
  /// Calls are serialised by the caller.
  void putCopy(const LOGLoggingEvent& event);
  /// The oldest event, owned by the caller, or null.
  LOGLoggingEvent* get();
  /// Takes an event from get() back, deletes it and keeps its memory for putCopy() until the queue
  /// is destroyed. Null is allowed.
  void recycle(LOGLoggingEvent* event) noexcept;
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
  using Events = std::vector<LOGLoggingEvent*>;
  struct Memory {  // of an event that went
    Memory* next;
  };

  void add(LOGLoggingEvent* event);
  bool hasRoom() const;
  void* takeMemory();
  static void freeAll(Memory* memory) noexcept;

  mutable std::mutex m_access;
  std::condition_variable m_arrived;
  std::condition_variable m_freed;
  std::condition_variable m_delivered;

  // Guarded by m_access.
  Events m_arriving;  // the newer events, oldest first
  bool m_isEventAwaited = false;
  std::uint64_t m_queuedCount = 0;

  mutable std::mutex m_leavingAccess;  // taken before m_access
  // Guarded by m_leavingAccess.
  Events m_leaving;               // the older events, oldest first
  std::size_t m_nextLeaving = 0;  // those before it have left
  int first = 0;                  // index of the oldest event, modulo the capacity
  [[maybe_unused]] int nextIndex = 0;

  // Read without a lock. A change that somebody may wait for is followed by a look at who waits,
  // and who waits says so before a last look at these.
  std::atomic<int> numElements{0};
  std::atomic<int> maxSize;
  std::atomic<int> m_resizesWaiting{0};
  std::atomic<bool> m_waitingEnded{false};
  std::atomic<std::uint64_t> m_deliveredCount{0};
  std::atomic<int> m_spaceWaiters{0};
  std::atomic<int> m_roomWaiters{0};
  std::atomic<int> m_deliveryWaiters{0};

  std::atomic<Memory*> m_returned{nullptr};
  Memory* m_spare = nullptr;  // used by putCopy() only
};

#endif
