#include "support/OpenSockets.h"

#ifdef _WIN32
#include <winsock2.h>

OpenSockets OpenSockets::count() {
  // Handles are small multiples of four; sockets are those that know their own type.
  constexpr ULONG_PTR LARGEST_HANDLE = 4096;
  OpenSockets found;
  for (ULONG_PTR handle = 4; handle <= LARGEST_HANDLE; handle += 4) {
    int type = 0;
    int size = sizeof type;
    if (getsockopt(handle, SOL_SOCKET, SO_TYPE, reinterpret_cast<char*>(&type), &size) == 0) {
      DWORD flags = 0;
      GetHandleInformation(reinterpret_cast<HANDLE>(handle), &flags);
      ++found.open;
      found.inherited += (flags & HANDLE_FLAG_INHERIT) != 0 ? 1 : 0;
    }
  }
  return found;
}

#else
#include <fcntl.h>

#include <filesystem>
#include <string>

OpenSockets OpenSockets::count() {
  OpenSockets found;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (std::filesystem::read_symlink(entry, gone).string().rfind("socket:", 0) == 0) {
      ++found.open;
      const int flags = fcntl(std::stoi(entry.path().filename().string()), F_GETFD);
      found.inherited += (flags & FD_CLOEXEC) == 0 ? 1 : 0;
    }
  }
  return found;
}

#endif
