#include "core/LOGPackedEvent.h"

#include <cstring>
#include <new>
#include <string_view>

#include "core/LOGLoggingEvent.h"

namespace {

bool isShortAscii(const I18NString& text) noexcept {
  return text.isAscii() && text.length() <= I18NBytes::INLINE_SIZE;
}

char* put(char* to, std::string_view text) noexcept {
  std::memcpy(to, text.data(), text.size());
  return to + text.size();
}

}  // namespace

LOG4ZEB_HOT std::size_t LOGPackedEvent::sizeOf(const LOGLoggingEvent& event) noexcept {
  const I18NString& message = event.m_plainMessage.m_string;
  const bool isUsual = event.m_hasPlainMessage && event.m_plainMessage.m_instance == nullptr &&
                       (event.m_rare == nullptr || event.m_rare->renderedMessage.isEmpty()) &&
                       isShortAscii(message) && isShortAscii(event.m_loggerName) &&
                       isShortAscii(event.m_threadName) && isShortAscii(event.m_ndc);
  return isUsual ? sizeof(LOGPackedEvent) + event.m_loggerName.length() +
                       event.m_threadName.length() + event.m_ndc.length() + message.length()
                 : 0;
}

LOG4ZEB_HOT void LOGPackedEvent::pack(const LOGLoggingEvent& event, char* bytes) noexcept {
  const std::string_view loggerName = event.m_loggerName.ascii();
  const std::string_view threadName = event.m_threadName.ascii();
  const std::string_view ndc = event.m_ndc.ascii();
  const std::string_view message = event.m_plainMessage.m_string.ascii();
  LOGPackedEvent packed;
  packed.m_timeStamp = event.m_timeStamp;
  packed.m_level = event.m_level;
  packed.m_logger = event.m_logger;
  packed.m_ndcLookupRequired = event.m_ndcLookupRequired;
  packed.m_loggerNameSize = static_cast<std::uint32_t>(loggerName.size());
  packed.m_threadNameSize = static_cast<std::uint32_t>(threadName.size());
  packed.m_ndcSize = static_cast<std::uint32_t>(ndc.size());
  packed.m_messageSize = static_cast<std::uint32_t>(message.size());
  std::memcpy(bytes, &packed, sizeof(packed));
  put(put(put(put(bytes + sizeof(packed), loggerName), threadName), ndc), message);
}

LOG4ZEB_HOT LOGLoggingEvent* LOGPackedEvent::unpack(const char* bytes, void* memory) noexcept {
  LOGPackedEvent packed;
  std::memcpy(&packed, bytes, sizeof(packed));
  bytes += sizeof(packed);
  const auto next = [&bytes](std::uint32_t size) {
    const std::string_view text(bytes, size);
    bytes += size;
    return text;
  };
  auto* const event = new (memory) LOGLoggingEvent;
  event->m_timeStamp = packed.m_timeStamp;
  event->m_level = packed.m_level;
  event->m_logger = packed.m_logger;
  event->m_ndcLookupRequired = packed.m_ndcLookupRequired;
  event->m_hasPlainMessage = true;
  event->m_loggerName.appendAscii(next(packed.m_loggerNameSize));
  event->m_threadName.appendAscii(next(packed.m_threadNameSize));
  event->m_ndc.appendAscii(next(packed.m_ndcSize));
  event->m_plainMessage.m_string.appendAscii(next(packed.m_messageSize));
  return event;
}
