#include "net/LOGTCPSocketAppender.h"

#include "core/LOGLogLog.h"

constexpr const char* SOURCE = "LOGTCPSocketAppender";

LOGTCPSocketAppender::LOGTCPSocketAppender() {
  instance(SOURCE);
  m_name = SOURCE;
}

void LOGTCPSocketAppender::activateOptions() {
  if (m_activationPending != 0 && m_activationPending.exchange(0) == 1) {
    LOGLogLog::warn(
        "LOGTCPSocketAppender::activateOptions -- there is no connector: events for the appender "
        "named [" +
        m_name + "] are not sent");
  }
}

void LOGTCPSocketAppender::close() {
  m_closeRequested = true;
  m_closed = 1;
}
