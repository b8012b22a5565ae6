#ifndef TOOLS_SUBCOMMAND_H
#define TOOLS_SUBCOMMAND_H

#include <memory>

namespace CLI {
class App;
}

/// A subcommand of `log4zeb`. It declares its options when it is made, and does what they say once
/// they are parsed.
class Subcommand {
 public:
  // What the command exits with, next to 0 and to 128 plus the number of the signal that ended it.
  static constexpr int UNEXPECTED_FAILURE = 1;
  static constexpr int WARNINGS = 1;
  static constexpr int BAD_ARGUMENTS = 2;
  static constexpr int UNUSABLE_DOCUMENT = 2;  // said by `check`
  static constexpr int BAD_DOCUMENT = 3;       // said by `log`
  static constexpr int CANNOT_LISTEN = 3;
  static constexpr int BAD_INPUT = 4;
  static constexpr int BAD_OUTPUT = 5;

  Subcommand() = default;
  Subcommand(const Subcommand&) = delete;
  Subcommand& operator=(const Subcommand&) = delete;
  virtual ~Subcommand() = default;

  /// Does what the parsed options say and returns the exit code. `log` ends the process itself on a
  /// stop signal, and when the reader of its console is gone.
  virtual int run() const = 0;

  // The app must not outlive what these return.
  /// Logs the lines of a file or of standard input through a document, each as one event.
  static std::unique_ptr<Subcommand> log(CLI::App& app);
  /// Receives the datagrams of the local UDP appender and of the syslog appender and prints them.
  static std::unique_ptr<Subcommand> listen(CLI::App& app);
  /// Makes a complete page of the HTML rows that an appender wrote.
  static std::unique_ptr<Subcommand> page(CLI::App& app);
  /// Tells what a configuration document will do, and what in it is probably not meant. Nothing
  /// that the document names is opened, made or loaded.
  static std::unique_ptr<Subcommand> check(CLI::App& app);
};

#endif
