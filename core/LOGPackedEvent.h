#ifndef CORE_LOGPACKEDEVENT_H
#define CORE_LOGPACKEDEVENT_H

#include <cstddef>
#include <cstdint>

class LOGLevel;
class LOGLogger;
class LOGLoggingEvent;

/// An event as bytes, for another thread: two or three cache lines in place of eight or nine. Only
/// what nearly all events consist of can be packed, short ASCII texts and no message object.
class LOGPackedEvent {
 public:
  /// How many bytes `event` takes, 0 when it cannot be packed.
  static std::size_t sizeOf(const LOGLoggingEvent& event) noexcept;
  /// Writes sizeOf(event) bytes, which is not 0, to `bytes`.
  static void pack(const LOGLoggingEvent& event, char* bytes) noexcept;
  /// Makes `event` the one that is in these bytes, whatever it was. Needs no memory.
  static void unpack(const char* bytes, LOGLoggingEvent& event) noexcept;

 private:
  static constexpr std::size_t TEXTS = 4;  // logger's name, thread, context, message

  std::int64_t m_timeStamp;
  LOGLevel* m_level;
  LOGLogger* m_logger;
  std::int32_t m_ndcLookupRequired;
  std::uint8_t m_sizes[TEXTS];  // of the texts, which follow in this order
};

#endif
