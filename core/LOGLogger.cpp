#include "core/LOGLogger.h"

#include <algorithm>
#include <cstring>
#include <typeinfo>

#include "appenders/LOGAppenderPin.h"
#include "appenders/LOGAppenderSkeleton.h"
#include "appenders/LOGAsyncAppender.h"
#include "core/LOGCallScope.h"
#include "core/LOGFailures.h"
#include "core/LOGHierarchy.h"
#include "core/LOGLoggingEvent.h"
#include "core/LOGManager.h"
#include "core/LOGThrowableText.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBThreadInlineGuard.h"
#include "platform/ZEBTranslate.h"

namespace {

constexpr const char* SOURCE = "LOGLogger";
constexpr const char* EVENT_LOST = "LOGLogger -- no memory for an event, which is lost";

/// Runs `operation` under the logger's lock; a failure is reported with `text` and goes on.
template <typename Operation>
auto locked(const LOGLogger& logger, const char* text, Operation&& operation)
    -> decltype(operation()) {
  return logReportingAndPassing(text, [&] {
    const ZEBThreadGuard guard(logger.getCriticalSection());
    return operation();
  });
}

}  // namespace

const I18NString LOGLogger::m_FQCN = "LOGLogger";
std::atomic<std::uint64_t> LOGLogger::m_gateEpoch{1};

LOGLogger::LOGLogger() : LOGLogger(I18NString()) {}

LOGLogger::LOGLogger(const I18NString& name) : m_name(name) { instance(SOURCE); }

LOGLogger::LOGLogger(const LOGLogger& other)
    : LOGMutex(other),
      LOGAppenderAttachable(other),
      LOGObject(other),
      m_parent(other.getParent()),
      m_additive(other.getAdditivity()),
      m_repository(other.getRepository()),
      m_aai(other.m_aai),
      m_name(other.m_name) {
  storeLevel(other.getLevel());
}

LOGLogger& LOGLogger::operator=(const LOGLogger& other) {
  if (this != &other) {
    LOGObject::operator=(other);
    const LOGLevel* const level = other.getLevel();
    const ZEBThreadGuard guard(getCriticalSection());
    m_name = other.m_name;
    m_additive = other.getAdditivity();
    m_parent = other.getParent();
    m_aai = other.m_aai;
    m_repository = other.getRepository();
    storeLevel(level);
  }
  return *this;
}

LOGLogger::~LOGLogger() = default;

int LOGLogger::operator==(const LOGObject& other) const {
  const auto* const logger = dynamic_cast<const LOGLogger*>(&other);
  return logger != nullptr && *this == *logger ? 1 : 0;
}

int LOGLogger::operator!=(const LOGObject& other) const { return *this == other ? 0 : 1; }

LOGObject* LOGLogger::clone() const {
  ZEBAssertError::fail("ZEB_ASSERT_NAMED(FALSE, \"Not allowed to clone LOGLogger object.\");",
                       SOURCE, __LINE__);
}

LOGLevel* LOGLogger::getChainedLevel() const {
  for (const LOGLogger* logger = this; logger != nullptr; logger = logger->getParent()) {
    LOGLevel* const level = logger->m_level.load(std::memory_order_acquire);
    if (level != nullptr) {
      return level;
    }
  }
  return nullptr;
}

bool LOGLogger::wouldLogNow(int rank) const {
  // Read first: what changes from here on has another epoch.
  const std::uint64_t epoch = m_gateEpoch.load(std::memory_order_acquire);
  // Deliberate: on a logger without a repository only the level decides, unlike for log() and the
  // tests is...Enabled().
  LOGLoggerRepository* const repository = getRepository();
  const LOGLevel* const effective = getChainedLevel();
  // Another repository may answer as it likes, so its answer is not remembered.
  const bool isKnown = repository == nullptr || typeid(*repository) == typeid(LOGHierarchy);
  if (effective == nullptr || !isKnown) {
    return (repository == nullptr || repository->isDisabled(rank) != 1) && effective != nullptr &&
           rank >= effective->toInt();
  }
  const int lowest = repository == nullptr
                         ? effective->toInt()
                         : std::max(effective->toInt(),
                                    static_cast<LOGHierarchy*>(repository)->getThresholdRank());
  m_gate.store(epoch << GATE_BITS | stepFrom(lowest), std::memory_order_relaxed);
  return rank >= lowest;
}

void LOGLogger::logEnabled(int rank, LOGObject* message) {
  LOGLevel* const level = LOGLevel::toLevel(rank);
  if (level != nullptr) {
    forcedLog(m_FQCN, level, message);
  }
}

template <typename Message>
LOG4ZEB_INLINE inline void LOGLogger::logText(int rank, const Message& message) {
  LOGLevel* const level = LOGLevel::toLevel(rank);
  if (level != nullptr) {
    logContainingLackOfMemory(EVENT_LOST, [&]() LOG4ZEB_INLINE {
      LOGLoggingEvent event(this, level, message);
      passOn(&event, true);
    });
  }
}

