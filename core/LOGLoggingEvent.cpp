#include "core/LOGLoggingEvent.h"

#include <charconv>
#include <string_view>
#include <typeinfo>
#include <utility>

#include "core/LOGHierarchy.h"
#include "core/LOGLogger.h"
#include "core/LOGLoggerRepository.h"
#include "core/LOGNDC.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBThread.h"
#include "platform/ZEBTranslate.h"
#include "platform/ZEBUtTime.h"
#include "rendering/LOGRendererMap.h"

const std::int64_t LOGLoggingEvent::m_startTime = ZEBUtTime::nowSeconds();

namespace {

constexpr const char* SOURCE = "LOGLoggingEvent";

/// The decimal number of the calling thread, converted once for each thread.
std::string_view currentThreadText() {
  struct Text {
    std::uint64_t thread;
    std::size_t size;
    char digits[std::numeric_limits<std::uint64_t>::digits10 + 1];
  };
  static thread_local Text t_text = {};
  const std::uint64_t thread = ZEBThread::currentThreadId();
  if (t_text.thread != thread) {  // also in the child of a fork
    t_text.size = static_cast<std::size_t>(
        std::to_chars(std::begin(t_text.digits), std::end(t_text.digits), thread).ptr -
        t_text.digits);
    t_text.thread = thread;
  }
  return {t_text.digits, t_text.size};
}

/// The repository's side that renders, or null.
LOGRendererMap* rendererMapOf(LOGLoggerRepository* repository) {
  if (repository == nullptr) {
    return nullptr;
  }
  // Spares nearly every program the search for a base class, event by event.
  if (typeid(*repository) == typeid(LOGHierarchy)) {
    return static_cast<LOGHierarchy*>(repository)->LOGHierarchy::getRendererMap();
  }
  auto* const renderers = dynamic_cast<LOGRendererSupport*>(repository);
  return renderers == nullptr ? nullptr : renderers->getRendererMap();
}

}  // namespace

LOGLoggingEvent::LOGLoggingEvent() = default;

LOGLoggingEvent::LOGLoggingEvent(const I18NString&, LOGLogger* logger, LOGLevel* level,
                                 LOGObject* message)
    : LOGLoggingEvent(logger, level) {
  setMessage(message);
}

LOG4ZEB_HOT LOGLoggingEvent::LOGLoggingEvent(LOGLogger* logger, LOGLevel* level,
                                             const LOGMessageText& message)
    : LOGLoggingEvent(logger, level) {
  zebTranslate(SOURCE, __LINE__, [&] { m_plainMessage.setText(message.text); });
  m_hasPlainMessage = true;
}

LOG4ZEB_HOT LOGLoggingEvent::LOGLoggingEvent(LOGLogger* logger, LOGLevel* level)
    : m_timeStamp(ZEBUtTime::nowSeconds()), m_level(level), m_logger(logger) {
  ZEB_ASSERT(m_logger, SOURCE, 99);
  zebTranslate(SOURCE, __LINE__, [this] { m_loggerName = m_logger->getName(); });
}

LOGLoggingEvent::LOGLoggingEvent(const LOGLoggingEvent& other)
    : LOGSerializable(other),
      m_timeStamp(other.m_timeStamp),
      m_sequence(other.m_sequence),
      m_ndcLookupRequired(other.m_ndcLookupRequired),
      m_mdcCopyLookupRequired(other.m_mdcCopyLookupRequired),
      m_level(other.m_level),
      m_logger(other.m_logger),
      m_threadName(other.m_threadName),
      m_ndc(other.m_ndc),
      m_loggerName(other.m_loggerName) {
  if (other.m_rare != nullptr && !other.m_rare->renderedMessage.isEmpty()) {
    setRenderedMessage(other.m_rare->renderedMessage);
  }
  setMessage(other.getMessage());
}

LOGLoggingEvent& LOGLoggingEvent::operator=(const LOGLoggingEvent& other) {
  if (this != &other) {
    setMessage(other.getMessage());
    m_level = other.m_level;
    m_logger = other.m_logger;
    m_timeStamp = other.m_timeStamp;
  }
  return *this;
}

LOG4ZEB_HOT LOGLoggingEvent::~LOGLoggingEvent() = default;

void LOGLoggingEvent::setMessage(const LOGObject* message) {
  zebTranslate(SOURCE, __LINE__, [&] {
    if (message != nullptr && typeid(*message) == typeid(LOGObject)) {
      m_plainMessage = *message;
      m_hasPlainMessage = true;
      m_message.reset();
    } else {
      m_message.reset(message == nullptr ? nullptr : message->clone());
      m_hasPlainMessage = false;
    }
  });
}

I18NString* LOGLoggingEvent::getRenderedMessage() {
  if (m_rare != nullptr && !m_rare->renderedMessage.isEmpty()) {
    return zebTranslate(SOURCE, 155, [this] { return new I18NString(m_rare->renderedMessage); });
  }
  LOGObject* const message = getMessage();
  if (message == nullptr || m_logger == nullptr) {
    return nullptr;
  }
  return zebTranslate(SOURCE, __LINE__, [&]() -> I18NString* {
    LOGRendererMap* const renderers = rendererMapOf(m_logger->getRepository());
    return renderers == nullptr ? nullptr : renderers->findAndRender(message);
  });
}

LOG4ZEB_HOT bool LOGLoggingEvent::appendRenderedMessage(I18NString& text) {
  if (m_rare != nullptr && !m_rare->renderedMessage.isEmpty()) {
    text.append(m_rare->renderedMessage);
    return true;
  }
  LOGObject* const message = getMessage();
  if (message == nullptr || m_logger == nullptr) {
    return false;
  }
  return zebTranslate(SOURCE, __LINE__, [&] {
    LOGRendererMap* const renderers = rendererMapOf(m_logger->getRepository());
    return renderers != nullptr && renderers->appendRendered(message, text);
  });
}

LOGLoggingEvent::Rare& LOGLoggingEvent::rare() {
  if (m_rare == nullptr) {
    m_rare = std::make_unique<Rare>();
  }
  return *m_rare;
}

const I18NString& LOGLoggingEvent::getThrowableStrRep() const {
  return m_rare == nullptr ? I18NString::none() : m_rare->throwableStrRep;
}

const I18NString& LOGLoggingEvent::getNDC() {
  if (m_ndcLookupRequired == 1) {
    zebTranslate(SOURCE, __LINE__, [this] { m_ndc = LOGNDC::get(); });
    m_ndcLookupRequired = 0;
  }
  return m_ndc;
}

LOG4ZEB_HOT const I18NString& LOGLoggingEvent::getThreadName() {
  if (m_threadName.isEmpty()) {
    zebTranslate(SOURCE, __LINE__, [this] { m_threadName.appendAscii(currentThreadText()); });
  }
  return m_threadName;
}

std::int64_t LOGLoggingEvent::getStartTime() { return m_startTime; }

const I18NString* LOGLoggingEvent::getMDC(const I18NString&) const { return nullptr; }
