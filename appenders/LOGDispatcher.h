#ifndef APPENDERS_LOGDISPATCHER_H
#define APPENDERS_LOGDISPATCHER_H

#include <atomic>
#include <deque>
#include <memory>

#include "platform/ZEBThread.h"

class LOGAppenderAttachableImpl;
class LOGAsyncAppender;
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

 private:
  using Event = std::unique_ptr<LOGLoggingEvent>;

  /// One pass under the queue's lock; false when the thread is to end.
  bool drain();
  void deliverNext();
  void takeOut(std::deque<Event>& events);

  LOGBoundedFIFO* m_bf;
  LOGAppenderAttachableImpl* m_aai;
  LOGAsyncAppender* m_container;
  std::atomic<int> interrupted{0};
  std::atomic<std::uint64_t> m_threadId{0};
};

#endif
