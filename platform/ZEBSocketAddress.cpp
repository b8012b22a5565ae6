#include "platform/ZEBSocketAddress.h"

#include <cstring>
#include <memory>
#include <string>

#include "ZEBSystemSockets.h"

namespace {

static_assert(ZEBSocketAddress::STORAGE_SIZE >= sizeof(sockaddr_storage), "every address must fit");

constexpr int MAXIMUM_PORT = 65535;

using AddressInfo = ZEBSystemSockets::AddressInfo;

/// The first IPv4 address, or the first of IPv6, or null.
const AddressInfo* choose(const AddressInfo* list) {
  const AddressInfo* other = nullptr;
  for (; list != nullptr; list = list->ai_next) {
    if (list->ai_family == AF_INET) {
      return list;
    }
    if (list->ai_family == AF_INET6 && other == nullptr) {
      other = list;
    }
  }
  return other;
}

template <typename Address>
Address read(const unsigned char* storage) {
  Address address{};
  std::memcpy(&address, storage, sizeof address);
  return address;
}

}  // namespace

void ZEBSocketAddress::assign(const void* address, std::size_t length) noexcept {
  std::memset(m_storage, 0, sizeof m_storage);
  if (length != 0) {
    std::memcpy(m_storage, address, length);
  }
  m_length = length;
}

int ZEBSocketAddress::DOV_ResolveAddress(const I18NString& host, int port) {
  ZEBSystemSockets::start();
  assign(nullptr, 0);
  if (port < 0 || port > MAXIMUM_PORT) {
    return 0;
  }
  const auto networkPort = htons(static_cast<std::uint16_t>(port));
  if (host.isEmpty()) {
    sockaddr_in wildcard{};
    wildcard.sin_family = AF_INET;
    wildcard.sin_port = networkPort;
    wildcard.sin_addr.s_addr = htonl(INADDR_ANY);
    assign(&wildcard, sizeof wildcard);
    return 1;
  }
  const auto name = ZEBSystemSockets::nameOf(host);
  AddressInfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_DGRAM;
  hints.ai_flags = AI_NUMERICHOST;
  AddressInfo* found = ZEBSystemSockets::lookUp(name, hints);
  if (found == nullptr) {
    hints.ai_flags = 0;
    found = ZEBSystemSockets::lookUp(name, hints);
  }
  const auto free = [](AddressInfo* list) { ZEBSystemSockets::free(list); };
  const std::unique_ptr<AddressInfo, decltype(free)> list(found, free);
  const AddressInfo* const chosen = choose(found);
  if (chosen == nullptr) {
    return 0;
  }
  if (chosen->ai_family == AF_INET) {
    reinterpret_cast<sockaddr_in*>(chosen->ai_addr)->sin_port = networkPort;
  } else {
    reinterpret_cast<sockaddr_in6*>(chosen->ai_addr)->sin6_port = networkPort;
  }
  assign(chosen->ai_addr, chosen->ai_addrlen);
  return 1;
}

int ZEBSocketAddress::isIPv6() const noexcept {
  return read<sockaddr>(m_storage).sa_family == AF_INET6 ? 1 : 0;
}

int ZEBSocketAddress::getPort() const noexcept {
  return ntohs(isIPv6() != 0 ? read<sockaddr_in6>(m_storage).sin6_port
                             : read<sockaddr_in>(m_storage).sin_port);
}

I18NString ZEBSocketAddress::toString() const {
  char host[NI_MAXHOST] = "";
  const auto address = read<sockaddr_storage>(m_storage);
  if (m_length == 0 || getnameinfo(reinterpret_cast<const sockaddr*>(&address),
                                   static_cast<ZEBSystemSockets::Length>(m_length), host,
                                   sizeof host, nullptr, 0, NI_NUMERICHOST) != 0) {
    return {};
  }
  const std::string text = isIPv6() != 0 ? "[" + std::string(host) + "]" : host;
  return text + ":" + std::to_string(getPort());
}
