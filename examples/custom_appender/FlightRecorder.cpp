#include "FlightRecorder.h"

#include "platform/ZEBThreadGuard.h"

FlightRecorder::FlightRecorder(std::size_t capacity, LOGLayout* layout) : m_capacity(capacity) {
  instance("FlightRecorder");
  setName("RECORDER");
  setLayout(layout);
}

FlightRecorder::~FlightRecorder() { finalize(); }

void FlightRecorder::append(LOGLoggingEvent* event) {
  // doAppend() has taken the appender's lock.
  const std::string line = format(*layout(), event).toStdString();
  if (m_closed == 1) {
    return;  // a message may run any code while it is rendered, also code that closes this
  }
  m_lines.push_back(line);
  if (m_lines.size() > m_capacity) {
    m_lines.pop_front();
  }
}

void FlightRecorder::close() {
  // Under the lock, so that no event is still on its way in when this returns.
  const ZEBThreadGuard guard(getCriticalSection());
  m_closed = 1;
}

std::vector<std::string> FlightRecorder::lines() const {
  const ZEBThreadGuard guard(getCriticalSection());
  return {m_lines.begin(), m_lines.end()};
}
