#ifndef PLATFORM_ZEBUTPROCESS_H
#define PLATFORM_ZEBUTPROCESS_H

/// The process that the library runs in.
class ZEBUtProcess {
 public:
  static int currentProcessId();
};

#endif
