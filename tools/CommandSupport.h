#ifndef TOOLS_COMMANDSUPPORT_H
#define TOOLS_COMMANDSUPPORT_H

#include <iosfwd>
#include <string>

/// What the subcommands share: telling what went wrong, and opening what they read.
class CommandSupport {
 public:
  /// Writes a line to standard error, after the name of the command.
  static void say(const std::string& text);
  /// " (reason)" for the error number that the runtime left, nothing for 0.
  static std::string reason(int error);
  /// Opens a file and tries its first byte, because a directory can be opened too. Says what is
  /// wrong and returns false when that fails; `what` is what the file is to the user.
  static bool openToRead(std::ifstream& file, const std::string& name, const char* what);
};

#endif
