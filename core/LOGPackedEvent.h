#ifndef CORE_LOGPACKEDEVENT_H
#define CORE_LOGPACKEDEVENT_H

#include <cstddef>
#include <cstdint>

class LOGLevel;
class LOGLogger;
class LOGLoggingEvent;

/// An event as it travels from thread to thread: its parts side by side, texts without the room
/// around them, so that two or three cache lines change hands in place of eight or nine. Only what
/// nearly all events consist of can travel so, texts that an I18NString holds without an allocation
/// among it; other events are passed as they are.
class LOGPackedEvent {
 public:
  /// How many bytes `event` takes, header included, 0 when it cannot be packed.
  static std::size_t sizeOf(const LOGLoggingEvent& event) noexcept;
  /// Puts sizeOf(event) bytes, which is not 0, where `bytes` points to.
  static void pack(const LOGLoggingEvent& event, char* bytes) noexcept;
  /// Makes `event` the one that is in these bytes, whatever it was. Needs no memory.
  static void unpack(const char* bytes, LOGLoggingEvent& event) noexcept;

 private:
  std::int64_t m_timeStamp;
  LOGLevel* m_level;
  LOGLogger* m_logger;
  std::int32_t m_ndcLookupRequired;
  // Of the texts behind these members, in this order.
  std::uint32_t m_loggerNameSize;
  std::uint32_t m_threadNameSize;
  std::uint32_t m_ndcSize;
  std::uint32_t m_messageSize;
};

#endif
