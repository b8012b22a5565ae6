#ifndef TESTS_SUPPORT_OPENSOCKETS_H
#define TESTS_SUPPORT_OPENSOCKETS_H

/// How many sockets the process has open, as the operating system sees it.
struct OpenSockets {
  static OpenSockets count();

  long open = 0;
  long inherited = 0;  // by programs that this process starts
};

#endif
