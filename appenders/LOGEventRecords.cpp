#include "appenders/LOGEventRecords.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "core/LOGLoggingEvent.h"
#include "core/LOGPackedEvent.h"

namespace {

constexpr std::size_t SMALLEST_CAPACITY = 4096;  // for several events of any size

}  // namespace

LOG4ZEB_HOT void LOGEventRecords::addPacked(const LOGLoggingEvent& event, std::size_t size) {
  const Head head{sizeof(Head) + size, nullptr};
  makeRoom(head.size);
  std::memcpy(m_memory.get() + m_end, &head, sizeof(head));
  LOGPackedEvent::pack(event, m_memory.get() + m_end + sizeof(head));
  m_end += head.size;
}

void LOGEventRecords::add(LOGLoggingEvent* event) {
  const Head head{sizeof(Head), event};
  makeRoom(head.size);
  std::memcpy(m_memory.get() + m_end, &head, sizeof(head));
  m_end += head.size;
}

void LOGEventRecords::makeRoom(std::size_t size) {
  if (isEmpty()) {
    m_begin = m_end = 0;
  }
  if (size > m_capacity - m_end) {
    const std::size_t capacity = std::max(SMALLEST_CAPACITY, 2 * m_capacity);
    std::unique_ptr<char[]> larger(new char[capacity]);
    if (m_memory != nullptr) {
      std::memcpy(larger.get(), m_memory.get() + m_begin, m_end - m_begin);
    }
    m_memory = std::move(larger);
    m_capacity = capacity;
    m_end -= std::exchange(m_begin, 0);
  }
}

LOGEventRecords::Head LOGEventRecords::head() const noexcept {
  Head head;
  std::memcpy(&head, m_memory.get() + m_begin, sizeof(head));
  return head;
}

LOG4ZEB_HOT LOGLoggingEvent* LOGEventRecords::take(void*& memory) {
  const Head first = head();
  LOGLoggingEvent* event = first.whole;
  if (event == nullptr) {
    if (memory == nullptr) {
      memory = ::operator new(sizeof(LOGLoggingEvent));
    }
    event = LOGPackedEvent::unpack(m_memory.get() + m_begin + sizeof(Head),
                                   std::exchange(memory, nullptr));
  }
  m_begin += first.size;
  return event;
}

void LOGEventRecords::clear() noexcept {
  while (!isEmpty()) {
    const Head first = head();
    m_begin += first.size;
    delete first.whole;
  }
}

void LOGEventRecords::swap(LOGEventRecords& other) noexcept {
  std::swap(m_memory, other.m_memory);
  std::swap(m_capacity, other.m_capacity);
  std::swap(m_begin, other.m_begin);
  std::swap(m_end, other.m_end);
}
