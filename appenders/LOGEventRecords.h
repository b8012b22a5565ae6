#ifndef APPENDERS_LOGEVENTRECORDS_H
#define APPENDERS_LOGEVENTRECORDS_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

class LOGLoggingEvent;

/// Events one after the other in pieces of memory, packed where possible, so that who writes them
/// and who reads them go through it straight. One thread at a time writes and one reads, and these
/// two do not wait for each other: a record begins with a word that says that it is complete.
class LOGEventRecords {
 public:
  /// Throws std::bad_alloc.
  LOGEventRecords();
  LOGEventRecords(const LOGEventRecords&) = delete;
  LOGEventRecords& operator=(const LOGEventRecords&) = delete;
  /// Deletes the events that are left.
  ~LOGEventRecords();

  // The writer's side. Each throws std::bad_alloc; nothing is added then.
  /// Adds a packed copy. REQUIRES: `size` is LOGPackedEvent::sizeOf(event) and not 0.
  void addPacked(const LOGLoggingEvent& event, std::size_t size);
  /// Adds the event itself, which may be null, and owns it from now on.
  void add(LOGLoggingEvent* event);

  // The reader's side.
  bool isEmpty() const noexcept;
  /// Takes out the first event, which must be there: one that was packed is put into `unpacked`,
  /// which the result points at then; another one is left to `whole` and the result points there.
  LOGLoggingEvent* take(LOGLoggingEvent& unpacked,
                        std::unique_ptr<LOGLoggingEvent>& whole) noexcept;

 private:
  enum class Kind : std::uint32_t { PACKED, WHOLE, NEXT_PIECE };

  /// What stands in front of each event.
  struct Head {
    std::atomic<std::uint32_t> size{0};  // of head and event, in bytes; 0 until all is there
    Kind kind = Kind::PACKED;
  };

  /// Head and events stand behind it.
  struct Piece {
    Piece* next;
    std::size_t size;
    char* begin() noexcept { return reinterpret_cast<char*>(this + 1); }
  };

  static Piece* newPiece(std::size_t size);
  static Head& headAt(char* place) noexcept { return *reinterpret_cast<Head*>(place); }
  template <typename Fill>
  void addRecord(Kind kind, std::size_t size, Fill fill);
  void goToNextPiece() noexcept;

  // Each side stands in cache lines of its own.
  alignas(64) Piece* m_writtenPiece;
  char* m_writeAt;  // where the next head stands already, with a size of 0
  alignas(64) Piece* m_readPiece;
  char* m_readAt;
  std::atomic<Piece*> m_spare{nullptr};  // was read, and will be written again
};

#endif
