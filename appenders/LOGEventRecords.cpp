#include "appenders/LOGEventRecords.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <new>
#include <string_view>
#include <utility>

#include "core/LOGLoggingEvent.h"

static_assert(I18NBytes::INLINE_SIZE <= std::numeric_limits<std::uint8_t>::max());
constexpr std::size_t SHORT = I18NBytes::SHORT;  // most names, thread numbers and contexts

LOGEventRecords::LOGEventRecords()
    : m_writtenPiece(new Piece),
      m_writeAt(m_writtenPiece->bytes),
      m_readPiece(m_writtenPiece),
      m_readAt(m_writeAt) {
  new (m_writeAt) Record;
}

LOGEventRecords::~LOGEventRecords() {
  while (m_readPiece != nullptr) {
    delete std::exchange(m_readPiece, m_readPiece->next);
  }
  delete m_spare.load();
}

LOGEventRecords::Record& LOGEventRecords::beginRecord() {
  if (std::end(m_writtenPiece->bytes) - m_writeAt < std::ptrdiff_t{LARGEST + sizeof(Record)}) {
    Piece* const spare = m_spare.exchange(nullptr, std::memory_order_acquire);
    Piece* const piece = spare == nullptr ? new Piece : spare;
    piece->next = nullptr;
    m_writeAt = piece->bytes;
    new (m_writeAt) Record;
    m_writtenPiece->next = piece;
    m_writtenPiece = piece;
  }
  return *reinterpret_cast<Record*>(m_writeAt);
}

void LOGEventRecords::endRecord(const char* end) noexcept {
  const auto bytes = static_cast<std::size_t>(end - m_writeAt);
  const std::size_t size = (bytes + alignof(Record) - 1) / alignof(Record) * alignof(Record);
  auto* const record = reinterpret_cast<Record*>(std::exchange(m_writeAt, m_writeAt + size));
  new (m_writeAt) Record;
  record->size.store(static_cast<std::uint32_t>(size), std::memory_order_release);
}

/// Appends the text to those at `to`; false, and nothing appended, unless it is short ASCII.
inline bool LOGEventRecords::pack(const I18NString& text, char*& to, std::uint8_t& size) noexcept {
  const std::size_t length = text.length();
  if (!text.isAscii()) {
    return false;
  }
  // In moves of fixed size: there is room for that on both sides.
  const char* const from = text.ascii().data();
  if (length > SHORT) {
    if (length > I18NBytes::INLINE_SIZE) {
      return false;
    }
    std::memcpy(to + SHORT, from + SHORT, I18NBytes::INLINE_SIZE - SHORT);
  }
  std::memcpy(to, from, SHORT);
  to += length;
  size = static_cast<std::uint8_t>(length);
  return true;
}

LOG4ZEB_HOT void LOGEventRecords::add(const LOGLoggingEvent& event) {
  Record& record = beginRecord();
  char* to = record.texts();
  std::uint8_t* const sizes = record.textSizes;
  if (!event.m_hasPlainMessage || event.m_plainMessage.m_instance != nullptr ||
      event.isRendered() || !pack(event.m_loggerName, to, sizes[0]) ||
      !pack(event.m_threadName, to, sizes[1]) || !pack(event.m_ndc, to, sizes[2]) ||
      !pack(event.m_plainMessage.m_string, to, sizes[3])) {
    addWhole(event.copyForQueue());
    return;
  }
  record.isPacked = true;
  record.ndcLookupRequired = event.m_ndcLookupRequired;
  record.timeStamp = event.m_timeStamp;
  record.level = event.m_level;
  record.logger = event.m_logger;
  // The last text is read in a move of that size, too, which stays within the record.
  endRecord(std::max(to, to - sizes[3] + SHORT));
}

void LOGEventRecords::addWhole(std::unique_ptr<LOGLoggingEvent> event) {
  Record& record = beginRecord();
  record.isPacked = false;
  record.whole = event.release();
  endRecord(record.texts());
}

LOG4ZEB_HOT LOGLoggingEvent* LOGEventRecords::take(
    LOGLoggingEvent& unpacked, std::unique_ptr<LOGLoggingEvent>& whole) noexcept {
  if (reinterpret_cast<Record*>(m_readAt)->size.load(std::memory_order_acquire) == 0) {
    Piece* const read = std::exchange(m_readPiece, m_readPiece->next);
    m_readAt = m_readPiece->bytes;
    delete m_spare.exchange(read, std::memory_order_acq_rel);
  }
  Record& record = *reinterpret_cast<Record*>(m_readAt);
  m_readAt += record.size.load(std::memory_order_acquire);
  if (!record.isPacked) {
    whole.reset(record.whole);
    return record.whole;
  }
  unpacked.m_timeStamp = record.timeStamp;
  unpacked.m_sequence = std::numeric_limits<std::int32_t>::min();
  unpacked.m_level = record.level;
  unpacked.m_logger = record.logger;
  unpacked.m_ndcLookupRequired = record.ndcLookupRequired;
  unpacked.m_mdcCopyLookupRequired = 1;
  unpacked.m_hasPlainMessage = true;
  unpacked.m_message.reset();
  unpacked.m_rare.reset();
  unpacked.m_plainMessage.m_instance.reset();
  I18NString* const texts[TEXTS] = {&unpacked.m_loggerName, &unpacked.m_threadName, &unpacked.m_ndc,
                                    &unpacked.m_plainMessage.m_string};
  const char* from = record.texts();
  for (int i = 0; i < TEXTS; ++i) {
    const std::uint8_t size = record.textSizes[i];
    texts[i]->clear();
    if (size <= SHORT) {
      texts[i]->appendAscii(*reinterpret_cast<const char(*)[SHORT]>(from), size);
    } else {
      texts[i]->appendAscii(std::string_view(from, size));
    }
    from += size;
  }
  return &unpacked;
}
