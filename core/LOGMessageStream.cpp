#include "core/LOGMessageStream.h"

#include <climits>
#include <new>

#include "core/LOGFailures.h"

LOGMessageStream::LOGMessageStream() : m_stream(&m_buffer) {}

LOGMessageStream::~LOGMessageStream() = default;

LOGMessageStream::Buffer::int_type LOGMessageStream::Buffer::overflow(int_type c) {
  const std::size_t size = bytes().size();
  if (size > INT_MAX) {
    m_lacksMemory = true;  // pbump() counts no further
    return traits_type::eof();
  }
  try {
    std::string larger(2 * size, '\0');
    bytes().copy(larger.data(), size);
    m_large.swap(larger);
  } catch (const std::bad_alloc&) {
    m_lacksMemory = true;
    throw;
  }
  setp(m_large.data(), m_large.data() + m_large.size());
  pbump(static_cast<int>(size));
  return traits_type::eq_int_type(c, traits_type::eof()) ? traits_type::not_eof(c)
                                                         : sputc(traits_type::to_char_type(c));
}

bool LOGMessageStream::isWhole() const noexcept {
  if (m_buffer.lacksMemory()) {
    logReportOutOfMemory("LOGMessageStream::finish -- no memory for a message, which is lost");
  }
  return !m_buffer.lacksMemory();
}