LOG4ZEB_HOT void LOGLogger::logEnabled(int rank, const I18NString& message) {
  logText(rank, LOGMessageText{message});
}

LOG4ZEB_HOT void LOGLogger::logEnabled(int rank, std::string_view message) {
  logText(rank, LOGMessageUtf8{message});
}

template <typename Thrown>
void LOGLogger::logWithTextOf(int rank, std::string_view text, const Thrown& thrown) {
  LOGLevel* const level = wouldLog(rank) ? LOGLevel::toLevel(rank, nullptr) : nullptr;
  if (level != nullptr) {
    logContainingLackOfMemory(EVENT_LOST, [&] {
      LOGLoggingEvent event(this, level, LOGMessageUtf8{text});
      event.setThrowableStrRep(LOGThrowableText::of(thrown));
      passOn(&event, true);
    });
  }
}

void LOGLogger::logThrown(int rank, std::string_view text, const std::exception& thrown) {
  logWithTextOf(rank, text, thrown);
}

void LOGLogger::logThrown(int rank, std::string_view text, const std::exception_ptr& thrown) {
  logWithTextOf(rank, text, thrown);
}

void LOGLogger::reportLostEvent() noexcept { logReportOutOfMemory(EVENT_LOST); }

bool LOGLogger::passesRepositoryAndLevel(const LOGLevel* level) const {
  LOGLoggerRepository* const repository = getRepository();
  return repository != nullptr && level != nullptr && repository->isDisabled(level->toInt()) != 1 &&
         level->isGreaterOrEqual(getChainedLevel()) != 0;
}

void LOGLogger::log(LOGLevel* level, LOGObject* message) {
  if (passesRepositoryAndLevel(level)) {
    forcedLog(m_FQCN, level, message);
  }
}

void LOGLogger::log(LOGLevel* level, const I18NString& message) {
  if (passesRepositoryAndLevel(level)) {
    logContainingLackOfMemory(EVENT_LOST, [&] {
      LOGObject object(message);
      forcedLog(m_FQCN, level, &object);
    });
  }
}

void LOGLogger::l7dlog(LOGLevel* level, const I18NString& key) {
  if (getRepository() == nullptr) {
    return;
  }
  ZEB_ASSERT(level, SOURCE, 376);
  if (passesRepositoryAndLevel(level)) {
    const I18NString& text = getResourceBundleString(key);
    logContainingLackOfMemory(EVENT_LOST, [&] {
      LOGObject message(text.isEmpty() ? key : text);
      forcedLog(m_FQCN, level, &message);
    });
  }
}

void LOGLogger::assertLog(int assertion, const I18NString& msg) {
  if (assertion == 0) {
    error(msg);
  }
}

void LOGLogger::forcedLog(const I18NString& fqn, LOGLevel* level, LOGObject* message) {
  logContainingLackOfMemory(EVENT_LOST, [&] {
    LOGLoggingEvent event(fqn, this, level, message);
    passOn(&event, true);
  });
}

inline bool LOGLogger::mayHaveAppenders() const {
  // Most loggers have none, and are passed without their lock. Whoever holds it may be adding one.
  return getCriticalSection().isHeldElsewhere() || m_aai.hasAppenders();
}

LOG4ZEB_HOT void LOGLogger::passOn(LOGLoggingEvent* event, bool mayRender) {
  const LOGCallScope call;
  int writes = 0;
  for (LOGLogger* logger = this; logger != nullptr; logger = logger->getParent()) {
    int additive = logger->getAdditivity();  // asked first: it changes under the lock
    if (logger->mayHaveAppenders()) {
      // Before the first lock is taken: code of the program may log itself.
      if (mayRender && event->needsRendering()) {
        event->render();
      }
      writes += logReportingAndPassing(
          "LOGLogger::callAppenders -- unable to lock mutex", [&]() LOG4ZEB_INLINE {
            const ZEBThreadInlineGuard guard(logger->getCriticalSection());
            const int called = logger->m_aai.appendLoopOnAppenders(event);
            additive = logger->getAdditivity();
            return called;
          });
    }
    if (additive == 0) {
      break;
    }
  }
  if (writes == 0) {
    if (LOGLoggerRepository* const repository = getRepository()) {
      repository->emitNoAppenderWarning(this);
    }
  }
}

int LOGLogger::isEnabledFor(LOGLevel* level) const {
  return passesRepositoryAndLevel(level) ? 1 : 0;
}

int LOGLogger::isDebugEnabled() const {
  return isEnabledFor(LOGLevel::toLevel(LOGLevel::DEBUG_RANK));
}

int LOGLogger::isInfoEnabled() const {
  return isEnabledFor(LOGLevel::toLevel(LOGLevel::INFO_RANK));
}

