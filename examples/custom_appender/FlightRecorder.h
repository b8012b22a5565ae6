#ifndef CUSTOM_APPENDER_FLIGHTRECORDER_H
#define CUSTOM_APPENDER_FLIGHTRECORDER_H

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

#include "appenders/LOGAppenderSkeleton.h"

/// Keeps the last lines in memory, for the moment when something has gone wrong and one wants to
/// know what came before.
class FlightRecorder : public LOGAppenderSkeleton {
 public:
  /// The layout stays the caller's and must live as long as the recorder is attached.
  FlightRecorder(std::size_t capacity, LOGLayout* layout);
  ~FlightRecorder() override;

  /// Events that come later are refused. The lines stay.
  void close() override;
  int requiresLayout() override { return 1; }

  /// The lines, the oldest first. Any thread may ask.
  std::vector<std::string> lines() const;

 protected:
  void append(LOGLoggingEvent* event) override;

 private:
  const std::size_t m_capacity;
  std::deque<std::string> m_lines;  // guarded by the appender's lock
};

#endif
