#ifndef PLATFORM_POSIX_ZEBSYSTEMSOCKETS_H
#define PLATFORM_POSIX_ZEBSYSTEMSOCKETS_H

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <string>

#include "platform/I18NString.h"

/// What systems name differently in their sockets; the folder of each system has one.
class ZEBSystemSockets {
 public:
  using AddressInfo = addrinfo;
  using Length = socklen_t;

  /// Asks the system for sockets, which has to be done before they are used.
  static void start() {}
  static std::string nameOf(const I18NString& host) { return host.toStdString(); }
  static AddressInfo* lookUp(const std::string& name, const AddressInfo& hints) {
    AddressInfo* found = nullptr;
    return getaddrinfo(name.c_str(), nullptr, &hints, &found) == 0 ? found : nullptr;
  }
  static void free(AddressInfo* found) { freeaddrinfo(found); }
};

#endif
