#ifndef APPENDERS_LOGWRITER_H
#define APPENDERS_LOGWRITER_H

#include "platform/I18NString.h"

/// A stream of text that is not a file, such as the datagrams of a syslog daemon.
class LOG4ZEB_EXPORT LOGWriter {
 public:
  virtual ~LOGWriter();
  virtual void write(const I18NString& text) = 0;
  virtual void flush() = 0;
};

#endif
