#ifndef PLATFORM_WINDOWS_ZEBSYSTEMSOCKETS_H
#define PLATFORM_WINDOWS_ZEBSYSTEMSOCKETS_H

#include <winsock2.h>
#include <ws2tcpip.h>

#include <cstdint>
#include <string>

#include "platform/windows/ZEBWindowsName.h"

/// What systems do differently with sockets; the folder of each system has one.
class ZEBSystemSockets {
 public:
  using AddressInfo = ADDRINFOW;
  using Length = int;
  using Size = int;
  using Socket = SOCKET;

  static constexpr int DESTINATION_NEEDED = WSAEDESTADDRREQ;
  static int lastError() { return WSAGetLastError(); }

  /// Asks for version 2.2 of the system's sockets, the first time it is called. They are never
  /// given back, because sockets may be used until the end of the process.
  static void start() {
    // Where it fails, so does every socket, and says why.
    [[maybe_unused]] static const int started = [] {
      WSADATA data{};
      return WSAStartup(MAKEWORD(2, 2), &data);
    }();
  }
  static std::wstring nameOf(const I18NString& host) { return ZEBWindowsName::toWide(host); }
  static AddressInfo* lookUp(const std::wstring& name, const AddressInfo& hints) {
    AddressInfo* found = nullptr;
    return GetAddrInfoW(name.c_str(), nullptr, &hints, &found) == 0 ? found : nullptr;
  }
  static void free(AddressInfo* found) { FreeAddrInfoW(found); }

  /// A datagram socket; -1 when the system gives none.
  static std::int64_t open(int family) {
    start();
    const SOCKET opened = WSASocketW(family, SOCK_DGRAM, IPPROTO_UDP, nullptr, 0,
                                     WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT);
    if (opened != INVALID_SOCKET) {
      // A datagram that nobody took must not make receiving the next one fail. Systems that do not
      // know this do not do that either. The headers may not have its number.
      constexpr DWORD REPORT_UNREACHABLE_PORTS = _WSAIOW(IOC_VENDOR, 12);
      BOOL report = FALSE;
      DWORD ignored = 0;
      WSAIoctl(opened, REPORT_UNREACHABLE_PORTS, &report, sizeof report, nullptr, 0, &ignored,
               nullptr, nullptr);
    }
    static_assert(static_cast<std::int64_t>(INVALID_SOCKET) == -1, "no socket is -1");
    return static_cast<std::int64_t>(opened);
  }
  static bool setNonBlocking(Socket socket) {
    u_long on = 1;
    return ioctlsocket(socket, static_cast<long>(FIONBIO), &on) == 0;
  }
  static void close(Socket socket) { closesocket(socket); }
  /// Whether receiving failed only in that the datagram was longer.
  static bool wasCut() { return WSAGetLastError() == WSAEMSGSIZE; }
  /// Either may be -1.
  static bool waitForEither(Socket first, Socket second, int milliseconds) {
    WSAPOLLFD waiting[2];
    ULONG count = 0;
    for (const Socket socket : {first, second}) {
      if (socket != INVALID_SOCKET) {
        waiting[count++] = {socket, POLLRDNORM, 0};
      }
    }
    if (count == 0) {
      Sleep(static_cast<DWORD>(milliseconds));
      return false;
    }
    return WSAPoll(waiting, count, milliseconds) > 0;
  }
};

#endif
