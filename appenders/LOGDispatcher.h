#ifndef APPENDERS_LOGDISPATCHER_H
#define APPENDERS_LOGDISPATCHER_H

#include <atomic>
#include <chrono>
#include <memory>

#include "core/LOGLoggingEvent.h"
#include "platform/ZEBFmHold.h"
#include "platform/ZEBThread.h"

class LOGAppenderAttachableImpl;
class LOGAppenderPin;
class LOGAsyncAppender;
class LOGBoundedFIFO;

/// The thread that takes events out of an asynchronous appender's queue and passes each to the
/// appenders attached there. It holds no lock while it does: the appender that it calls is pinned.
class LOG4ZEB_EXPORT LOGDispatcher : public ZEBThread {
 public:
  /// Neither object is owned; both must outlive the thread. Throws ZEBAssertError when `container`
  /// is null.
  LOGDispatcher(LOGBoundedFIFO* bf, LOGAsyncAppender* container);
  /// The same for the list of a container.
  LOGDispatcher(LOGBoundedFIFO* bf, LOGAppenderAttachableImpl* list);
  ~LOGDispatcher() override;

  /// Asks the thread to end; it does so when the queue is empty. Throws ZEBAssertError without a
  /// queue.
  void close();
  void run() override;

  /// Starts the thread, again in the child of a fork. Throws ZEBSystemError.
  void startUnlessRunning();
  /// Waits until the thread does nothing any more. REQUIRES: the calling thread may wait.
  void awaitEnd();
  /// In the child of a fork, whether the thread was left behind in the parent. Where it has forked
  /// itself it goes on.
  bool isLeftByFork() noexcept;
  /// Whether the calling thread is this one.
  bool isCurrentThread() const noexcept { return s_current == this; }
  static bool isAnyCurrentThread() noexcept { return s_current != nullptr; }

 private:
  bool pass(LOGAppenderPin& pin);
  void deliverNext(ZEBFmHold& hold, LOGAppenderPin& pin);
  void deliver(LOGLoggingEvent& event, ZEBFmHold& hold, LOGAppenderPin& pin);
  void handOver(ZEBFmHold& hold);
  bool isTimeToHandOver();

  inline static thread_local const LOGDispatcher* s_current = nullptr;

  LOGBoundedFIFO* m_bf;
  LOGAppenderAttachableImpl* m_aai;
  std::atomic<int> interrupted{0};
  std::atomic<bool> m_isRunning{false};

  // Used by the thread only.
  LOGLoggingEvent m_unpacked;
  // What was delivered but may wait for the operating system with others.
  int m_notHandedOver = 0;
  bool m_mayHold = false;  // the lines of the last event
  std::chrono::steady_clock::time_point m_lastLook;
  std::chrono::steady_clock::time_point m_lastHandOver;
  int m_eventsUntilLook = 0;
  int m_eventsBetweenLooks = 1;
};

#endif
