#ifndef NET_LOGSYSLOGQUIETWRITER_H
#define NET_LOGSYSLOGQUIETWRITER_H

#include "appenders/LOGQuietWriter.h"

/// Puts the priority that a syslog daemon expects in front of each text.
class LOG4ZEB_EXPORT LOGSyslogQuietWriter : public LOGQuietWriter {
 public:
  /// `facility` is a number of RFC 3164 times 8. The writer is not owned until close().
  LOGSyslogQuietWriter(LOGWriter* w, int facility, LOGErrorHandler* eh);

  /// Stores the severity of what is written next.
  /// Deliberate: the priority has the facility alone, so a daemon sees the severity emerg.
  void setLevel(int level) { m_level = level; }
  void setSyslogFacility(int facility) { m_syslogFacility = facility; }

  using LOGQuietWriter::write;
  void write(const I18NString& text) override;

 private:
  int m_syslogFacility;
  int m_level = 0;
};

#endif
