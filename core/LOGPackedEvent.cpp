#include "core/LOGPackedEvent.h"

#include <cstring>
#include <limits>
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
                       !event.isRendered() && isShortAscii(message) &&
                       isShortAscii(event.m_loggerName) && isShortAscii(event.m_threadName) &&
                       isShortAscii(event.m_ndc);
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

LOG4ZEB_HOT void LOGPackedEvent::unpack(const char* bytes, LOGLoggingEvent& event) noexcept {
  LOGPackedEvent packed;
  std::memcpy(&packed, bytes, sizeof(packed));
  bytes += sizeof(packed);
  const auto next = [&bytes](I18NString& text, std::uint32_t size) {
    text.clear();
    text.appendAscii(std::string_view(bytes, size));
    bytes += size;
  };
  event.m_timeStamp = packed.m_timeStamp;
  event.m_sequence = std::numeric_limits<std::int32_t>::min();
  event.m_level = packed.m_level;
  event.m_logger = packed.m_logger;
  event.m_ndcLookupRequired = packed.m_ndcLookupRequired;
  event.m_mdcCopyLookupRequired = 1;
  event.m_hasPlainMessage = true;
  event.m_message.reset();
  event.m_rare.reset();
  event.m_plainMessage.m_instance.reset();
  next(event.m_loggerName, packed.m_loggerNameSize);
  next(event.m_threadName, packed.m_threadNameSize);
  next(event.m_ndc, packed.m_ndcSize);
  next(event.m_plainMessage.m_string, packed.m_messageSize);
}
