#ifndef TOOLS_LINEJOB_H
#define TOOLS_LINEJOB_H

#include <atomic>
#include <future>

class LineLogger;
class LineReader;

/// Sends every line of a reader to a logger. Lines are read and logged on a thread of their own, so
/// that the calling thread can show progress, answer a stop signal and see that nobody reads the
/// console any more while the input is silent.
class LineJob {
 public:
  enum class End {
    /// Every line that could be read was logged, and the thread has ended.
    COMPLETE,
    /// A stop signal came, or the reader of the console has gone; no line is half logged and none
    /// will be logged any more.
    STOPPED,
    /// The same, but a log call does not return: something below it is blocked.
    STUCK
  };

  /// Reader and logger are not owned.
  LineJob(LineReader& reader, LineLogger& logger) : m_reader(reader), m_logger(logger) {}

  /// Runs once. Throws what reading and logging throw. Unless it returns COMPLETE, the thread may
  /// go on waiting and still uses this object, the reader and the logger: the process must be ended
  /// while they live.
  End run();

 private:
  void logLines();
  bool comesToRest();

  LineReader& m_reader;
  LineLogger& m_logger;
  std::promise<void> m_ending;
  // The logging thread sets m_logging and then reads m_stopping, the calling thread the other way
  // round, both in the one order that all threads agree on: so one of them sees the other.
  std::atomic<bool> m_logging{false};
  std::atomic<bool> m_stopping{false};
};

#endif
