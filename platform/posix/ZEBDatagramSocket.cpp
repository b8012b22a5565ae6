#include "platform/ZEBDatagramSocket.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "platform/ZEBSocketAddress.h"
#include "platform/posix/BeyondStandardStreams.h"

namespace {

int descriptorOf(std::int64_t socket) { return static_cast<int>(socket); }

const sockaddr* systemAddress(const ZEBSocketAddress& address) {
  return reinterpret_cast<const sockaddr*>(address.DOV_GetAddress());
}

socklen_t systemLength(const ZEBSocketAddress& address) {
  return static_cast<socklen_t>(address.getLength());
}

}  // namespace

ZEBDatagramSocket::~ZEBDatagramSocket() { close(); }

int ZEBDatagramSocket::succeeded(bool success) noexcept {
  if (!success) {
    m_lastError = errno;
  }
  return success ? 1 : 0;
}

int ZEBDatagramSocket::open(const ZEBSocketAddress& address) {
  close();
  const int family = address.isIPv6() != 0 ? AF_INET6 : AF_INET;
  m_socket = beyondStandardStreams(::socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  return succeeded(m_socket != INVALID);
}

int ZEBDatagramSocket::bind(const ZEBSocketAddress& local) {
  return succeeded(::bind(descriptorOf(m_socket), systemAddress(local), systemLength(local)) == 0);
}

int ZEBDatagramSocket::setBufferSizes(int bytes) {
  for (const int option : {SO_RCVBUF, SO_SNDBUF}) {
    if (setsockopt(descriptorOf(m_socket), SOL_SOCKET, option, &bytes, sizeof bytes) != 0) {
      return succeeded(false);
    }
  }
  return 1;
}

int ZEBDatagramSocket::setNonBlocking() {
  const int flags = fcntl(descriptorOf(m_socket), F_GETFL);
  return succeeded(flags != -1 && fcntl(descriptorOf(m_socket), F_SETFL, flags | O_NONBLOCK) == 0);
}

void ZEBDatagramSocket::close() noexcept {
  if (m_socket != INVALID) {
    ::close(descriptorOf(m_socket));
    m_socket = INVALID;
  }
}

std::int64_t ZEBDatagramSocket::send(const char* bytes, std::size_t size,
                                     const ZEBSocketAddress& destination) {
  if (destination.isResolved() == 0) {
    errno = EDESTADDRREQ;
    succeeded(false);
    return -1;
  }
  const ssize_t sent = sendto(descriptorOf(m_socket), bytes, size, 0, systemAddress(destination),
                              systemLength(destination));
  succeeded(sent != -1);
  return sent;
}

std::int64_t ZEBDatagramSocket::receive(char* bytes, std::size_t size, ZEBSocketAddress& sender) {
  sockaddr_storage from{};
  socklen_t length = sizeof from;
  const ssize_t received =
      recvfrom(descriptorOf(m_socket), bytes, size, 0, reinterpret_cast<sockaddr*>(&from), &length);
  if (succeeded(received != -1) != 0) {
    sender.assign(&from, length);
  }
  return received;
}

int ZEBDatagramSocket::waitForEither(const ZEBDatagramSocket* first,
                                     const ZEBDatagramSocket* second, int milliseconds) {
  // A negative descriptor is left out by the system.
  pollfd waiting[] = {{first == nullptr ? -1 : descriptorOf(first->m_socket), POLLIN, 0},
                      {second == nullptr ? -1 : descriptorOf(second->m_socket), POLLIN, 0}};
  return poll(waiting, 2, milliseconds) > 0 ? 1 : 0;
}

int ZEBDatagramSocket::getLocalPort() const {
  sockaddr_storage bound{};
  socklen_t length = sizeof bound;
  if (getsockname(descriptorOf(m_socket), reinterpret_cast<sockaddr*>(&bound), &length) != 0) {
    return 0;
  }
  ZEBSocketAddress address("local");
  address.assign(&bound, length);
  return address.getPort();
}
