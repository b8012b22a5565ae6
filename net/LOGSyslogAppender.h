#ifndef NET_LOGSYSLOGAPPENDER_H
#define NET_LOGSYSLOGAPPENDER_H

#include <atomic>
#include <memory>

#include "appenders/LOGAppenderSkeleton.h"

class LOGSyslogQuietWriter;

/// Sends each event as one UDP datagram to a syslog daemon, at port 514 of a host: "<", the
/// facility,
/// ">" and the text of the layout, which it needs. An event with a throwable gives a second
/// datagram with the throwable's text. Nothing waits for the daemon; what cannot be sent is
/// reported in the diagnostics and lost. Options are to be set before the appender is in use.
class LOG4ZEB_EXPORT LOGSyslogAppender : public LOGAppenderSkeleton {
 public:
  static constexpr int DEFAULT_FACILITY = 8;
  /// Stands before the text of a throwable.
  static constexpr const char* TAB = "\t";

  /// Facility user; the host, as long as none is set, is this machine.
  LOGSyslogAppender();
  /// The layout is not owned. A facility that is not in the table becomes user.
  LOGSyslogAppender(LOGLayout* layout, int facility);
  /// Sets the host at once, as setSyslogHost() does.
  LOGSyslogAppender(LOGLayout* layout, const I18NString& host, int facility);
  LOGSyslogAppender(const LOGSyslogAppender&) = delete;
  LOGSyslogAppender& operator=(const LOGSyslogAppender&) = delete;
  /// Closes.
  ~LOGSyslogAppender() override;

  /// Makes the socket and looks the host up, the first time it is called and unless a host was set
  /// before or the appender is closed. Throws ZEBOutOfMemoryError. Takes the appender's lock.
  void activateOptions() override;
  /// Frees the socket for good. Takes the appender's lock.
  void close() override;
  /// 1.
  int requiresLayout() override { return 1; }
  void setErrorHandler(LOGErrorHandler* errorHandler) override;

  /// Looks the host up at once and sends there from now on; empty is this machine. On a closed
  /// appender it only stores the name. Takes the appender's lock.
  void setSyslogHost(const I18NString& host);
  const I18NString& getSyslogHost() const { return m_syslogHost; }
  /// Takes the name of a facility, whatever its case; a name that is not in the table means user,
  /// an empty one changes nothing. Takes the appender's lock.
  void setFacility(const I18NString& name);
  /// The facility's name and a colon, such as "user:".
  const I18NString& getFacility() const { return m_facilityString; }
  /// With a value other than 0 every message begins with the facility's name and a colon.
  void setFacilityPrinting(int printing) { m_facilityPrinting = printing; }
  int getFacilityPrinting() const { return m_facilityPrinting; }

  /// The code of the facility of that name, whatever its case: its number in RFC 3164 times 8; -1
  /// for any other text.
  static int getFacility(const I18NString& name);
  /// The name for a code, empty for any other number.
  static I18NString getFacilityString(int code);

  void append(LOGLoggingEvent* event) override;

 private:
  void initFacility(int code);
  void openWriter(const I18NString& host);
  void closeWriter();

  // All guarded by the appender's lock, but for the atomics.
  int m_facility = DEFAULT_FACILITY;
  I18NString m_facilityString;
  std::atomic<int> m_facilityPrinting{0};
  std::unique_ptr<LOGSyslogQuietWriter> m_quietWriter;
  I18NString m_syslogHost;
  std::atomic<int> m_activationPending{1};
};

#endif
