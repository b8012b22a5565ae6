#ifndef TOOLS_PROGRESSLINE_H
#define TOOLS_PROGRESSLINE_H

#include <chrono>
#include <cstddef>
#include <cstdint>

/// A line on standard error that counts on while a long job runs. It appears after one second, and
/// only on a terminal.
class ProgressLine {
 public:
  ProgressLine();

  /// Shows the number if it changed, at most five times a second.
  void show(std::uint64_t lines);
  /// Takes the line away, so that other text can begin in its place.
  void clear();

 private:
  using Clock = std::chrono::steady_clock;

  bool m_wanted;
  Clock::time_point m_next;
  std::uint64_t m_shown = 0;
  std::size_t m_width = 0;
};

#endif
