#ifndef PLATFORM_WINDOWS_ZEBSYSTEMSOCKETS_H
#define PLATFORM_WINDOWS_ZEBSYSTEMSOCKETS_H

#include <winsock2.h>
#include <ws2tcpip.h>

#include <string>

#include "platform/windows/ZEBWindowsName.h"

/// What systems name differently in their sockets; the folder of each system has one.
class ZEBSystemSockets {
 public:
  using AddressInfo = ADDRINFOW;
  using Length = socklen_t;

  /// Asks the system for version 2.2 of its sockets, which has to be done before they are used.
  /// They are never given back, because sockets may be used until the end of the process.
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
};

#endif
