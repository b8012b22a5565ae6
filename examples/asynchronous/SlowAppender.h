#ifndef EXAMPLES_ASYNCHRONOUS_SLOWAPPENDER_H
#define EXAMPLES_ASYNCHRONOUS_SLOWAPPENDER_H

#include <atomic>

#include "appenders/LOGAppenderSkeleton.h"

/// Stands for a destination that takes its time: it counts the events that it was given.
class SlowAppender : public LOGAppenderSkeleton {
 public:
  explicit SlowAppender(int milliseconds);

  int count() const { return m_count; }
  void setMilliseconds(int milliseconds) { m_milliseconds = milliseconds; }

 protected:
  void append(LOGLoggingEvent* event) override;

 private:
  std::atomic<int> m_milliseconds;
  std::atomic<int> m_count{0};
};

#endif
