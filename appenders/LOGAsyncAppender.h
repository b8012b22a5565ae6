#ifndef APPENDERS_LOGASYNCAPPENDER_H
#define APPENDERS_LOGASYNCAPPENDER_H

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include "appenders/LOGAppenderAttachable.h"
#include "appenders/LOGAppenderAttachableImpl.h"
#include "appenders/LOGAppenderSkeleton.h"
#include "platform/ZEBForkHandler.h"

class LOGBoundedFIFO;
class LOGDispatcher;
struct LOGFailureTexts;

/// Spares the threads that log the time of slow appenders: it queues copies of events, and a thread
/// of its own passes them on to the appenders attached to it. A thread that logs waits while the
/// queue is full. What is queued is lost when the process dies, and when the appender is closed
/// without flush(); the orderly shutdown of the library flushes. In the child of a fork the queue
/// is empty, what was in it being the parent's, and the first event starts a thread there.
///
/// Attached appenders are not owned, and not closed with this one.
class LOG4ZEB_EXPORT LOGAsyncAppender : public LOGAppenderSkeleton, public LOGAppenderAttachable {
 public:
  static constexpr int DEFAULT_BUFFER_SIZE = 128;  // events
  /// How long, in milliseconds, an orderly end waits for each appender's queue.
  static constexpr int LONGEST_FINAL_FLUSH = 2000;
  static const I18NString BUFFER_SIZE_OPTION;
  static const I18NString LOCATION_INFO_OPTION;

  /// Closed, until options are activated.
  LOGAsyncAppender();
  LOGAsyncAppender(const LOGAsyncAppender&) = delete;
  LOGAsyncAppender& operator=(const LOGAsyncAppender&) = delete;
  /// Closes, and waits for the dispatcher's end. REQUIRES: not called by the dispatcher's own
  /// thread, nor under a lock that a delivery takes.
  ~LOGAsyncAppender() override;

  /// Starts the dispatcher thread, unless it runs or the appender was closed for good. Throws
  /// ZEBSystemError when there is no thread to be had.
  void activateOptions() override;
  /// Ends the dispatcher thread and drops what is queued. Threads that wait for space go on, their
  /// events lost. Closed for good: nothing starts it again. Waits for a delivery that is under way,
  /// unless that one waits for the calling thread.
  void close() override;
  int requiresLayout() override;

  /// Waits until what is queued now has been passed on. Returns 1, or 0 when the time, in
  /// milliseconds, is up before.
  int flush(int milliseconds);
  /// Gives every asynchronous appender among these, and among those attached to one of them, up to
  /// that time each: none before those that pass events on to it.
  static void flushReachable(const std::vector<LOGAppenderSkeleton*>& appenders, int milliseconds);
  /// Whether `from` is `to`, or passes events on to it, perhaps through others.
  static bool reaches(LOGAppenderSkeleton* from, const LOGAsyncAppender& to);

  /// The capacity of the queue in events. What is queued beyond a smaller one stays queued. 0 once
  /// closed. Setting throws ZEBAssertError then.
  int getBufferSize() const;
  void setBufferSize(int size);
  /// 1 takes the caller's location on the thread that logs.
  int getLocationInfo() const { return locationInfo; }
  void setLocationInfo(int info) { locationInfo = info; }

  // Each takes the lock of the list of attached appenders. A thread that waits for space holds it.
  // What is removed is also removed from the appenders that this one succeeds, and from its
  // successors. That waits for their deliveries, unless the caller holds a lock of the library, as
  // in a delivery: then it takes effect there with the next one.
  void addAppender(LOGAppenderSkeleton* newAppender) override;
  ZEBListIterator<LOGAppenderSkeleton*> getAllAppenders() override;
  LOGAppenderSkeleton* getAppender(const I18NString& name) override;
  int isAttached(LOGAppenderSkeleton* appender) override;
  void removeAllAppenders() override;
  void removeAppender(const I18NString& name) override;
  void removeAppender(LOGAppenderSkeleton* appender) override;
  LOGAppenderAttachableImpl* getAAI() { return &m_aai; }

