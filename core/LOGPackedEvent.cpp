#include "core/LOGPackedEvent.h"

#include <cstring>
#include <limits>
#include <string_view>

#include "core/LOGLoggingEvent.h"

static_assert(I18NBytes::INLINE_SIZE <= std::numeric_limits<std::uint8_t>::max());

namespace {

bool isShortAscii(const I18NString& text) noexcept {
  return text.isAscii() && text.length() <= I18NBytes::INLINE_SIZE;
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
  LOGPackedEvent packed;
  packed.m_timeStamp = event.m_timeStamp;
  packed.m_level = event.m_level;
  packed.m_logger = event.m_logger;
  packed.m_ndcLookupRequired = event.m_ndcLookupRequired;
  char* to = bytes + sizeof(packed);
  std::uint8_t* size = packed.m_sizes;
  for (const I18NString* const text : {&event.m_loggerName, &event.m_threadName, &event.m_ndc,
                                       &event.m_plainMessage.m_string}) {
    const std::string_view ascii = text->ascii();
    std::memcpy(to, ascii.data(), ascii.size());
    to += ascii.size();
    *size++ = static_cast<std::uint8_t>(ascii.size());
  }
  std::memcpy(bytes, &packed, sizeof(packed));
}

LOG4ZEB_HOT void LOGPackedEvent::unpack(const char* bytes, LOGLoggingEvent& event) noexcept {
  LOGPackedEvent packed;
  std::memcpy(&packed, bytes, sizeof(packed));
  bytes += sizeof(packed);
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
  const std::uint8_t* size = packed.m_sizes;
  for (I18NString* const text :
       {&event.m_loggerName, &event.m_threadName, &event.m_ndc, &event.m_plainMessage.m_string}) {
    text->clear();
    text->appendAscii(std::string_view(bytes, *size));
    bytes += *size++;
  }
}
