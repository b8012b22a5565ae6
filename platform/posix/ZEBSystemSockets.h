#ifndef PLATFORM_POSIX_ZEBSYSTEMSOCKETS_H
#define PLATFORM_POSIX_ZEBSYSTEMSOCKETS_H

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "platform/I18NString.h"
#include "platform/posix/BeyondStandardStreams.h"

/// What systems do differently with sockets; the folder of each system has one.
class ZEBSystemSockets {
 public:
  using AddressInfo = addrinfo;
  using Length = socklen_t;
  using Size = std::size_t;
  using Socket = int;

  static constexpr int DESTINATION_NEEDED = EDESTADDRREQ;
  static int lastError() { return errno; }

  /// Has the system make ready what sockets and addresses need.
  static void start() {}
  static std::string nameOf(const I18NString& host) { return host.toStdString(); }
  static AddressInfo* lookUp(const std::string& name, const AddressInfo& hints) {
    AddressInfo* found = nullptr;
    return getaddrinfo(name.c_str(), nullptr, &hints, &found) == 0 ? found : nullptr;
  }
  static void free(AddressInfo* found) { freeaddrinfo(found); }

  /// A datagram socket; -1 when the system gives none.
  static Socket open(int family) {
    return beyondStandardStreams(::socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  }
  static bool setNonBlocking(Socket socket) {
    const int flags = fcntl(socket, F_GETFL);
    return flags != -1 && fcntl(socket, F_SETFL, flags | O_NONBLOCK) == 0;
  }
  static void close(Socket socket) { ::close(socket); }
  /// Whether receiving failed only in that the datagram was longer.
  static bool wasCut() { return false; }
  /// Either may be -1.
  static bool waitForEither(Socket first, Socket second, int milliseconds) {
    // A negative descriptor is left out by the system.
    pollfd waiting[] = {{first, POLLIN, 0}, {second, POLLIN, 0}};
    return poll(waiting, 2, milliseconds) > 0;
  }
};

#endif
