#ifndef CORE_LOGMESSAGESTREAM_H
#define CORE_LOGMESSAGESTREAM_H

#include <ostream>
#include <sstream>

#include "platform/I18NString.h"

/// Collects what the logging macros stream into one message.
class LOG4ZEB_EXPORT LOGMessageStream {
 public:
  LOGMessageStream();
  LOGMessageStream(const LOGMessageStream&) = delete;
  LOGMessageStream& operator=(const LOGMessageStream&) = delete;
  ~LOGMessageStream();

  std::ostream& stream() { return m_stream; }
  /// Makes the message. Returns false, and reports it, when there was no memory for all of it: a
  /// part of a message is none.
  bool finish() noexcept;
  const I18NString& text() const { return m_text; }

 private:
  /// Notices what a stream keeps to itself.
  class Buffer : public std::stringbuf {
   public:
    bool lacksMemory() const { return m_lacksMemory; }

   protected:
    int_type overflow(int_type c) override;

   private:
    bool m_lacksMemory = false;
  };

  Buffer m_buffer;
  std::ostream m_stream;
  I18NString m_text;
};

#endif
