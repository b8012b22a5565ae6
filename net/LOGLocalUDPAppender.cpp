#include "net/LOGLocalUDPAppender.h"

#include <memory>
#include <utility>

#include "core/LOGLoggingEvent.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBTranslate.h"
#include "rendering/LOGObjectRenderer.h"
#include "rendering/LOGRendererMap.h"

namespace {

constexpr const char* SOURCE = "LOGLocalUDPAppender";
constexpr const char* ADDRESS_NAME = "DOV_Crypto_Interface";
constexpr const char* LOCAL_HOST = "localhost";
constexpr const char* ALL_IPV4 = "";
constexpr const char* ALL_IPV6 = "::";
constexpr int ANY_PORT = 0;
constexpr int SOCKET_BUFFER_SIZE = 65536;
constexpr std::chrono::seconds RETRY_INTERVAL{1};

/// Writes a whole record and returns whether that was possible.
bool writeRecord(LOGRecordStream& record, LOGLoggingEvent& event, LOGObject& message) {
  const std::shared_ptr<LOGObjectRenderer> renderer = LOGRendererMap().share(message.instanceOf());
  if (renderer == nullptr) {
    return false;
  }
  record.reset(1);  // for the end mark
  record.writeShort(LOGRecordStream::STREAM_MAGIC);
  record.writeShort(LOGRecordStream::STREAM_VERSION);
  record.writeByte(LOGRecordStream::TC_BLOCKDATALONG);
  const LOGRecordStream::Length nameLength = record.writeLengthLater();
  record.writeUTF(event.getLoggerName());
  record.setLength(nameLength);
  record.writeByte(LOGRecordStream::TC_OBJECT);
  renderer->writeClassDesc(record);
  record.writeByte(LOGRecordStream::TC_NULL);
  record.writeByte(LOGRecordStream::TC_BLOCKDATALONG);
  const LOGRecordStream::Length objectLength = record.writeLengthLater();
  // What the log call has rendered is not rendered again, under locks.
  const std::unique_ptr<I18NString> rendered(event.isRendered() ? event.getRenderedMessage()
                                                                : nullptr);
  record.setRenderedText(event.isRendered() && rendered == nullptr ? &I18NString::none()
                                                                   : rendered.get());
  renderer->writeObject(&message, record);
  record.setRenderedText(nullptr);
  record.setLength(objectLength);
  record.release();
  record.writeByte(LOGRecordStream::TC_ENDBLOCKDATA);
  return record.fits() != 0;
}

}  // namespace

LOGLocalUDPAppender::LOGLocalUDPAppender() : m_destination(ADDRESS_NAME) {
  instance(SOURCE);
  m_name = SOURCE;
}

LOGLocalUDPAppender::LOGLocalUDPAppender(const LOGLocalUDPAppender& other)
    : LOGAppenderSkeleton(other),
      m_port(other.m_port.load()),
      m_record(other.copyOfRecord()),
      m_destination(ADDRESS_NAME) {}

LOGLocalUDPAppender& LOGLocalUDPAppender::operator=(const LOGLocalUDPAppender& other) {
  if (this != &other) {
    std::unique_ptr<LOGRecordStream> record = other.copyOfRecord();
    const ZEBThreadGuard guard(getCriticalSection());
    LOGAppenderSkeleton::operator=(other);
    m_port = other.m_port.load();
    m_record = std::move(record);
    m_socket.close();
    m_destination = ZEBSocketAddress(ADDRESS_NAME);
    m_nextAttempt = {};
    m_activationPending = 1;
  }
  return *this;
}

LOGLocalUDPAppender::~LOGLocalUDPAppender() = default;

std::unique_ptr<LOGRecordStream> LOGLocalUDPAppender::copyOfRecord() const {
  const ZEBThreadGuard guard(getCriticalSection());
  return m_record == nullptr ? nullptr : std::make_unique<LOGRecordStream>(*m_record);
}

int LOGLocalUDPAppender::operator==(const LOGLocalUDPAppender& other) const {
  return LOGAppenderSkeleton::operator==(static_cast<const LOGAppenderSkeleton&>(other)) != 0 &&
                 m_port == other.m_port
             ? 1
             : 0;
}

int LOGLocalUDPAppender::operator==(const LOGAppenderSkeleton& other) const {
  return *this == static_cast<const LOGObject&>(other);
}

int LOGLocalUDPAppender::operator==(const LOGObject& other) const {
  const auto* const appender = dynamic_cast<const LOGLocalUDPAppender*>(&other);
  return appender != nullptr && *this == *appender ? 1 : 0;
}

void LOGLocalUDPAppender::activateOptions() {
  if (m_activationPending == 0) {
    return;
  }
  const ZEBThreadGuard guard(getCriticalSection());
  if (m_closed != 1 && m_stale != 1 && m_activationPending == 1) {
    init();
  }
}

void LOGLocalUDPAppender::init() {
  const auto now = std::chrono::steady_clock::now();
  if (now < m_nextAttempt) {
    return;
  }
  if (makeSocket()) {
    m_activationPending = 0;
  } else {
    m_socket.close();
    m_nextAttempt = std::chrono::steady_clock::now() + RETRY_INTERVAL;
  }
}

bool LOGLocalUDPAppender::makeSocket() {
  // The destination comes first, because the socket has to be of its kind.
  if (m_destination.DOV_ResolveAddress(LOCAL_HOST, m_port) == 0) {
    return false;
  }
  ZEBSocketAddress local(ADDRESS_NAME);
  local.DOV_ResolveAddress(m_destination.isIPv6() != 0 ? ALL_IPV6 : ALL_IPV4, ANY_PORT);
  return m_socket.open(local) != 0 && m_socket.setBufferSizes(SOCKET_BUFFER_SIZE) != 0 &&
         m_socket.bind(local) != 0 && m_socket.setNonBlocking() != 0;
}

void LOGLocalUDPAppender::close() {
  m_closeRequested = true;
  m_closed = 1;
}

void LOGLocalUDPAppender::release() {
  const ZEBThreadGuard guard(getCriticalSection());
  m_socket.close();
  m_record.reset();
}

void LOGLocalUDPAppender::append(LOGLoggingEvent* event) {
  if (event == nullptr) {
    return;
  }
  LOGObject* const message = event->getMessage();
  ZEB_ASSERT(message, SOURCE, __LINE__);
  if (m_socket.isOpen() == 0) {
    return;
  }
  // Taken out for the time: a message that logs here while it is rendered makes a record of its
  // own.
  std::unique_ptr<LOGRecordStream> record = std::move(m_record);
  if (record == nullptr) {
    record = zebTranslate(SOURCE, __LINE__, [] { return std::make_unique<LOGRecordStream>(); });
  }
  if (writeRecord(*record, *event, *message) && m_closed != 1) {
    m_socket.send(record->data(), record->size(), m_destination);
  }
  if (m_closed != 1) {
    m_record = std::move(record);
  }
}
