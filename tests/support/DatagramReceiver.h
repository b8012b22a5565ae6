#ifndef TESTS_SUPPORT_DATAGRAMRECEIVER_H
#define TESTS_SUPPORT_DATAGRAMRECEIVER_H

#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "platform/ZEBDatagramSocket.h"
#include "platform/ZEBSocketAddress.h"

/// A listener for datagrams on this machine.
class DatagramReceiver {
 public:
  /// Port 0 is any free one. Ports below 1024, such as that of syslog, need the right to use them.
  explicit DatagramReceiver(const std::string& host = "127.0.0.1", int port = 0) {
    ZEBSocketAddress local("receiver");
    if (local.DOV_ResolveAddress(host, port) == 0 || m_socket.open(local) == 0 ||
        m_socket.bind(local) == 0 || m_socket.setNonBlocking() == 0) {
      throw std::system_error(m_socket.getLastError(), std::generic_category(),
                              "cannot receive at " + host + ":" + std::to_string(port));
    }
  }

  int port() const { return m_socket.getLocalPort(); }

  /// The next datagram, or nothing when none comes for so long.
  std::optional<std::string> next(int milliseconds = 5000) {
    ZEBDatagramSocket::waitForEither(&m_socket, nullptr, milliseconds);
    std::vector<char> bytes(70000);
    ZEBSocketAddress sender("sender");
    const auto size = m_socket.receive(bytes.data(), bytes.size(), sender);
    if (size == -1) {
      return std::nullopt;
    }
    return std::string(bytes.data(), static_cast<std::size_t>(size));
  }
  /// Nothing is there and nothing comes for a moment.
  bool isSilent() { return !next(100); }

 private:
  ZEBDatagramSocket m_socket;
};

/// Sends one datagram to a port of this machine.
inline void sendDatagram(int port, const std::string& bytes) {
  ZEBSocketAddress destination("destination");
  destination.DOV_ResolveAddress("127.0.0.1", port);
  ZEBDatagramSocket socket;
  if (socket.open(destination) == 0 ||
      socket.send(bytes.data(), bytes.size(), destination) != static_cast<long>(bytes.size())) {
    throw std::runtime_error("cannot send a datagram");
  }
}

#endif
