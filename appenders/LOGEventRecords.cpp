#include "appenders/LOGEventRecords.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "core/LOGLoggingEvent.h"
#include "core/LOGPackedEvent.h"

namespace {

constexpr std::size_t SMALLEST_CAPACITY = 4096;

}  // namespace

LOG4ZEB_HOT void LOGEventRecords::addCopy(const LOGLoggingEvent& event) {
  const std::size_t packed = LOGPackedEvent::sizeOf(event);
  if (packed == 0) {
    auto copy = std::make_unique<LOGLoggingEvent>(event);
    add(copy.get());
    copy.release();
    return;
  }
  const std::size_t size = sizeof(Head) + packed;
  char* const room = makeRoom(size);
  new (room) Head{size, nullptr};
  LOGPackedEvent::pack(event, room + sizeof(Head));
  m_end += size;
}

void LOGEventRecords::add(LOGLoggingEvent* event) {
  new (makeRoom(sizeof(Head))) Head{sizeof(Head), event};
  m_end += sizeof(Head);
}

char* LOGEventRecords::makeRoom(std::size_t size) {
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
  return m_memory.get() + m_end;
}

LOGEventRecords::Head LOGEventRecords::takeHead() noexcept {
  const Head head = *reinterpret_cast<const Head*>(m_memory.get() + m_begin);
  m_begin += head.size;
  return head;
}

LOG4ZEB_HOT LOGLoggingEvent* LOGEventRecords::take(void*& memory) {
  const char* const record = m_memory.get() + m_begin;
  const Head head = takeHead();
  if (head.whole != nullptr) {
    return head.whole;
  }
  if (memory == nullptr) {
    memory = ::operator new(sizeof(LOGLoggingEvent));
  }
  LOGLoggingEvent* const event =
      reinterpret_cast<const LOGPackedEvent*>(record + sizeof(Head))->unpackInto(memory);
  memory = nullptr;
  return event;
}

void LOGEventRecords::clear() noexcept {
  while (!isEmpty()) {
    delete takeHead().whole;
  }
}

void LOGEventRecords::swap(LOGEventRecords& other) noexcept {
  std::swap(m_memory, other.m_memory);
  std::swap(m_capacity, other.m_capacity);
  std::swap(m_begin, other.m_begin);
  std::swap(m_end, other.m_end);
}
