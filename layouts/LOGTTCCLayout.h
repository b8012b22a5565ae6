#ifndef LAYOUTS_LOGTTCCLAYOUT_H
#define LAYOUTS_LOGTTCCLAYOUT_H

#include "layouts/LOGDateLayout.h"

/// Writes a line of time, thread, level, category and diagnostic context before the message, such
/// as "00,-250 [4711] INFO app.db - connected".
class LOG4ZEB_EXPORT LOGTTCCLayout : public LOGDateLayout {
 public:
  /// Dates in the format "RELATIVE".
  LOGTTCCLayout();
  explicit LOGTTCCLayout(const I18NString& dateFormat);

  /// Throws ZEBAssertError for a null event and for an event without a level. Any other failure is
  /// reported, and the line is returned as far as it was built.
  const I18NString& format(LOGLoggingEvent* event) override;
  int ignoresThrowable() override { return 1; }

  // The flags are 0 or 1. Thread and logger printing are on at first, context printing is off.
  virtual void setThreadPrinting(int threadPrinting) { m_threadPrinting = threadPrinting; }
  virtual int getThreadPrinting() const { return m_threadPrinting; }
  /// This flag is only kept: the name of the logger is always written.
  virtual void setLoggerPrefixing(int loggerPrefixing) { m_loggerPrefixing = loggerPrefixing; }
  virtual int getLoggerPrefixing() const { return m_loggerPrefixing; }
  virtual void setContextPrinting(int contextPrinting) { m_contextPrinting = contextPrinting; }
  virtual int getContextPrinting() const { return m_contextPrinting; }

 private:
  void buildLine(I18NString& line, LOGLoggingEvent& event);

  int m_threadPrinting = 1;
  int m_categoryPrefixing = 1;
  int m_loggerPrefixing = 1;
  int m_contextPrinting = 0;
};

#endif
