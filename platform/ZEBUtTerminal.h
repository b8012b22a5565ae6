#ifndef PLATFORM_ZEBUTTERMINAL_H
#define PLATFORM_ZEBUTTERMINAL_H

/// The terminal that the process runs on, if any. Part of the command, not of the library.
class ZEBUtTerminal {
 public:
  static bool isStandardError();
};

#endif
