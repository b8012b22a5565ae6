#ifndef APPENDERS_LOGEVENTRECORDS_H
#define APPENDERS_LOGEVENTRECORDS_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/I18NString.h"

class LOGLevel;
class LOGLogger;
class LOGLoggingEvent;

/// Events one after the other in pieces of memory. Those of short ASCII texts, which nearly all
/// are, are packed: two or three cache lines go from thread to thread in place of eight or nine.
/// One thread at a time writes and one reads, and these two do not wait for each other: a record
/// begins with its size, which is written last.
class LOGEventRecords {
 public:
  /// Throws std::bad_alloc.
  LOGEventRecords();
  LOGEventRecords(const LOGEventRecords&) = delete;
  LOGEventRecords& operator=(const LOGEventRecords&) = delete;
  /// REQUIRES: all events were taken out.
  ~LOGEventRecords();

  /// Adds a copy. Throws ZEBOutOfMemoryError or std::bad_alloc; nothing is added then.
  void add(const LOGLoggingEvent& event);
  /// Adds the event itself, which may be null. Throws std::bad_alloc; nothing is added then.
  void addWhole(std::unique_ptr<LOGLoggingEvent> event);
  /// Takes out the first event, which must be there: one that was packed is put into `unpacked`,
  /// which the result points at then; another one is left to `whole` and the result points there.
  LOGLoggingEvent* take(LOGLoggingEvent& unpacked,
                        std::unique_ptr<LOGLoggingEvent>& whole) noexcept;

 private:
  static constexpr int TEXTS = 4;  // the logger's name, thread, context and message

  struct Record {
    std::atomic<std::uint32_t> size{0};  // in bytes, texts included; 0 until all is there
    bool isPacked;
    std::uint8_t textSizes[TEXTS];  // of the texts that follow
    std::int32_t ndcLookupRequired;
    LOGLoggingEvent* whole;  // when it is not packed
    std::int64_t timeStamp;
    LOGLevel* level;
    LOGLogger* logger;

    char* texts() noexcept { return reinterpret_cast<char*>(this + 1); }
  };

  /// Far larger than any record; enough for 100 usual ones.
  struct Piece {
    Piece* next = nullptr;  // followed when the next record's size is 0 although there is an event
    alignas(Record) char bytes[16384];
  };

  static constexpr std::size_t LARGEST = sizeof(Record) + TEXTS * I18NBytes::INLINE_SIZE;

  static bool pack(const I18NString& text, char*& to, std::uint8_t& size) noexcept;
  Record& beginRecord();
  void endRecord(const char* end) noexcept;

  // Each side stands in cache lines of its own.
  alignas(64) Piece* m_writtenPiece;
  char* m_writeAt;  // where the next record has a size of 0 already
  alignas(64) Piece* m_readPiece;
  char* m_readAt;
  std::atomic<Piece*> m_spare{nullptr};  // was read, and will be written again
};

#endif
