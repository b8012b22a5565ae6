#include "platform/ZEBDatagramSocket.h"

#include <algorithm>
#include <climits>

#include "ZEBSystemSockets.h"
#include "platform/ZEBSocketAddress.h"

namespace {

using Length = ZEBSystemSockets::Length;

/// More than any datagram; such a size fails, also where it would not fit the system's type.
constexpr std::size_t TOO_LARGE = 1U << 20;

ZEBSystemSockets::Socket systemSocket(std::int64_t socket) {
  return static_cast<ZEBSystemSockets::Socket>(socket);
}

const sockaddr* systemAddress(const ZEBSocketAddress& address) {
  return reinterpret_cast<const sockaddr*>(address.DOV_GetAddress());
}

Length systemLength(const ZEBSocketAddress& address) {
  return static_cast<Length>(address.getLength());
}

}  // namespace

ZEBDatagramSocket::~ZEBDatagramSocket() { close(); }

int ZEBDatagramSocket::succeeded(bool success) noexcept {
  if (!success) {
    m_lastError = ZEBSystemSockets::lastError();
  }
  return success ? 1 : 0;
}

int ZEBDatagramSocket::open(const ZEBSocketAddress& address) {
  close();
  m_socket = ZEBSystemSockets::open(address.isIPv6() != 0 ? AF_INET6 : AF_INET);
  return succeeded(m_socket != INVALID);
}

int ZEBDatagramSocket::bind(const ZEBSocketAddress& local) {
  return succeeded(::bind(systemSocket(m_socket), systemAddress(local), systemLength(local)) == 0);
}

int ZEBDatagramSocket::setBufferSizes(int bytes) {
  for (const int option : {SO_RCVBUF, SO_SNDBUF}) {
    if (setsockopt(systemSocket(m_socket), SOL_SOCKET, option,
                   reinterpret_cast<const char*>(&bytes), sizeof bytes) != 0) {
      return succeeded(false);
    }
  }
  return 1;
}

int ZEBDatagramSocket::setNonBlocking() {
  return succeeded(ZEBSystemSockets::setNonBlocking(systemSocket(m_socket)));
}

void ZEBDatagramSocket::close() noexcept {
  if (m_socket != INVALID) {
    ZEBSystemSockets::close(systemSocket(m_socket));
    m_socket = INVALID;
  }
}

std::int64_t ZEBDatagramSocket::send(const char* bytes, std::size_t size,
                                     const ZEBSocketAddress& destination) {
  if (destination.isResolved() == 0) {
    m_lastError = ZEBSystemSockets::DESTINATION_NEEDED;
    return -1;
  }
  const auto sent = sendto(systemSocket(m_socket), bytes,
                           static_cast<ZEBSystemSockets::Size>(std::min(size, TOO_LARGE)), 0,
                           systemAddress(destination), systemLength(destination));
  succeeded(sent != -1);
  return sent;
}

std::int64_t ZEBDatagramSocket::receive(char* bytes, std::size_t size, ZEBSocketAddress& sender) {
  sockaddr_storage from{};
  Length length = sizeof from;
  const auto capacity = static_cast<ZEBSystemSockets::Size>(std::min<std::size_t>(size, INT_MAX));
  std::int64_t received = recvfrom(systemSocket(m_socket), bytes, capacity, 0,
                                   reinterpret_cast<sockaddr*>(&from), &length);
  if (received == -1 && ZEBSystemSockets::wasCut()) {
    received = static_cast<std::int64_t>(capacity);
  }
  if (succeeded(received != -1) != 0) {
    sender.assign(&from, static_cast<std::size_t>(length));
  }
  return received;
}

int ZEBDatagramSocket::waitForEither(const ZEBDatagramSocket* first,
                                     const ZEBDatagramSocket* second, int milliseconds) {
  const auto socketOf = [](const ZEBDatagramSocket* socket) {
    return systemSocket(socket == nullptr ? INVALID : socket->m_socket);
  };
  return ZEBSystemSockets::waitForEither(socketOf(first), socketOf(second), milliseconds) ? 1 : 0;
}

int ZEBDatagramSocket::getLocalPort() const {
  sockaddr_storage bound{};
  Length length = sizeof bound;
  if (getsockname(systemSocket(m_socket), reinterpret_cast<sockaddr*>(&bound), &length) != 0) {
    return 0;
  }
  ZEBSocketAddress address("local");
  address.assign(&bound, static_cast<std::size_t>(length));
  return address.getPort();
}
