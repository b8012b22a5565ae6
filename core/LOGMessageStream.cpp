#include "core/LOGMessageStream.h"

#include <new>

#include "core/LOGFailures.h"

LOGMessageStream::LOGMessageStream() : m_stream(&m_buffer) {}

LOGMessageStream::~LOGMessageStream() = default;

LOGMessageStream::Buffer::int_type LOGMessageStream::Buffer::overflow(int_type c) {
  try {
    return std::stringbuf::overflow(c);
  } catch (const std::bad_alloc&) {
    m_lacksMemory = true;
    throw;
  }
}

bool LOGMessageStream::finish() noexcept {
  constexpr const char* LOST = "LOGMessageStream::finish -- no memory for a message, which is lost";
  return logContainingFailures(LOGFailureTexts::same(LOST), [this] {
    if (m_buffer.lacksMemory()) {
      throw std::bad_alloc();
    }
    m_text = m_buffer.str();
  });
}
