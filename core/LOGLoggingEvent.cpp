#include "core/LOGLoggingEvent.h"

#include <utility>

#include "core/LOGLogger.h"
#include "core/LOGLoggerRepository.h"
#include "core/LOGNDC.h"
#include "core/LOGObject.h"
#include "layouts/LOGLocationInfo.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBThread.h"
#include "platform/ZEBTranslate.h"
#include "platform/ZEBUtConvert.h"
#include "platform/ZEBUtTime.h"
#include "rendering/LOGRendererMap.h"
#include "rendering/LOGRendererSupport.h"

const std::int64_t LOGLoggingEvent::m_startTime = ZEBUtTime::nowSeconds();

namespace {

constexpr const char* SOURCE = "LOGLoggingEvent";
constexpr const char* LEVEL_METHOD = "toLevel";

std::unique_ptr<LOGObject> cloneOf(const LOGObject* message) {
  return std::unique_ptr<LOGObject>(zebTranslate(
      SOURCE, __LINE__, [message] { return message == nullptr ? nullptr : message->clone(); }));
}

}  // namespace

LOGLoggingEvent::LOGLoggingEvent() = default;

LOGLoggingEvent::LOGLoggingEvent(const I18NString& fqnOfCategoryClass, LOGLogger* logger,
                                 LOGLevel* level, LOGObject* message)
    : m_level(level),
      m_logger(logger),
      m_fqnOfCategoryClass(fqnOfCategoryClass),
      m_levelMethod(LEVEL_METHOD) {
  ZEB_ASSERT(m_logger, SOURCE, 99);
  m_loggerName = m_logger->getName();
  m_timeStamp = ZEBUtTime::nowSeconds();
  m_message = cloneOf(message);
  getLocationInformation();
}

LOGLoggingEvent::LOGLoggingEvent(const LOGLoggingEvent& other)
    : LOGSerializable(other),
      m_loggerName(other.m_loggerName),
      m_timeStamp(other.m_timeStamp),
      m_sequence(other.m_sequence),
      m_level(other.m_level),
      m_logger(other.m_logger),
      m_fqnOfCategoryClass(other.m_fqnOfCategoryClass),
      m_ndc(other.m_ndc),
      m_ndcLookupRequired(other.m_ndcLookupRequired),
      m_mdcCopyLookupRequired(other.m_mdcCopyLookupRequired),
      m_message(cloneOf(other.m_message.get())),
      m_renderedMessage(other.m_renderedMessage),
      m_threadName(other.m_threadName),
      m_levelMethod(other.m_levelMethod) {
  getLocationInformation();
}

LOGLoggingEvent& LOGLoggingEvent::operator=(const LOGLoggingEvent& other) {
  if (this != &other) {
    std::unique_ptr<LOGObject> message = cloneOf(other.m_message.get());
    m_level = other.m_level;
    m_logger = other.m_logger;
    m_fqnOfCategoryClass = other.m_fqnOfCategoryClass;
    m_timeStamp = other.m_timeStamp;
    m_message = std::move(message);
    m_locationInfo.reset();
    getLocationInformation();
  }
  return *this;
}

LOGLoggingEvent::~LOGLoggingEvent() = default;

I18NString* LOGLoggingEvent::getRenderedMessage() {
  if (!m_renderedMessage.isEmpty()) {
    return zebTranslate(SOURCE, 155, [this] { return new I18NString(m_renderedMessage); });
  }
  if (m_message == nullptr || m_logger == nullptr) {
    return nullptr;
  }
  auto* const renderers = dynamic_cast<LOGRendererSupport*>(m_logger->getRepository());
  return zebTranslate(SOURCE, __LINE__, [&]() -> I18NString* {
    return renderers == nullptr ? nullptr
                                : renderers->getRendererMap()->findAndRender(m_message.get());
  });
}

void LOGLoggingEvent::setRenderedMessage(const I18NString& text) { m_renderedMessage = text; }

const I18NString& LOGLoggingEvent::getNDC() {
  if (m_ndcLookupRequired == 1) {
    m_ndcLookupRequired = 0;
    m_ndc = LOGNDC::get();
  }
  return m_ndc;
}

const I18NString& LOGLoggingEvent::getThreadName() {
  if (m_threadName.isEmpty()) {
    m_threadName = ZEBUtConvert::handleCvt(ZEBThread::currentThreadId());
  }
  return m_threadName;
}

LOGLocationInfo* LOGLoggingEvent::getLocationInformation() {
  if (m_locationInfo == nullptr) {
    m_locationInfo = zebTranslate(SOURCE, __LINE__, [this] {
      return std::make_unique<LOGLocationInfo>(m_fqnOfCategoryClass);
    });
  }
  return m_locationInfo.get();
}

std::int64_t LOGLoggingEvent::getStartTime() { return m_startTime; }

const I18NString* LOGLoggingEvent::getMDC(const I18NString&) const { return nullptr; }
