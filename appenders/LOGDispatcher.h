#ifndef APPENDERS_LOGDISPATCHER_H
#define APPENDERS_LOGDISPATCHER_H

#include <atomic>
#include <chrono>
#include <cstddef>
#include <vector>

#include "appenders/LOGAsyncAppender.h"
#include "platform/ZEBFmFile.h"
#include "platform/ZEBForkGate.h"
#include "platform/ZEBThread.h"

class LOGAppenderAttachableImpl;
class LOGBoundedFIFO;
class LOGLoggingEvent;

/// The thread that takes events out of an asynchronous appender's queue and passes each to the
/// appenders attached there.
class LOG4ZEB_EXPORT LOGDispatcher : public ZEBThread {
 public:
  /// Neither object is owned; both must outlive the thread. Throws ZEBAssertError when `container`
  /// is null.
  LOGDispatcher(LOGBoundedFIFO* bf, LOGAsyncAppender* container);
  ~LOGDispatcher() override;

  /// Asks the thread to end; it does so when the queue is empty. Throws ZEBAssertError without a
  /// queue.
  void close();
  void run() override;
  /// Whether the calling thread is this one.
  bool isCurrentThread() const;
  /// What the thread is for locks, nullptr before and after it runs.
  const ZEBForkGate::Visitor* visitor() const { return m_visitor; }

  /// In the child of a fork, whether the thread was left behind in the parent. Where it has forked
  /// itself it goes on.
  bool isLeftByFork();
  /// Starts the thread again in the child, without what it had taken in the parent.
  void startInChild();

 private:
  /// One pass under the queue's lock; false when the thread is to end.
  bool drain();
  void deliverNext(ZEBFmFile::Batch& batch);
  bool passesOnToOneFile() const;
  bool mayGoOn(const LOGAsyncAppender::DispatcherTurn& turn) const;
  void deliverTaken(const LOGAsyncAppender::DispatcherTurn& turn);
  void takeOut();
  void takeOne();
  bool hasTaken() const { return m_nextTaken < m_taken.size(); }
  void deliver(LOGLoggingEvent* event);
  void handOver(ZEBFmFile::Batch& batch);
  bool isTimeToHandOver();
  void forgetTaken() noexcept;
  void forget(LOGLoggingEvent* event) noexcept;

  LOGBoundedFIFO* m_bf;
  LOGAppenderAttachableImpl* m_aai;
  LOGAsyncAppender* m_container;
  std::vector<LOGLoggingEvent*> m_taken;  // out of the queue and owned; used by the thread only
  std::size_t m_nextTaken = 0;            // those before it were delivered
  void* m_memory = nullptr;               // for the next event, left by one that was delivered

  // What was delivered but may wait for the operating system with others; used by the thread only.
  int m_notHandedOver = 0;
  std::chrono::steady_clock::time_point m_lastLook;
  std::chrono::steady_clock::time_point m_lastHandOver;
  int m_eventsUntilLook = 0;
  int m_eventsBetweenLooks = 1;
  std::atomic<int> interrupted{0};
  std::atomic<std::uint64_t> m_threadId{0};
  std::atomic<const ZEBForkGate::Visitor*> m_visitor{nullptr};
};

#endif