  /// Takes the place of `predecessor`, which still passes on what it has queued. REQUIRES: the
  /// other one lives until endSuccession().
  void succeed(LOGAsyncAppender& predecessor);
  /// Ends that for a predecessor that has been closed, and detaches what is attached to it. Where
  /// its thread has not ended, things stay as they are.
  void endSuccession();
  /// Attaches `live` in place of `old`, which a predecessor keeps. REQUIRES: called under the
  /// list's lock.
  void exchangeAppender(LOGAppenderSkeleton* old, LOGAppenderSkeleton* live);

  /// The dispatcher's way to the list's lock, which it gets before the next thread that logs, so
  /// that it always makes progress: those that come after the turn was asked for wait until it has
  /// begun.
  class LOG4ZEB_EXPORT DispatcherTurn {
   public:
    explicit DispatcherTurn(LOGAsyncAppender& appender);
    DispatcherTurn(const DispatcherTurn&) = delete;
    DispatcherTurn& operator=(const DispatcherTurn&) = delete;
    ~DispatcherTurn();
    /// Takes the lock, until the turn is destroyed.
    void begin();
    /// Whether a thread sleeps until the lock is free.
    bool isLockWanted() const;

   private:
    LOGAsyncAppender& m_appender;
    bool m_hasBegun = false;
  };

 protected:
  void append(LOGLoggingEvent* event) override;

 private:
  struct Parts;

  /// Runs `operation` under the list's lock.
  template <typename Operation>
  void underListLock(const LOGFailureTexts& texts, Operation operation);
  /// Removes from this list by `operation`, and then from those of the predecessors and successors;
  /// from a list that is busy, the objects that `doomed` finds in this one, which is enough where
  /// it `isOne`.
  template <typename Doomed, typename Operation>
  void removeEverywhere(const LOGFailureTexts& texts, bool isOne, Doomed doomed,
                        Operation operation);
  /// Has these removed before the next delivery. REQUIRES: they live until then.
  void detachSoon(const std::vector<LOGAppenderSkeleton*>& doomed);
  /// Does so. REQUIRES: called under the list's lock.
  void detachDoomed();
  void setDispatcherWaits(bool waits);
  void waitForTurn();
  bool waitForSpace();
  void warnOfInterruption();
  void renewInChild();
  void startInChild();
  /// Whether this thread, by waiting for space, would keep the dispatcher from making it.
  bool isAwaitedByDispatcher() const;
  bool isListLockedByOthers() const;
  void enqueue(LOGLoggingEvent& event);
  /// Queues a copy, whatever the capacity.
  void put(const LOGLoggingEvent& event);
  /// Queues the event, when there is space for it, unless the list's lock has to be taken first.
  /// Returns whether it did.
  bool putBesideList(const LOGLoggingEvent& event);
  /// Takes the list's lock. Returns whether it did; without it there is space for the event, or the
  /// dispatcher waits for this thread.
  bool enterList();
  std::shared_ptr<Parts> parts() const;
  /// Leaves them to the caller, who joins the dispatcher without a lock. Null when another one has
  /// them, or an append goes on under this call.
  std::shared_ptr<Parts> takeParts();
  static void end(Parts& parts);
  bool mayStart() const { return m_closed != 0 && !m_closeRequested && m_stale != 1; }

  LOGAppenderAttachableImpl m_aai;
  // Queue and dispatcher, until close(). Changed under the appender's lock and m_leaf, read under
  // either.
  std::shared_ptr<Parts> m_parts;
  std::atomic<int> locationInfo{0};
  // Guarded by the appender's lock.
  int interruptedWarningMessage = 0;
  bool m_isAppending = false;

  std::atomic<LOGAsyncAppender*> m_predecessor{nullptr};
  std::atomic<LOGAsyncAppender*> m_successor{nullptr};
  std::vector<LOGAppenderSkeleton*> m_doomed;  // to be detached; guarded by m_leaf
  std::atomic<bool> m_hasDoomed{false};

  mutable std::mutex m_leaf;
  std::condition_variable m_turnTaken;
  std::atomic<int> m_turnWaiters{0};
  std::atomic<bool> m_dispatcherWaits{false};
  std::atomic<bool> m_isDelivering{false};  // set while the dispatcher holds the list's lock
  std::atomic<bool> m_isLeftByFork{false};  // queue and dispatcher are still as the parent's were
  const ZEBForkHandler m_forkHandler{
      this, [](void* appender) { static_cast<LOGAsyncAppender*>(appender)->renewInChild(); }};
};

#endif
