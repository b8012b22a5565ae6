#ifndef CORE_LOGMESSAGESTREAM_H
#define CORE_LOGMESSAGESTREAM_H

#include <cstddef>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

#include "platform/LOG4ZEBExport.h"

/// Collects what the logging macros stream into one message. A message of the usual length stays in
/// the object itself, which takes half the time of a string stream.
class LOG4ZEB_EXPORT LOGMessageStream {
 public:
  LOGMessageStream();
  LOGMessageStream(const LOGMessageStream&) = delete;
  LOGMessageStream& operator=(const LOGMessageStream&) = delete;
  ~LOGMessageStream();

  std::ostream& stream() { return m_stream; }
  /// Returns false, and reports it, when there was no memory for all of the message: a part of one
  /// is none.
  bool isWhole() const noexcept;
  /// The message, valid until more is streamed.
  std::string_view utf8() const { return m_buffer.bytes(); }

 private:
  class Buffer : public std::streambuf {
   public:
    Buffer() { setp(m_room, m_room + sizeof m_room); }
    std::string_view bytes() const { return {pbase(), static_cast<std::size_t>(pptr() - pbase())}; }
    /// A stream keeps to itself that an exception ended it.
    bool lacksMemory() const { return m_lacksMemory; }

   protected:
    int_type overflow(int_type c) override;

   private:
    char m_room[256];
    std::string m_large;  // what did not fit into the room, and what came before it
    bool m_lacksMemory = false;
  };

  Buffer m_buffer;
  std::ostream m_stream;
};

#endif
