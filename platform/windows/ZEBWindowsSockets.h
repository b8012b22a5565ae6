#ifndef PLATFORM_WINDOWS_ZEBWINDOWSSOCKETS_H
#define PLATFORM_WINDOWS_ZEBWINDOWSSOCKETS_H

/// The sockets of Windows, which a process has to ask for before it uses them.
class ZEBWindowsSockets {
 public:
  /// Asks for version 2.2, the first time it is called. They are never given back, because sockets
  /// may be used until the end of the process.
  static void start();
};

#endif
