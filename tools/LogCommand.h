#ifndef TOOLS_LOGCOMMAND_H
#define TOOLS_LOGCOMMAND_H

#include <iosfwd>
#include <string>

#include "config/LOGFileWatchdog.h"

class LOGLogger;
class DocumentWatchdog;

namespace CLI {
class App;
}

/// The command `log4zeb log`: logs the lines of a file or of standard input through a configuration
/// document, each as one event.
class LogCommand {
 public:
  // What the command exits with, next to 0 and to 128 plus the number of the signal that ended it.
  static constexpr int BAD_DOCUMENT = 3;
  static constexpr int BAD_INPUT = 4;
  static constexpr int BAD_OUTPUT = 5;

  /// Declares the subcommand and its options; `app` must not outlive this object.
  explicit LogCommand(CLI::App& app);
  LogCommand(const LogCommand&) = delete;
  LogCommand& operator=(const LogCommand&) = delete;

  /// Does what the parsed options say and returns the exit code. On a stop signal, and when the
  /// reader of its console is gone, it ends the process itself.
  int run() const;

 private:
  int logLinesOf(std::istream& in) const;
  /// Applies the document; with a watchdog, which has done so, starts that. Returns the logger, or
  /// null after complaining.
  LOGLogger* configure(DocumentWatchdog* watchdog) const;

  std::string m_document;
  std::string m_logger;
  std::string m_level = "INFO";
  std::string m_input = "-";
  bool m_levelFromLine = false;
  bool m_watch = false;
  unsigned int m_watchDelay = LOGFileWatchdog::DEFAULT_DELAY;
};

#endif
