#ifndef TOOLS_TERMINAL_H
#define TOOLS_TERMINAL_H

/// What the command needs to know of the terminal it runs on. Supplied per operating system.
class Terminal {
 public:
  static bool isStandardError();
};

#endif
