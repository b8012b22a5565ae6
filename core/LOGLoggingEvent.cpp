#include "core/LOGLoggingEvent.h"

#include <charconv>
#include <typeinfo>
#include <utility>

#include "core/LOGHierarchy.h"
#include "core/LOGLogger.h"
#include "core/LOGLoggerRepository.h"
#include "core/LOGNDC.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBOutOfMemoryError.h"
#include "platform/ZEBThread.h"
#include "platform/ZEBTranslate.h"
#include "platform/ZEBUtTime.h"
#include "rendering/LOGRendererMap.h"

const std::int64_t LOGLoggingEvent::m_startTime = ZEBUtTime::nowSeconds();

namespace {

constexpr const char* SOURCE = "LOGLoggingEvent";

/// The decimal number of a thread.
struct ThreadText {
  std::uint64_t thread;
  std::uint32_t size;
  char digits[32];

  LOG4ZEB_COLD void set(std::uint64_t number) {
    char* const end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    size = static_cast<std::uint32_t>(end - digits);
    thread = number;
  }
};

/// That of the calling thread, converted once for each thread.
const ThreadText& currentThreadText() {
  static thread_local ThreadText t_text = {};
  const std::uint64_t thread = ZEBThread::currentThreadId();
  if (t_text.thread != thread) {  // also in the child of a fork
    t_text.set(thread);
  }
  return t_text;
}

/// Whether the repository is the library's own, and not of a class derived from it.
bool isHierarchy(const LOGLoggerRepository& repository) {
  // That type is described once, in the library; comparing descriptions would be a call.
  return &typeid(repository) == &typeid(LOGHierarchy);
}

/// The repository's side that renders, or null.
LOGRendererMap* rendererMapOf(LOGLoggerRepository* repository) {
  auto* const renderers = dynamic_cast<LOGRendererSupport*>(repository);
  return renderers == nullptr ? nullptr : renderers->getRendererMap();
}

}  // namespace

LOGLoggingEvent::LOGLoggingEvent() = default;

LOGLoggingEvent::LOGLoggingEvent(const I18NString&, LOGLogger* logger, LOGLevel* level,
                                 LOGObject* message) try
    : LOGLoggingEvent(logger, level) {
  setMessage(message);
} catch (const std::bad_alloc&) {
  throw ZEBOutOfMemoryError(SOURCE, __LINE__);
}

LOG4ZEB_HOT LOGLoggingEvent::LOGLoggingEvent(LOGLogger* logger, LOGLevel* level,
                                             const LOGMessageText& message)
    : LOGLoggingEvent(logger, level) {
  m_plainMessage.m_string.append(message.text);
  m_hasPlainMessage = true;
}

LOG4ZEB_HOT LOGLoggingEvent::LOGLoggingEvent(LOGLogger* logger, LOGLevel* level,
                                             const LOGMessageUtf8& message)
    : LOGLoggingEvent(logger, level) {
  m_plainMessage.m_string.append(message.text);
  m_hasPlainMessage = true;
}

LOG4ZEB_HOT LOGLoggingEvent::LOGLoggingEvent(LOGLogger* logger, LOGLevel* level)
    : m_timeStamp(ZEBUtTime::nowSeconds()), m_level(level), m_logger(logger) {
  ZEB_ASSERT(m_logger, SOURCE, 99);
  m_loggerName.append(m_logger->getName());
}

LOGLoggingEvent::LOGLoggingEvent(const LOGLoggingEvent& other) try
    : LOGLoggingEvent(other, SharingMessage()) {
  setMessage(other.getMessage());
} catch (const std::bad_alloc&) {
  throw ZEBOutOfMemoryError(SOURCE, __LINE__);
}

LOGLoggingEvent::LOGLoggingEvent(const LOGLoggingEvent& other, SharingMessage)
    : LOGSerializable(other),
      m_timeStamp(other.m_timeStamp),
      m_sequence(other.m_sequence),
      m_ndcLookupRequired(other.m_ndcLookupRequired),
      m_mdcCopyLookupRequired(other.m_mdcCopyLookupRequired),
      m_hasPlainMessage(other.m_hasPlainMessage),
      m_level(other.m_level),
      m_logger(other.m_logger),
      m_message(other.m_message),
      m_threadName(other.m_threadName),
      m_ndc(other.m_ndc),
      m_loggerName(other.m_loggerName),
      m_plainMessage(other.m_plainMessage) {
  if (other.isRendered()) {
    rare().rendering = other.m_rare->rendering;
  }
}

std::unique_ptr<LOGLoggingEvent> LOGLoggingEvent::copyForQueue() const {
  return zebTranslate(SOURCE, __LINE__, [this] {
    return std::unique_ptr<LOGLoggingEvent>(new LOGLoggingEvent(*this, SharingMessage()));
  });
}

