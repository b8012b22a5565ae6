#ifndef APPENDERS_LOGEVENTRECORDS_H
#define APPENDERS_LOGEVENTRECORDS_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

class LOGLoggingEvent;

/// Events one after the other in pieces of memory, packed where possible. One thread at a time
/// writes and one reads, and these two do not wait for each other: a record begins with its size,
/// which is written last.
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
  /// Adds the event itself, which may be null, and owns it from now on. Throws as add() does.
  void addWhole(std::unique_ptr<LOGLoggingEvent> event);

  /// Takes out the first event, which must be there: one that was packed is put into `unpacked`,
  /// which the result points at then; another one is left to `whole` and the result points there.
  LOGLoggingEvent* take(LOGLoggingEvent& unpacked,
                        std::unique_ptr<LOGLoggingEvent>& whole) noexcept;

 private:
  /// What stands in front of each event.
  struct Head {
    std::atomic<std::uint32_t> size{0};  // of head and event, in bytes; 0 until all is there
    bool isPacked = false;
  };

  /// Far larger than any record; enough for 100 usual ones.
  struct Piece {
    Piece* next = nullptr;  // followed when the next head says 0 although there is an event
    alignas(std::max_align_t) char bytes[16384];
  };

  static Head& headAt(char* place) noexcept { return *reinterpret_cast<Head*>(place); }
  template <typename Fill>
  void addRecord(bool isPacked, std::size_t size, Fill fill);
  void goToNewPiece();

  // Each side stands in cache lines of its own.
  alignas(64) Piece* m_writtenPiece;
  char* m_writeAt;  // where the next head stands already, with a size of 0
  alignas(64) Piece* m_readPiece;
  char* m_readAt;
  std::atomic<Piece*> m_spare{nullptr};  // was read, and will be written again
};

#endif
