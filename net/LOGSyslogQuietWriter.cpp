#include "net/LOGSyslogQuietWriter.h"

#include "platform/ZEBUtConvert.h"

LOGSyslogQuietWriter::LOGSyslogQuietWriter(LOGWriter* w, int facility, LOGErrorHandler* eh)
    : LOGQuietWriter(w, eh), m_syslogFacility(facility) {}

void LOGSyslogQuietWriter::write(const I18NString& text) {
  LOGQuietWriter::write("<" + ZEBUtConvert::handleCvt(m_syslogFacility) + ">" + text);
}