LOGLoggingEvent& LOGLoggingEvent::operator=(const LOGLoggingEvent& other) {
  if (this != &other) {
    Rendering rendering;
    zebTranslate(SOURCE, __LINE__, [&] {
      if (other.isRendered()) {
        rare();
        rendering = other.m_rare->rendering;
      }
    });
    setMessage(other.getMessage());
    if (m_rare != nullptr) {
      m_rare->rendering = std::move(rendering);
    }
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

/// Whether the message is its own text for every renderer that there is.
inline bool LOGLoggingEvent::isOwnText() const {
  if (!m_hasPlainMessage || isRendered() || m_logger == nullptr) {
    return false;
  }
  const LOGLoggerRepository* const repository = m_logger->getRepository();
  return repository != nullptr && isHierarchy(*repository) &&
         LOGRendererMap::isAllRenderedByDefault();
}

LOG4ZEB_HOT bool LOGLoggingEvent::needsRendering() const {
  return !isOwnText() && isRenderedByProgram();
}

LOG4ZEB_COLD bool LOGLoggingEvent::isRenderedByProgram() const {
  if (isRendered() || m_logger == nullptr) {
    return false;
  }
  if (!m_hasPlainMessage) {
    return m_message != nullptr;
  }
  const LOGLoggerRepository* const repository = m_logger->getRepository();
  return (repository != nullptr && !isHierarchy(*repository)) ||
         !LOGRendererMap::isRenderedByDefault(m_plainMessage.instanceOf());
}

void LOGLoggingEvent::render() {
  Rendering& kept = rare().rendering;
  try {
    const std::unique_ptr<I18NString> text(getRenderedMessage());
    if (text == nullptr) {
      kept.result = Rendering::Result::NULL_TEXT;
    } else {
      setRenderedMessage(*text);
    }
  } catch (...) {
    kept.failure = std::make_shared<const std::exception_ptr>(std::current_exception());
    kept.result = Rendering::Result::FAILURE;
  }
}

void LOGLoggingEvent::setRenderedMessage(const I18NString& text) {
  rare().rendering.text = text;
  rare().rendering.result = Rendering::Result::TEXT;
}

const I18NString* LOGLoggingEvent::keptRendering() const {
  const Rendering& kept = m_rare->rendering;
  if (kept.result == Rendering::Result::FAILURE) {
    try {
      std::rethrow_exception(*kept.failure);
    } catch (const ZEBThrowable& failure) {
      failure.raise();  // a copy, because its back trace grows and another thread may have it too
    }
  }
  return kept.result == Rendering::Result::TEXT ? &kept.text : nullptr;
}

I18NString* LOGLoggingEvent::getRenderedMessage() {
  if (isRendered()) {
    return zebTranslate(SOURCE, 155, [this] {
      const I18NString* const text = keptRendering();
      return text == nullptr ? nullptr : new I18NString(*text);
    });
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

LOG4ZEB_HOT const I18NString* LOGLoggingEvent::ownTextOfMessage() const {
  return isOwnText() ? &m_plainMessage.m_string : nullptr;
}

bool LOGLoggingEvent::appendRenderedMessage(I18NString& text) {
  if (const I18NString* const own = ownTextOfMessage()) {
    text.append(*own);
    return true;
  }
  const std::unique_ptr<I18NString> rendered(getRenderedMessage());
  if (rendered != nullptr) {
    zebTranslate(SOURCE, __LINE__, [&] { text.append(*rendered); });
  }
  return rendered != nullptr;
}

LOGLoggingEvent::Rare& LOGLoggingEvent::rare() {
  if (m_rare == nullptr) {
    m_rare = std::make_unique<Rare>();
  }
  return *m_rare;
}

void LOGLoggingEvent::setThrowableStrRep(const I18NString& text) {
  zebTranslate(SOURCE, __LINE__, [&] { rare().throwableStrRep = text; });
}

const I18NString& LOGLoggingEvent::getThrowableStrRep() const {
  return m_rare == nullptr ? I18NString::none() : m_rare->throwableStrRep;
}

LOG4ZEB_HOT const I18NString& LOGLoggingEvent::getNDC() {
  if (m_ndcLookupRequired == 1) {
    const I18NString& context = LOGNDC::get();
    if (!context.isEmpty()) {
      setNDC(context);
    }
    m_ndcLookupRequired = 0;
  }
  return m_ndc;
}

void LOGLoggingEvent::setNDC(const I18NString& context) {
  zebTranslate(SOURCE, __LINE__, [&] { m_ndc = context; });
}

LOG4ZEB_HOT const I18NString& LOGLoggingEvent::getThreadName() {
  if (m_threadName.isEmpty()) {
    const ThreadText& text = currentThreadText();
    m_threadName.appendAscii(text.digits, text.size);  // for which there is room
  }
  return m_threadName;
}
