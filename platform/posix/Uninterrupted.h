#ifndef PLATFORM_POSIX_UNINTERRUPTED_H
#define PLATFORM_POSIX_UNINTERRUPTED_H

#include <cerrno>

/// Makes a call of the operating system, and makes it again for as long as a signal keeps it from
/// coming to its end. Returns what it returned, -1 being a failure.
template <typename Call>
auto uninterrupted(Call call) {
  for (;;) {
    const auto result = call();
    if (result != -1 || errno != EINTR) {
      return result;
    }
  }
}

#endif
