#include "net/LOGSyslogWriter.h"

#include <string>
#include <string_view>

#include "core/LOGLogLog.h"
#include "platform/ZEBThreadGuard.h"

namespace {

constexpr const char* ADDRESS_NAME = "DOV_Crypto_Interface";
constexpr const char* LOCAL_HOST = "localhost";
constexpr const char* ALL_IPV4 = "";
constexpr const char* ALL_IPV6 = "::";
constexpr int ANY_PORT = 0;

ZEBThreadCriticalSection g_hostLock;  // guards LOGSyslogWriter::m_syslogHost

}  // namespace

I18NString* LOGSyslogWriter::m_syslogHost = nullptr;

LOGSyslogWriter::LOGSyslogWriter(const I18NString& syslogHost)
    : m_destination(ADDRESS_NAME), m_host(syslogHost) {
  const ZEBThreadGuard guard(g_hostLock);
  if (m_syslogHost == nullptr) {
    m_syslogHost = new I18NString;
  }
  *m_syslogHost = syslogHost;
}

LOGSyslogWriter::~LOGSyslogWriter() = default;

I18NString LOGSyslogWriter::sharedHost() {
  const ZEBThreadGuard guard(g_hostLock);
  return *m_syslogHost;
}

void LOGSyslogWriter::init() {
  // The host comes first, because the socket has to be of its kind.
  m_destination.DOV_ResolveAddress(m_host.isEmpty() ? I18NString(LOCAL_HOST) : m_host, SYSLOG_PORT);
  ZEBSocketAddress local(ADDRESS_NAME);
  local.DOV_ResolveAddress(m_destination.isIPv6() != 0 ? ALL_IPV6 : ALL_IPV4, ANY_PORT);
  if (m_socket.open(local) != 0 && m_socket.bind(local) != 0 && m_destination.isResolved() == 0) {
    LOGLogLog::error("LOGSyslogWriter::init --- Error in converting address.");
  }
  if (m_socket.setNonBlocking() == 0) {
    LOGLogLog::error("LOGSyslogWriter::init --- ioctlsocket function failed");
  }
}

void LOGSyslogWriter::write(const I18NString& text) {
  std::string scratch;
  const std::string_view bytes = text.narrow(scratch);
  if (m_socket.send(bytes.data(), bytes.size(), m_destination) == -1) {
    const I18NString host = sharedHost();
    LOGLogLog::error("LOGSyslogWriter::write --- Could not send data to " +
                     (host.isEmpty() ? I18NString("the localhost") : host));
  }
}
