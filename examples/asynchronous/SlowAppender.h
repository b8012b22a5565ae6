#ifndef EXAMPLES_ASYNCHRONOUS_SLOWAPPENDER_H
#define EXAMPLES_ASYNCHRONOUS_SLOWAPPENDER_H

#include <atomic>

#include "appenders/LOGAppenderSkeleton.h"

/// A slow destination: waits for each event, and counts them.
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
