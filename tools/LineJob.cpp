#include "tools/LineJob.h"

#include <chrono>
#include <exception>
#include <iostream>
#include <string>
#include <thread>

#include "config/LOGDOMConfigurator.h"
#include "log4zeb.h"
#include "platform/ZEBUtTerminal.h"
#include "tools/LineLevel.h"
#include "tools/LogDestinations.h"
#include "tools/StopSignal.h"

namespace {

// How soon a stop signal is answered.
constexpr std::chrono::milliseconds ATTENTION(50);
// A log call takes microseconds; one that takes this long waits for somebody who does not come.
constexpr std::chrono::seconds PATIENCE(2);

/// A line on standard error that counts on while a long job runs. It appears after one second, and
/// only on a terminal.
class ProgressLine {
 public:
  /// Shows the number if it changed, at most five times a second.
  void show(std::uint64_t lines) {
    if (m_isWanted && lines != m_shown && Clock::now() >= m_next) {
      const std::string text = "log4zeb: " + std::to_string(lines) + " lines read so far";
      std::cerr << '\r' + text;
      m_width = text.size();
      m_shown = lines;
      m_next = Clock::now() + std::chrono::milliseconds(200);
    }
  }
  /// Takes the line away, so that other text can begin in its place.
  void clear() const {
    if (m_width != 0) {
      std::cerr << '\r' + std::string(m_width, ' ') + '\r';
    }
  }

 private:
  using Clock = std::chrono::steady_clock;

  const bool m_isWanted = ZEBUtTerminal::isStandardError();
  Clock::time_point m_next = Clock::now() + std::chrono::seconds(1);
  std::uint64_t m_shown = 0;
  std::size_t m_width = 0;
};

}  // namespace

LineJob::End LineJob::run() {
  ProgressLine progress;
  std::future<void> ended = m_ending.get_future();
  std::thread thread([this] {
    try {
      logLines();
      m_ending.set_value();
    } catch (...) {
      m_ending.set_exception(std::current_exception());
    }
  });
  while (ended.wait_for(ATTENTION) != std::future_status::ready) {
    if (StopSignal::received() != 0 || hasLostReader()) {
      progress.clear();
      const bool resting = comesToRest();
      thread.detach();
      return resting ? End::STOPPED : End::STUCK;
    }
    progress.show(m_read);
  }
  thread.join();
  progress.clear();
  ended.get();
  return End::COMPLETE;
}

void LineJob::logLines() {
  while (m_reader.next()) {
    m_logging = true;
    if (m_stopping) {
      m_logging = false;
      return;
    }
    logLine();
    m_logging = false;
  }
}

void LineJob::logLine() {
  ++m_read;
  const std::string_view line = m_reader.line();
  const int rank = m_levelFromLine ? LineLevel::firstIn(line).value_or(m_rank) : m_rank;
  LOGLevel* const level = LOGLevel::toLevel(rank);
  if (m_logger->isEnabledFor(level) != 0) {
    m_logger->log(level, I18NString::fromUtf8(line));
    ++m_logged;
  }
}

/// Whether lines go to the console, and nobody reads it any more.
bool LineJob::hasLostReader() const {
  bool isConsole = false;
  if (ZEBUtTerminal::hasLostReader()) {
    // A watchdog may be about to give the logger other appenders.
    LOGDOMConfigurator::runExclusively(
        [&] { isConsole = LogDestinations::includeConsole(m_logger); });
  }
  return isConsole;
}

bool LineJob::comesToRest() {
  m_stopping = true;
  const auto deadline = std::chrono::steady_clock::now() + PATIENCE;
  while (m_logging) {
    if (std::chrono::steady_clock::now() >= deadline) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}
