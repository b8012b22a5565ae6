#ifndef APPENDERS_LOGDISPATCHER_H
#define APPENDERS_LOGDISPATCHER_H

#include <atomic>
#include <chrono>

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

  /// Asks the thread to end; it does so when the queue is empty. For programs that use the class by
  /// itself; an asynchronous appender closes the queue. Throws ZEBAssertError without a queue.
  void close();
  void run() override;

  /// Starts the thread, again in the child of a fork. Throws ZEBSystemError.
  void startUnlessRunning();
  /// Waits until the thread does nothing any more. REQUIRES: the calling thread may wait.
  void awaitEnd();
  /// Called in the child of a fork: notes whether the thread was left behind in the parent. Where
  /// it has forked itself it goes on.
  void renewInChild() noexcept;
  /// Whether the thread was left behind, and not started again.
  bool isLeftByFork() const noexcept { return m_isLeftByFork.load(std::memory_order_acquire); }

 private:
  bool pass();
  bool deliverNext(ZEBFmHold& hold, LOGAppenderPin& pin);
  bool isTimeToHandOver();

  LOGBoundedFIFO* m_bf;
  LOGAppenderAttachableImpl* m_aai;
  std::atomic<int> interrupted{0};
  std::atomic<bool> m_isRunning{false};
  std::atomic<bool> m_isLeftByFork{false};

  // Used by the thread only.
  LOGLoggingEvent m_unpacked;
  std::chrono::steady_clock::time_point m_lastHandOver;
  int m_held = 0;  // events since then
  int m_mostHeld = 1;
};

#endif
