#include "core/LOGPackedEvent.h"

#include <cstring>
#include <new>
#include <string_view>

#include "core/LOGLoggingEvent.h"

namespace {

/// Larger events are rare, and copying them twice would cost more than it spares.
constexpr std::size_t LARGEST = 1024;

char* put(char* to, std::string_view text) noexcept {
  std::memcpy(to, text.data(), text.size());
  return to + text.size();
}

}  // namespace

LOG4ZEB_HOT std::size_t LOGPackedEvent::sizeOf(const LOGLoggingEvent& event) noexcept {
  const bool isUsual = event.m_hasPlainMessage && event.m_plainMessage.m_instance == nullptr &&
                       (event.m_rare == nullptr || event.m_rare->renderedMessage.isEmpty()) &&
                       event.m_plainMessage.m_string.isAscii() && event.m_loggerName.isAscii() &&
                       event.m_threadName.isAscii() && event.m_ndc.isAscii();
  if (!isUsual) {
    return 0;
  }
  const std::size_t size = sizeof(LOGPackedEvent) + event.m_loggerName.length() +
                           event.m_threadName.length() + event.m_ndc.length() +
                           event.m_plainMessage.m_string.length();
  return size > LARGEST ? 0 : (size + ALIGNMENT - 1) / ALIGNMENT * ALIGNMENT;
}

LOG4ZEB_HOT void LOGPackedEvent::pack(const LOGLoggingEvent& event, void* memory) noexcept {
  auto* const packed = new (memory) LOGPackedEvent;
  packed->m_timeStamp = event.m_timeStamp;
  packed->m_level = event.m_level;
  packed->m_logger = event.m_logger;
  packed->m_ndcLookupRequired = event.m_ndcLookupRequired;
  const std::string_view loggerName = event.m_loggerName.ascii();
  const std::string_view threadName = event.m_threadName.ascii();
  const std::string_view ndc = event.m_ndc.ascii();
  const std::string_view message = event.m_plainMessage.m_string.ascii();
  packed->m_loggerNameSize = static_cast<std::uint32_t>(loggerName.size());
  packed->m_threadNameSize = static_cast<std::uint32_t>(threadName.size());
  packed->m_ndcSize = static_cast<std::uint32_t>(ndc.size());
  packed->m_messageSize = static_cast<std::uint32_t>(message.size());
  char* end = put(static_cast<char*>(memory) + sizeof(LOGPackedEvent), loggerName);
  end = put(end, threadName);
  end = put(end, ndc);
  put(end, message);
}

LOG4ZEB_HOT LOGLoggingEvent* LOGPackedEvent::unpackInto(void* memory) const {
  auto* const event = new (memory) LOGLoggingEvent;
  event->m_timeStamp = m_timeStamp;
  event->m_level = m_level;
  event->m_logger = m_logger;
  event->m_ndcLookupRequired = m_ndcLookupRequired;
  event->m_hasPlainMessage = true;
  const char* text = reinterpret_cast<const char*>(this + 1);
  const auto next = [&text](std::uint32_t size) {
    const std::string_view view(text, size);
    text += size;
    return view;
  };
  try {
    event->m_loggerName.appendAscii(next(m_loggerNameSize));
    event->m_threadName.appendAscii(next(m_threadNameSize));
    event->m_ndc.appendAscii(next(m_ndcSize));
    event->m_plainMessage.m_string.appendAscii(next(m_messageSize));
  } catch (...) {
    event->~LOGLoggingEvent();
    throw;
  }
  return event;
}
