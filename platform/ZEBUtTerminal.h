#ifndef PLATFORM_ZEBUTTERMINAL_H
#define PLATFORM_ZEBUTTERMINAL_H

#include <string>
#include <vector>

/// What a command needs to know of the terminal that it was started on, and how it was started.
/// Part of the command, not of the library.
class ZEBUtTerminal {
 public:
  static bool isStandardError();
  /// Makes the standard streams pass every byte as it is, line ends too.
  static void passBytesUnchanged();
  /// What main() was given, in UTF-8.
  static std::vector<std::string> arguments(int count, char** given);
};

#endif
