#ifndef PLATFORM_POSIX_BEYONDSTANDARDSTREAMS_H
#define PLATFORM_POSIX_BEYONDSTANDARDSTREAMS_H

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

/// Moves a new descriptor away from those of the standard streams, which it gets where the program
/// runs without some of them: the program's output must not end up in it, and what the program
/// opens in their place must not close it. Returns the descriptor, or -1 with errno.
inline int beyondStandardStreams(int descriptor) {
  if (descriptor < 0 || descriptor > STDERR_FILENO) {
    return descriptor;
  }
  const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int error = errno;
  ::close(descriptor);
  errno = error;
  return moved;
}

#endif