LOGLevel* LOGLogger::keptCopyOf(const LOGLevel& level) {
  for (const auto& copy : m_levelCopies) {
    if (*copy == level && std::strcmp(copy->toString(), level.toString()) == 0) {
      return copy.get();
    }
  }
  m_levelCopies.push_back(std::make_unique<LOGLevel>(level));
  return m_levelCopies.back().get();
}

void LOGLogger::storeLevel(const LOGLevel* level) {
  m_level.store(level == nullptr ? nullptr : keptCopyOf(*level), std::memory_order_release);
  forgetGates();
}

void LOGLogger::setLevel(LOGLevel* level) {
  zebTranslate(SOURCE, 507, [&] {
    const ZEBThreadGuard guard(getCriticalSection());
    storeLevel(level);
  });
}

const I18NString& LOGLogger::getResourceBundleString(const I18NString&) const {
  return I18NString::none();
}

void LOGLogger::addAppender(LOGAppenderSkeleton* newAppender) {
  locked(*this, "LOGLogger::addAppender -- unable to lock mutex",
         [&] { m_aai.addAppender(newAppender); });
}

ZEBListIterator<LOGAppenderSkeleton*> LOGLogger::getAllAppenders() {
  return locked(*this, "LOGLogger::getAllAppenders -- unable to lock mutex",
                [&] { return m_aai.getAllAppenders(); });
}

LOGAppenderSkeleton* LOGLogger::getAppender(const I18NString& name) {
  return locked(*this, "LOGLogger::getAppender -- unable to lock mutex",
                [&] { return m_aai.getAppender(name); });
}

void LOGLogger::removeAllAppenders(LOGHashtable* table) {
  LOGFirstFailure failure;
  failure.keepOf([&] {
    locked(*this, "LOGLogger::removeAllAppenders -- unable to lock mutex",
           [&] { m_aai.removeAllAppenders(table); });
  });
  m_aai.awaitUsers({nullptr, true, true});
  failure.passOn();
}

void LOGLogger::removeAppender(const I18NString& name) {
  m_aai.awaitUsers(locked(*this, "LOGLogger::removeAppender -- unable to lock mutex",
                          [&] { return m_aai.takeOut(name); }));
}

void LOGLogger::removeAppender(LOGAppenderSkeleton* appender) {
  m_aai.awaitUsers(locked(*this, "LOGLogger::removeAppender -- unable to lock mutex",
                          [&] { return m_aai.takeOut(appender); }));
}

void LOGLogger::replaceAppenders(const std::vector<LOGAppenderSkeleton*>& appenders,
                                 std::optional<int> additive) {
  locked(*this, "LOGLogger::replaceAppenders -- unable to lock mutex", [&] {
    setAdditivity(additive.value_or(getAdditivity()));
    const LOGAppenderAttachableImpl::Replacement replacement(m_aai);
    removeAllAppenders();
    for (LOGAppenderSkeleton* const appender : appenders) {
      addAppender(appender);
    }
  });
}

void LOGLogger::exchangeAppenders(
    const std::function<LOGAppenderSkeleton*(const LOGAppenderSkeleton&)>& replacementFor) {
  const ZEBThreadGuard guard(getCriticalSection());
  const LOGAppenderAttachableImpl::Replacement replacement(m_aai);
  for (LOGAppenderSkeleton* const attached : snapshotOfAppenders()) {
    if (LOGAppenderSkeleton* const live = replacementFor(*attached)) {
      removeAppender(attached);
      addAppender(live);
    }
  }
}

void LOGLogger::closeAsyncAppenders(int milliseconds) {
  LOGAppenderPin pin;
  for (std::size_t i = 0; LOGAppenderSkeleton* const appender = m_aai.pinAt(i, pin); ++i) {
    if (auto* const async = dynamic_cast<LOGAsyncAppender*>(appender)) {
      async->flush(milliseconds);
      async->close();
    }
  }
}

void LOGLogger::closeNestedAppenders() {
  locked(*this, "LOGLogger::closeNestedAppenders -- unable to lock mutex", [&] {
    LOGFirstFailure failure;
    m_aai.forEach(
        [&](LOGAppenderSkeleton& appender) { failure.keepOf([&] { appender.close(); }); });
    failure.passOn();
  });
}

LOGLogger* LOGLogger::getLogger(const I18NString& name) { return LOGManager::getLogger(name); }

LOGLogger* LOGLogger::getLogger(const I18NString& name, LOGLoggerFactory* factory) {
  return LOGManager::getLogger(name, factory);
}

LOGLogger* LOGLogger::getRootLogger() { return LOGManager::getRootLogger(); }

LOGLogger* LOGLogger::exists(const I18NString& name) { return LOGManager::exists(name); }

void LOGLogger::shutdown() { LOGManager::shutdown(); }
