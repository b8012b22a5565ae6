#ifndef PLATFORM_ZEBSOCKETADDRESS_H
#define PLATFORM_ZEBSOCKETADDRESS_H

#include <cstddef>

#include "platform/I18NString.h"

/// An address and port that datagrams are sent to, come from or are received at, in the form that
/// the operating system uses. Until it is resolved it is no address, and nothing can be sent to it.
class LOG4ZEB_EXPORT ZEBSocketAddress {
 public:
  static constexpr std::size_t STORAGE_SIZE = 128;

  /// The name is kept for callers that pass one; it has no meaning.
  explicit ZEBSocketAddress(const I18NString& /*name*/) {}

  /// Makes this the address of `host`, or of all local addresses (IPv4) when `host` is empty. A
  /// numeric host is taken as it is, any other is looked up, which may take as long as the system's
  /// name service does; of several addresses an IPv4 one is preferred. "::" is all local addresses
  /// with IPv6. Returns 1, or 0 when there is no such host or `port` is not within 0 to 65535:
  /// then this is no address.
  int DOV_ResolveAddress(const I18NString& host, int port);
  /// The operating system's form, all zero before it is resolved; valid as long as this object.
  const unsigned char* DOV_GetAddress() const noexcept { return m_storage; }
  /// How many bytes of it count, 0 before it is resolved.
  std::size_t getLength() const noexcept { return m_length; }

  int isResolved() const noexcept { return m_length != 0 ? 1 : 0; }
  /// 1 for an IPv6 address, else 0.
  int isIPv6() const noexcept;
  /// 0 before it is resolved.
  int getPort() const noexcept;
  /// The numeric form, such as "127.0.0.1:514" or "[::1]:514"; empty before it is resolved.
  I18NString toString() const;

 private:
  friend class ZEBDatagramSocket;
  void assign(const void* address, std::size_t length) noexcept;

  alignas(8) unsigned char m_storage[STORAGE_SIZE] = {};
  std::size_t m_length = 0;
};

#endif
