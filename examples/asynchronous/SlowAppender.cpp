#include "SlowAppender.h"

#include <chrono>
#include <thread>

SlowAppender::SlowAppender(int milliseconds) : m_milliseconds(milliseconds) {}

void SlowAppender::append(LOGLoggingEvent*) {
  std::this_thread::sleep_for(std::chrono::milliseconds(m_milliseconds));
  ++m_count;
}
