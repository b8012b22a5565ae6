#ifndef TOOLS_LINELOGGER_H
#define TOOLS_LINELOGGER_H

#include <atomic>
#include <cstdint>
#include <string_view>

class LOGLogger;

/// Logs lines of text, each as one event, and counts them. One thread logs; any thread may ask for
/// the counts.
class LineLogger {
 public:
  struct Counts {
    std::uint64_t read = 0;    ///< the lines given
    std::uint64_t logged = 0;  ///< those whose level was enabled
  };

  /// Lines are logged at the level of `rank`, or, with `levelFromLine`, at that of the first level
  /// word in the line when there is one. The logger is not owned.
  LineLogger(LOGLogger* logger, int rank, bool levelFromLine)
      : m_logger(logger), m_rank(rank), m_levelFromLine(levelFromLine) {}

  void log(std::string_view line);
  Counts getCounts() const noexcept { return {m_read.load(), m_logged.load()}; }
  /// Whether lines go to the console, and nobody reads it any more.
  bool hasLostReader() const;

 private:
  LOGLogger* m_logger;
  int m_rank;
  bool m_levelFromLine;
  std::atomic<std::uint64_t> m_read{0};
  std::atomic<std::uint64_t> m_logged{0};
};

#endif
