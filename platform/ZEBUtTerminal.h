#ifndef PLATFORM_ZEBUTTERMINAL_H
#define PLATFORM_ZEBUTTERMINAL_H

#include <string>
#include <vector>

/// What a command needs to know of the terminal that it was started on, how it was started, and
/// what it may do there. Part of the command, not of the library.
class ZEBUtTerminal {
 public:
  static bool isStandardError();
  static bool isStandardOutput();
  /// Whether standard output goes to a pipe or socket whose other end has been closed. Never known
  /// on Windows.
  static bool hasLostReader();
  /// Lets a write to a pipe or socket whose other end has been closed fail, where it would end the
  /// process by a signal.
  static void outliveReaders();
  /// The signals by which the user or the system wishes that the process end.
  static std::vector<int> stopSignals();
  /// Makes the standard streams pass every byte as it is, line ends too.
  static void passBytesUnchanged();
  /// What main() was given, in UTF-8.
  static std::vector<std::string> arguments(int count, char** given);
  /// Whether this process may write to the file, or make files in the directory, of that name in
  /// UTF-8; false when there is none. Nothing is opened.
  static bool mayWrite(const std::string& name);
};

#endif
