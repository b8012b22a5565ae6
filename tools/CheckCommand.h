#ifndef TOOLS_CHECKCOMMAND_H
#define TOOLS_CHECKCOMMAND_H

#include <string>

namespace CLI {
class App;
}

/// The command `log4zeb check`: tells what a configuration document will do, and what in it is
/// probably not meant. Nothing that the document names is opened, made or loaded.
class CheckCommand {
 public:
  // What the command exits with, next to 0.
  static constexpr int WARNINGS = 1;
  static constexpr int UNUSABLE = 2;

  /// Declares the subcommand and its options; `app` must not outlive this object.
  explicit CheckCommand(CLI::App& app);
  CheckCommand(const CheckCommand&) = delete;
  CheckCommand& operator=(const CheckCommand&) = delete;

  /// Does what the parsed options say and returns the exit code.
  int run() const;

 private:
  int check() const;
  void report(const class CheckFindings& findings, int exitCode,
              const class CheckSummary* summary) const;

  std::string m_document;
  std::string m_directory = ".";
  bool m_json = false;
  bool m_quiet = false;
};

#endif
