#include "appenders/LOGEventRecords.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "core/LOGLoggingEvent.h"
#include "core/LOGPackedEvent.h"

namespace {

constexpr std::size_t PIECE_SIZE = 16384;  // for 100 usual events

constexpr std::size_t aligned(std::size_t size) {
  constexpr std::size_t ALIGNMENT = alignof(std::max_align_t);
  return (size + ALIGNMENT - 1) / ALIGNMENT * ALIGNMENT;
}

}  // namespace

LOGEventRecords::Piece* LOGEventRecords::newPiece(std::size_t size) {
  auto* const piece = new (::operator new(sizeof(Piece) + size)) Piece{nullptr, size};
  new (piece->begin()) Head;
  return piece;
}

LOGEventRecords::LOGEventRecords()
    : m_writtenPiece(newPiece(PIECE_SIZE)),
      m_writeAt(m_writtenPiece->begin()),
      m_readPiece(m_writtenPiece),
      m_readAt(m_writeAt) {}

LOGEventRecords::~LOGEventRecords() {
  LOGLoggingEvent unpacked;
  while (!isEmpty()) {
    std::unique_ptr<LOGLoggingEvent> whole;
    take(unpacked, whole);
  }
  ::operator delete(m_readPiece);
  ::operator delete(m_spare.load());
}

template <typename Fill>
void LOGEventRecords::addRecord(Kind kind, std::size_t size, Fill fill) {
  const std::size_t whole = aligned(sizeof(Head) + size);
  const std::size_t needed = whole + sizeof(Head);  // with that of the next one
  char* place = m_writeAt;
  Piece* piece = m_writtenPiece;
  if (needed > static_cast<std::size_t>(piece->begin() + piece->size - place)) {
    piece = m_spare.exchange(nullptr, std::memory_order_acquire);
    if (piece == nullptr || piece->size < needed) {
      ::operator delete(piece);
      piece = newPiece(std::max(PIECE_SIZE, needed));
    }
    place = piece->begin();
    new (place) Head;
  }
  fill(place + sizeof(Head));
  new (place + whole) Head;
  Head& head = headAt(place);
  head.kind = kind;
  head.size.store(static_cast<std::uint32_t>(whole), std::memory_order_release);
  Head& last = headAt(std::exchange(m_writeAt, place + whole));
  if (piece != m_writtenPiece) {
    // The reader finds the piece, and then the record there, by this.
    std::exchange(m_writtenPiece, piece)->next = piece;
    last.kind = Kind::NEXT_PIECE;
    last.size.store(sizeof(Head), std::memory_order_release);
  }
}

LOG4ZEB_HOT void LOGEventRecords::addPacked(const LOGLoggingEvent& event, std::size_t size) {
  addRecord(Kind::PACKED, size, [&](char* bytes) { LOGPackedEvent::pack(event, bytes); });
}

void LOGEventRecords::add(LOGLoggingEvent* event) {
  addRecord(Kind::WHOLE, sizeof(event),
            [&](char* bytes) { std::memcpy(bytes, &event, sizeof(event)); });
}

LOG4ZEB_HOT bool LOGEventRecords::isEmpty() const noexcept {
  return headAt(m_readAt).size.load(std::memory_order_acquire) == 0;
}

void LOGEventRecords::goToNextPiece() noexcept {
  Piece* const read = std::exchange(m_readPiece, m_readPiece->next);
  m_readAt = m_readPiece->begin();
  ::operator delete(m_spare.exchange(read, std::memory_order_acq_rel));
}

LOG4ZEB_HOT LOGLoggingEvent* LOGEventRecords::take(
    LOGLoggingEvent& unpacked, std::unique_ptr<LOGLoggingEvent>& whole) noexcept {
  if (headAt(m_readAt).kind == Kind::NEXT_PIECE) {
    goToNextPiece();
  }
  const Head& head = headAt(m_readAt);
  const char* const bytes = m_readAt + sizeof(Head);
  m_readAt += head.size.load(std::memory_order_relaxed);
  if (head.kind == Kind::PACKED) {
    LOGPackedEvent::unpack(bytes, unpacked);
    return &unpacked;
  }
  LOGLoggingEvent* event = nullptr;
  std::memcpy(&event, bytes, sizeof(event));
  whole.reset(event);
  return event;
}
