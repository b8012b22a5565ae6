#ifndef APPENDERS_LOGEVENTRECORDS_H
#define APPENDERS_LOGEVENTRECORDS_H

#include <cstddef>
#include <memory>
#include <utility>

class LOGLoggingEvent;

/// Events one after the other in one piece of memory, packed where possible, so that who writes
/// them and who reads them go through it straight. It keeps its memory when it is empty. Not safe
/// for several threads.
class LOGEventRecords {
 public:
  LOGEventRecords() = default;
  LOGEventRecords(const LOGEventRecords&) = delete;
  LOGEventRecords& operator=(const LOGEventRecords&) = delete;
  /// Deletes the events that are left.
  ~LOGEventRecords() { clear(); }

  bool isEmpty() const noexcept { return m_begin == m_end; }
  /// Adds a packed copy. REQUIRES: `size` is LOGPackedEvent::sizeOf(event) and not 0. Throws
  /// std::bad_alloc; nothing is added then.
  void addPacked(const LOGLoggingEvent& event, std::size_t size);
  /// Adds the event itself and owns it from now on. Throws std::bad_alloc; nothing is added then.
  void add(LOGLoggingEvent* event);
  /// Takes the first event out, owned by the caller; there must be one. An event that has to be
  /// made is made in `memory`, which is for one event and from operator new, and null then; or in
  /// memory of its own. Throws std::bad_alloc; the event is left then.
  LOGLoggingEvent* take(void*& memory);
  /// Deletes all events.
  void clear() noexcept;
  void swap(LOGEventRecords& other) noexcept;

 private:
  /// What stands in front of each event.
  struct Head {
    std::size_t size;        // of head and event, in bytes
    LOGLoggingEvent* whole;  // the event, when it is not packed behind this
  };

  void makeRoom(std::size_t size);
  Head head() const noexcept;

  std::unique_ptr<char[]> m_memory;
  std::size_t m_capacity = 0;
  std::size_t m_begin = 0;  // of the first event that is left
  std::size_t m_end = 0;    // of the last one
};

#endif
