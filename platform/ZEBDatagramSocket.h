#ifndef PLATFORM_ZEBDATAGRAMSOCKET_H
#define PLATFORM_ZEBDATAGRAMSOCKET_H

#include <cstddef>
#include <cstdint>

#include "platform/I18NString.h"

class ZEBSocketAddress;

/// A UDP socket, for sending or for receiving datagrams. It is not inherited by programs that the
/// process starts. Operations return 1, or 0 when they fail; on a socket that is not open all of
/// them fail. An object is used by one thread at a time.
class LOG4ZEB_EXPORT ZEBDatagramSocket {
 public:
  ZEBDatagramSocket() = default;
  ZEBDatagramSocket(const ZEBDatagramSocket&) = delete;
  ZEBDatagramSocket& operator=(const ZEBDatagramSocket&) = delete;
  /// Closes the socket.
  ~ZEBDatagramSocket();

  /// Makes a socket for addresses of the kind of `address`, IPv4 or IPv6. One that was open is
  /// closed first.
  int open(const ZEBSocketAddress& address);
  int isOpen() const noexcept { return m_socket != INVALID ? 1 : 0; }
  int bind(const ZEBSocketAddress& local);
  /// The sizes, in bytes, of what may wait to be read and to be sent; the system may round them.
  int setBufferSizes(int bytes);
  /// From now on an operation that would have to wait fails instead.
  int setNonBlocking();
  void close() noexcept;

  /// Sends one datagram. Returns `size`, or -1 when it was not sent, because the buffer is full, it
  /// is larger than a datagram can be, or `destination` is not resolved.
  std::int64_t send(const char* bytes, std::size_t size, const ZEBSocketAddress& destination);
  /// Receives one datagram, what exceeds `size` bytes being lost, and makes `sender` the address it
  /// came from. Returns its length, or -1 when there is none.
  std::int64_t receive(char* bytes, std::size_t size, ZEBSocketAddress& sender);
  /// Waits until `first` or `second`, which may be null, has a datagram to receive or
  /// `milliseconds` are over; a signal ends it too. Returns whether one has.
  static int waitForEither(const ZEBDatagramSocket* first, const ZEBDatagramSocket* second,
                           int milliseconds);

  /// The port the socket is bound to, or 0.
  int getLocalPort() const;
  /// The operating system's code of the last failure, 0 at first.
  int getLastError() const noexcept { return m_lastError; }

 private:
  static constexpr std::int64_t INVALID = -1;

  int succeeded(bool success) noexcept;

  std::int64_t m_socket = INVALID;
  int m_lastError = 0;
};

#endif
