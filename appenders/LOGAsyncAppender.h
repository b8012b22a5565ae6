#ifndef APPENDERS_LOGASYNCAPPENDER_H
#define APPENDERS_LOGASYNCAPPENDER_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <set>
#include <vector>

#include "appenders/LOGAppenderAttachable.h"
#include "appenders/LOGAppenderAttachableImpl.h"
#include "appenders/LOGAppenderSkeleton.h"

class LOGDispatcher;
struct LOGFailureTexts;

/// Spares the threads that log the time of slow appenders: it queues copies of events, and a thread
/// of its own, the dispatcher, passes them on to the appenders attached to it. A thread that finds
/// the queue full waits at the end of its outermost call, when it holds no lock any more: a full
/// queue blocks its callers and nobody else. What is logged from within a delivery never waits.
/// What is queued is lost when the process dies, and when the appender is closed without flush();
/// the orderly shutdown of the library flushes. In the child of a fork the queue is empty, what was
/// in it being the parent's, and the first event starts a thread there.
///
/// Attached appenders are not owned, and not closed with this one. One may be deleted when its
/// removal has returned, unless that was called within a call that logs or a delivery or under a
/// lock of the library.
class LOG4ZEB_EXPORT LOGAsyncAppender : public LOGAppenderSkeleton, public LOGAppenderAttachable {
 private:
  struct Core;

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

  /// Starts the dispatcher thread, unless it runs or was closed. Throws ZEBSystemError.
  void activateOptions() override;
  /// Drops what is queued, lets threads go that wait for room, and ends the dispatcher for good.
  /// Waits for a delivery that is under way, but not under a lock, within a call that logs or in a
  /// delivery.
  void close() override;
  void append(LOGLoggingEvent* event) override;
  int requiresLayout() override { return 0; }

  /// Waits until what is queued now, also by threads that wait for room, has been passed on.
  /// Returns 1, or 0 when the time, in milliseconds, is up before. Waits where close() does.
  int flush(int milliseconds);
  /// Whether `from` is `to`, or passes events on to it, perhaps through others.
  static bool reaches(const LOGAppenderSkeleton& from, const LOGAsyncAppender& to);

  /// The capacity of the queue in events. What is queued beyond a smaller one stays queued. 0 once
  /// closed. Setting throws ZEBAssertError then.
  int getBufferSize() const;
  void setBufferSize(int size);
  /// 1 would take the caller's location on the thread that logs; none is gathered.
  int getLocationInfo() const { return locationInfo; }
  void setLocationInfo(int info) { locationInfo = info; }

  // Each takes the lock of the list of attached appenders, which the dispatcher takes only to go
  // from one of them to the next.
  void addAppender(LOGAppenderSkeleton* newAppender) override;
  ZEBListIterator<LOGAppenderSkeleton*> getAllAppenders() override;
  LOGAppenderSkeleton* getAppender(const I18NString& name) override;
  int isAttached(LOGAppenderSkeleton* appender) override;
  void removeAllAppenders() override;
  void removeAppender(const I18NString& name) override;
  void removeAppender(LOGAppenderSkeleton* appender) override;
  LOGAppenderAttachableImpl* getAAI();

  /// Takes the place of another one, which still passes on what it has queued: until that is
  /// closed, what is removed from one of them is removed from both.
  void succeed(const LOGAsyncAppender& predecessor);

  /// Queues of asynchronous appenders, which can be flushed after the appenders are gone.
  class LOG4ZEB_EXPORT Queues {
   public:
    /// Adds the queue of the appender, if it has one, and those of appenders attached to it.
    /// REQUIRES: the appender exists. Throws std::bad_alloc.
    void add(const LOGAppenderSkeleton& appender);
    /// The same for the appenders of a list, whose lock is not needed.
    void add(const LOGAppenderAttachableImpl& list);
    /// Gives each up to that time, in milliseconds: none before those that pass events on to it.
    void flush(int milliseconds) const;

   private:
    friend class LOGAsyncAppender;
    void add(const std::shared_ptr<Core>& core);

    std::vector<std::shared_ptr<Core>> m_cores;  // each behind those that it passes events on to
    std::set<const Core*> m_seen;
  };

 private:
  bool mayStart() const { return m_closed != 0 && !m_closeRequested && m_stale != 1; }
  void leaveWaitToEndOfCall(std::uint64_t place) const;
  /// Whether events of `from` come to that dispatcher, perhaps through several queues.
  static bool leadsTo(const LOGDispatcher& dispatcher, const LOGAppenderSkeleton& from);
  template <typename Remove>
  void removeEverywhere(const LOGFailureTexts& texts, Remove remove);

  // Shared with queues that are flushed and with threads that wait for room.
  const std::shared_ptr<Core> m_core;
  std::atomic<int> locationInfo{0};
};

#endif
