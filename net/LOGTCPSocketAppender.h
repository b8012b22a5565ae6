#ifndef NET_LOGTCPSOCKETAPPENDER_H
#define NET_LOGTCPSOCKETAPPENDER_H

#include <atomic>

#include "appenders/LOGAppenderSkeleton.h"

/// Keeps the options of an appender that sends events to a server over TCP, so that documents which
/// name it configure. The library has no connector: events that reach this appender are not sent,
/// and it says so once in the diagnostics when it is first activated.
class LOG4ZEB_EXPORT LOGTCPSocketAppender : public LOGAppenderSkeleton {
 public:
  /// No host, port 0, delay 0, and both switches off.
  LOGTCPSocketAppender();
  LOGTCPSocketAppender(const LOGTCPSocketAppender&) = delete;
  LOGTCPSocketAppender& operator=(const LOGTCPSocketAppender&) = delete;

  /// Warns the first time.
  void activateOptions() override;
  void close() override;
  /// 0.
  int requiresLayout() override { return 0; }

  void setRemoteHost(const I18NString& host) { m_remoteHost = host; }
  const I18NString& getRemoteHost() const { return m_remoteHost; }
  void setPort(int port) { m_port = port; }
  int getPort() const { return m_port; }
  void setLocationInfo(int locationInfo) { m_locationInfo = locationInfo; }
  int getLocationInfo() const { return m_locationInfo; }
  void setSecure(int secure) { m_secure = secure; }
  int getSecure() const { return m_secure; }
  void setReconnectionDelay(int delay) { m_reconnectionDelay = delay; }
  int getReconnectionDelay() const { return m_reconnectionDelay; }

  void append(LOGLoggingEvent*) override {}

 private:
  I18NString m_remoteHost;
  int m_port = 0;
  int m_locationInfo = 0;
  int m_secure = 0;
  int m_reconnectionDelay = 0;
  std::atomic<int> m_activationPending{1};
};

#endif
