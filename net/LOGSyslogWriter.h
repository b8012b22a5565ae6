#ifndef NET_LOGSYSLOGWRITER_H
#define NET_LOGSYSLOGWRITER_H

#include "appenders/LOGWriter.h"
#include "platform/ZEBDatagramSocket.h"
#include "platform/ZEBSocketAddress.h"

/// Sends each text as one UDP datagram, in UTF-8, to port 514 of a host. What goes wrong is
/// reported in the diagnostics and the text is lost: nothing waits and nothing is sent again.
class LOG4ZEB_EXPORT LOGSyslogWriter : public LOGWriter {
 public:
  static constexpr int SYSLOG_PORT = 514;

  /// Without init() nothing can be sent. An empty host is this machine.
  explicit LOGSyslogWriter(const I18NString& syslogHost);
  LOGSyslogWriter(const LOGSyslogWriter&) = delete;
  LOGSyslogWriter& operator=(const LOGSyslogWriter&) = delete;
  /// Closes the socket.
  ~LOGSyslogWriter() override;

  /// Makes the socket and looks the host up. Failures are reported; the writer then reports every
  /// text that it cannot send.
  void init();
  /// Deliberate: the report of a failure names the host of the writer that was made last.
  void write(const I18NString& text) override;
  /// The same for UTF-8 up to a terminating zero; null is sent as an empty datagram.
  void write(char* text) { write(I18NString(text)); }
  /// Nothing is held back.
  void flush() override {}
  /// Does nothing: the socket is open as long as this object lives.
  void close() {}

 private:
  static I18NString sharedHost();

  ZEBDatagramSocket m_socket;
  ZEBSocketAddress m_destination;
  const I18NString m_host;

  static I18NString* m_syslogHost;  // never freed: appenders are used by static destructors too
};

#endif
