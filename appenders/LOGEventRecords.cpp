#include "appenders/LOGEventRecords.h"

#include <cstring>
#include <iterator>
#include <new>
#include <utility>

#include "core/LOGLoggingEvent.h"
#include "core/LOGPackedEvent.h"

LOGEventRecords::LOGEventRecords()
    : m_writtenPiece(new Piece),
      m_writeAt(m_writtenPiece->bytes),
      m_readPiece(m_writtenPiece),
      m_readAt(m_writeAt) {
  new (m_writeAt) Head;
}

LOGEventRecords::~LOGEventRecords() {
  while (m_readPiece != nullptr) {
    delete std::exchange(m_readPiece, m_readPiece->next);
  }
  delete m_spare.load();
}

void LOGEventRecords::goToNewPiece() {
  Piece* const spare = m_spare.exchange(nullptr, std::memory_order_acquire);
  Piece* const piece = spare == nullptr ? new Piece : spare;
  piece->next = nullptr;
  m_writeAt = piece->bytes;
  new (m_writeAt) Head;
  m_writtenPiece->next = piece;
  m_writtenPiece = piece;
}

template <typename Fill>
void LOGEventRecords::addRecord(bool isPacked, std::size_t size, Fill fill) {
  constexpr std::size_t ALIGNMENT = alignof(std::max_align_t);
  const std::size_t whole = (sizeof(Head) + size + ALIGNMENT - 1) / ALIGNMENT * ALIGNMENT;
  if (m_writeAt + whole + sizeof(Head) > std::end(m_writtenPiece->bytes)) {
    goToNewPiece();
  }
  fill(m_writeAt + sizeof(Head));
  new (m_writeAt + whole) Head;
  Head& head = headAt(m_writeAt);
  head.isPacked = isPacked;
  head.size.store(static_cast<std::uint32_t>(whole), std::memory_order_release);
  m_writeAt += whole;
}

LOG4ZEB_HOT void LOGEventRecords::add(const LOGLoggingEvent& event) {
  const std::size_t size = LOGPackedEvent::sizeOf(event);
  if (size == 0) {
    addWhole(event.copyForQueue());
  } else {
    addRecord(true, size, [&](char* bytes) { LOGPackedEvent::pack(event, bytes); });
  }
}

void LOGEventRecords::addWhole(std::unique_ptr<LOGLoggingEvent> event) {
  LOGLoggingEvent* const pointer = event.get();
  addRecord(false, sizeof(pointer),
            [&](char* bytes) { std::memcpy(bytes, &pointer, sizeof(pointer)); });
  event.release();
}

LOG4ZEB_HOT LOGLoggingEvent* LOGEventRecords::take(
    LOGLoggingEvent& unpacked, std::unique_ptr<LOGLoggingEvent>& whole) noexcept {
  if (headAt(m_readAt).size.load(std::memory_order_acquire) == 0) {
    Piece* const read = std::exchange(m_readPiece, m_readPiece->next);
    m_readAt = m_readPiece->bytes;
    delete m_spare.exchange(read, std::memory_order_acq_rel);
  }
  const Head& head = headAt(m_readAt);
  const char* const bytes = m_readAt + sizeof(Head);
  m_readAt += head.size.load(std::memory_order_acquire);
  if (head.isPacked) {
    LOGPackedEvent::unpack(bytes, unpacked);
    return &unpacked;
  }
  LOGLoggingEvent* event = nullptr;
  std::memcpy(&event, bytes, sizeof(event));
  whole.reset(event);
  return event;
}
