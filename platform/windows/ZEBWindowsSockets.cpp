#include "platform/windows/ZEBWindowsSockets.h"

#include <winsock2.h>

void ZEBWindowsSockets::start() {
  // Where it fails, so does every socket, and says why.
  [[maybe_unused]] static const int started = [] {
    WSADATA data{};
    return WSAStartup(MAKEWORD(2, 2), &data);
  }();
}
