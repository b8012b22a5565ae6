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
  /// Adds a copy. Throws std::bad_alloc and what a copy throws; nothing is added then.
  void addCopy(const LOGLoggingEvent& event);
  /// Adds the event itself and owns it from now on. Throws std::bad_alloc.
  void add(LOGLoggingEvent* event);
  /// Takes the first event out, owned by the caller; there must be one. An event that has to be
  /// made is made in `memory`, for one event from operator new, which is null then. Whatever this
  /// throws, the event has gone.
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

  char* makeRoom(std::size_t size);
  Head takeHead() noexcept;

  std::unique_ptr<char[]> m_memory;
  std::size_t m_capacity = 0;
  std::size_t m_begin = 0;  // of the first event that is left
  std::size_t m_end = 0;    // of the last one
};

#endif
