#ifndef CORE_LOGMESSAGESTREAM_H
#define CORE_LOGMESSAGESTREAM_H

#include <sstream>

#include "platform/I18NString.h"

/// Collects what the logging macros stream into one message.
class LOGMessageStream {
 public:
  std::ostream& stream() { return m_stream; }
  I18NString text() const { return m_stream.str(); }

 private:
  std::ostringstream m_stream;
};

#endif
