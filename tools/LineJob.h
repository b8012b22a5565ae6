#ifndef TOOLS_LINEJOB_H
#define TOOLS_LINEJOB_H

#include <atomic>
#include <cstdint>
#include <future>

#include "tools/LineReader.h"

class LOGLogger;

/// Logs every line of a stream, each as one event. Lines are read and logged on a thread of their
/// own, so that the calling thread can show progress, answer a stop signal and see that nobody
/// reads the console any more while the input is silent.
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

  /// Lines are logged at the level of `rank`, or, with `levelFromLine`, at that of the first level
  /// word in the line when there is one. Stream and logger are not owned.
  LineJob(std::istream& in, LOGLogger* logger, int rank, bool levelFromLine)
      : m_reader(in), m_logger(logger), m_rank(rank), m_levelFromLine(levelFromLine) {}

  /// Runs once. Throws what reading and logging throw. Unless it returns COMPLETE, the thread may
  /// go on waiting and still uses this object, the stream and the logger: the process must be ended
  /// while they live.
  End run();
  /// How many lines were read, and of how many the level was enabled. Any thread may ask.
  std::uint64_t read() const noexcept { return m_read; }
  std::uint64_t logged() const noexcept { return m_logged; }
  /// After the end: whether reading failed.
  bool hasFailed() const { return m_reader.failed(); }

 private:
  void logLines();
  void logLine();
  bool hasLostReader() const;
  bool comesToRest();

  LineReader m_reader;
  LOGLogger* const m_logger;
  const int m_rank;
  const bool m_levelFromLine;
  std::atomic<std::uint64_t> m_read{0};
  std::atomic<std::uint64_t> m_logged{0};
  std::promise<void> m_ending;
  // The logging thread sets m_logging and then reads m_stopping, the calling thread the other way
  // round, both in the one order that all threads agree on: so one of them sees the other.
  std::atomic<bool> m_logging{false};
  std::atomic<bool> m_stopping{false};
};

#endif
