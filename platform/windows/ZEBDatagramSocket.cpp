#include "platform/ZEBDatagramSocket.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <climits>

#include "platform/ZEBSocketAddress.h"
#include "platform/windows/ZEBSystemSockets.h"

namespace {

static_assert(static_cast<std::int64_t>(INVALID_SOCKET) == -1, "no socket is -1");

// The headers may not have it.
constexpr DWORD REPORT_UNREACHABLE_PORTS = _WSAIOW(IOC_VENDOR, 12);

SOCKET socketOf(std::int64_t socket) { return static_cast<SOCKET>(socket); }

const sockaddr* systemAddress(const ZEBSocketAddress& address) {
  return reinterpret_cast<const sockaddr*>(address.DOV_GetAddress());
}

int systemLength(const ZEBSocketAddress& address) { return static_cast<int>(address.getLength()); }

}  // namespace

ZEBDatagramSocket::~ZEBDatagramSocket() { close(); }

int ZEBDatagramSocket::succeeded(bool success) noexcept {
  if (!success) {
    m_lastError = WSAGetLastError();
  }
  return success ? 1 : 0;
}

int ZEBDatagramSocket::open(const ZEBSocketAddress& address) {
  close();
  ZEBSystemSockets::start();
  const int family = address.isIPv6() != 0 ? AF_INET6 : AF_INET;
  const SOCKET opened = WSASocketW(family, SOCK_DGRAM, IPPROTO_UDP, nullptr, 0,
                                   WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT);
  m_socket = static_cast<std::int64_t>(opened);
  if (succeeded(m_socket != INVALID) == 0) {
    return 0;
  }
  // A datagram that nobody took must not make receiving the next one fail. Systems that do not know
  // this do not do that either.
  BOOL report = FALSE;
  DWORD ignored = 0;
  WSAIoctl(opened, REPORT_UNREACHABLE_PORTS, &report, sizeof report, nullptr, 0, &ignored, nullptr,
           nullptr);
  return 1;
}

int ZEBDatagramSocket::bind(const ZEBSocketAddress& local) {
  return succeeded(::bind(socketOf(m_socket), systemAddress(local), systemLength(local)) == 0);
}

int ZEBDatagramSocket::setBufferSizes(int bytes) {
  for (const int option : {SO_RCVBUF, SO_SNDBUF}) {
    if (setsockopt(socketOf(m_socket), SOL_SOCKET, option, reinterpret_cast<const char*>(&bytes),
                   sizeof bytes) != 0) {
      return succeeded(false);
    }
  }
  return 1;
}

int ZEBDatagramSocket::setNonBlocking() {
  u_long on = 1;
  return succeeded(ioctlsocket(socketOf(m_socket), static_cast<long>(FIONBIO), &on) == 0);
}

void ZEBDatagramSocket::close() noexcept {
  if (m_socket != INVALID) {
    closesocket(socketOf(m_socket));
    m_socket = INVALID;
  }
}

std::int64_t ZEBDatagramSocket::send(const char* bytes, std::size_t size,
                                     const ZEBSocketAddress& destination) {
  if (destination.isResolved() == 0) {
    WSASetLastError(WSAEDESTADDRREQ);
    succeeded(false);
    return -1;
  }
  // What is larger than any datagram fails, also where it would wrap.
  constexpr std::size_t TOO_LARGE = 1U << 20;
  const int sent = sendto(socketOf(m_socket), bytes, static_cast<int>(std::min(size, TOO_LARGE)), 0,
                          systemAddress(destination), systemLength(destination));
  succeeded(sent != SOCKET_ERROR);
  return sent;
}

std::int64_t ZEBDatagramSocket::receive(char* bytes, std::size_t size, ZEBSocketAddress& sender) {
  sockaddr_storage from{};
  int length = sizeof from;
  const int capacity = static_cast<int>(std::min<std::size_t>(size, INT_MAX));
  int received =
      recvfrom(socketOf(m_socket), bytes, capacity, 0, reinterpret_cast<sockaddr*>(&from), &length);
  if (received == SOCKET_ERROR && WSAGetLastError() == WSAEMSGSIZE) {
    received = capacity;  // it was longer, and its beginning is there
  }
  if (succeeded(received != SOCKET_ERROR) != 0) {
    sender.assign(&from, static_cast<std::size_t>(length));
  }
  return received;
}

int ZEBDatagramSocket::waitForEither(const ZEBDatagramSocket* first,
                                     const ZEBDatagramSocket* second, int milliseconds) {
  WSAPOLLFD waiting[2];
  ULONG count = 0;
  for (const ZEBDatagramSocket* const socket : {first, second}) {
    if (socket != nullptr && socket->m_socket != INVALID) {
      waiting[count++] = {socketOf(socket->m_socket), POLLRDNORM, 0};
    }
  }
  if (count == 0) {
    Sleep(static_cast<DWORD>(milliseconds));
    return 0;
  }
  return WSAPoll(waiting, count, milliseconds) > 0 ? 1 : 0;
}

int ZEBDatagramSocket::getLocalPort() const {
  sockaddr_storage bound{};
  int length = sizeof bound;
  if (getsockname(socketOf(m_socket), reinterpret_cast<sockaddr*>(&bound), &length) != 0) {
    return 0;
  }
  ZEBSocketAddress address("local");
  address.assign(&bound, static_cast<std::size_t>(length));
  return address.getPort();
}
