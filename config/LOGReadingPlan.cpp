#include "config/LOGReadingPlan.h"

#include <algorithm>
#include <utility>

#include "config/LOGDOMConfigurator.h"
#include "platform/ZEBIDOM_Document.h"
#include "platform/ZEBIDOM_NodeList.h"

namespace {

using State = LOGComponentStore::State;

// Appenders refer to others two or three deep; a document that goes on and on would overflow the
// stack.
constexpr std::size_t DEEPEST_REFERENCES = 64;

// Each is compared with all others of its logger.
constexpr std::size_t MOST_APPENDERS = 1000;

}  // namespace

LOGReadingPlan::LOGReadingPlan(LOGComponentStore& store, const ZEBIDOM_Element& root, Build build)
    : m_store(store), m_build(std::move(build)) {
  const ZEBIDOM_NodeList elements =
      root.getOwnerDocument().getElementsByTagName(LOGDOMConfigurator::APPENDER_TAG);
  for (std::size_t i = 0; i < elements.getLength(); ++i) {
    const ZEBIDOM_Element element(elements.item(i));
    m_names.emplace(element.getAttribute(LOGDOMConfigurator::LOG4ZEB_NAME_ATTR), Name{element});
  }
  for (const LOGComponentStore::Appender& own : m_store.appenders()) {
    if (own.state == State::Built || own.state == State::Retired) {
      retire(*own.object, nullptr);
    }
    if (own.state != State::Closed && !own.object->getName().isEmpty()) {
      m_names[own.object->getName()].newest = own.object.get();
    }
  }
}

LOGAppenderSkeleton* LOGReadingPlan::findAppenderByName(const I18NString& name) {
  constexpr const char* PREFIX = "LOGDOMConfigurator::findAppenderByName : ";
  Name& known = m_names[name];
  if (LOGAppenderSkeleton* const usable = usableAppender(name)) {
    LOGLogLog::debug(PREFIX + ("The appender " + name) +
                     " already exists in appender bag, return it.");
    known.isReferredTo = true;
    return usable;
  }
  LOGLogLog::debug(PREFIX + ("The appender " + name) +
                   " doesn't exist in appender bag or is already stale, parse from dom.");
  // One that is being built refers to itself, directly or through others.
  if (known.element.isNull() || known.isBeingBuilt || m_depth == DEEPEST_REFERENCES) {
    LOGLogLog::error(PREFIX + ("No appender named [" + name) + "] could be found.");
    return nullptr;
  }
  if (m_built == MOST_APPENDERS) {
    LOGLogLog::error("A document has no more than 1000 appenders in use; left out is [" + name +
                     "]");
    return nullptr;
  }
  known.isBeingBuilt = true;
  ++m_depth;
  LOGAppenderSkeleton* const appender = m_build(known.element);
  --m_depth;
  known.isBeingBuilt = false;
  if (appender == nullptr) {
    return nullptr;
  }
  auto* const async = dynamic_cast<LOGAsyncAppender*>(appender);
  auto* const predecessor = dynamic_cast<LOGAsyncAppender*>(known.newest);
  if (async != nullptr && predecessor != nullptr && isRetired(predecessor)) {
    async->succeed(*predecessor);
  }
  ++m_built;
  known.isReferredTo = true;
  LOGLogLog::debug(PREFIX + ("Put appender " + name) + " into the appender bag.");
  // One without a name is never found again.
  known.newest = name.isEmpty() ? nullptr : appender;
  return appender;
}

void LOGReadingPlan::retireAppendersOf(const LOGLogger& logger) {
  const ZEBThreadGuard guard(logger.getCriticalSection());  // which a removal takes, too
  for (LOGAppenderSkeleton* const appender : logger.snapshotOfAppenders()) {
    if (!isRetired(appender)) {
      const bool isOwn = m_store.find(appender) != nullptr;
      retire(*appender,
             isOwn ? nullptr : std::make_unique<LOGAppenderClaim>(logger.getAAI(), *appender));
    }
  }
}

void LOGReadingPlan::keepAppendersThatStayedAt(const LOGLogger& logger) {
  for (const LOGAppenderSkeleton* const attached : logger.snapshotOfAppenders()) {
    m_retired.erase(std::remove_if(m_retired.begin(), m_retired.end(),
                                   [attached](const Retired& retired) {
                                     return retired.claim != nullptr &&
                                            retired.appender == attached;
                                   }),
                    m_retired.end());
  }
}

void LOGReadingPlan::carryOut(LOGLoggerRepository& repository) {
  logTakeOutOfUse([&] {
    logForEachLogger(repository, [this](const LOGLogger& logger) {
      rebuild(logger.snapshotOfAppenders(), true);
    });
  });
  exchange(repository);
  closeRetired();
}

/// Builds what takes the place of those that are out: at a logger, where it was given one that a
/// logger read later has lost; and behind asynchronous appenders, whatever the document describes.
void LOGReadingPlan::rebuild(const std::vector<LOGAppenderSkeleton*>& attached, bool isAtLogger) {
  for (LOGAppenderSkeleton* appender : attached) {
    if (m_store.find(appender) == nullptr) {
      continue;
    }
    const I18NString& name = appender->getName();
    const Name& known = m_names[name];
    // One without a name is never found again, so it is not built for this.
    if (isOut(*appender) && !name.isEmpty() && !known.element.isNull() &&
        (!isAtLogger || known.isReferredTo)) {
      LOGAppenderSkeleton* const live = isAtLogger ? usableAppender(name) : nullptr;
      appender = live != nullptr ? live : findAppenderByName(name);
    }
    auto* const async = dynamic_cast<LOGAsyncAppender*>(appender);
    if (async != nullptr && !isOut(*async) && m_rebuilt.insert(async).second) {
      rebuild(async->getAAI()->snapshot(), false);
    }
  }
}

void LOGReadingPlan::exchange(LOGLoggerRepository& repository) const {
  logForEachLogger(repository, [this](LOGLogger& logger) {
    logTakeOutOfUse([&] {
      logger.exchangeAppenders(
          [this](const LOGAppenderSkeleton& attached) { return replacementFor(attached); });
    });
  });
  for (const LOGComponentStore::Appender& own : m_store.appenders()) {
    auto* const async = dynamic_cast<LOGAsyncAppender*>(own.object.get());
    if (async == nullptr || isOut(*async)) {
      continue;
    }
    logTakeOutOfUse([&] {
      LOGAppenderAttachableImpl& list = *async->getAAI();
      const ZEBThreadGuard guard(list.getCriticalSection());
      for (LOGAppenderSkeleton* const attached : list.snapshot()) {
        LOGAppenderSkeleton* const live = replacementFor(*attached);
        // An order that the document has turned round must not have events go round for ever.
        if (live != nullptr && !LOGAsyncAppender::reaches(*live, *async)) {
          list.replaceAppender(*attached, *live);
        }
      }
    });
  }
}

LOGAppenderSkeleton* LOGReadingPlan::replacementFor(const LOGAppenderSkeleton& attached) const {
  return isOut(attached) ? usableAppender(attached.getName()) : nullptr;
}

void LOGReadingPlan::closeRetired() {
  logTakeOutOfUse([this] { m_queues.flush(LOGAsyncAppender::LONGEST_FINAL_FLUSH); });
  // Asynchronous ones are closed before those that they pass events on to.
  for (const bool isAsync : {true, false}) {
    for (const Retired& retired : m_retired) {
      if (retired.isAsync != isAsync) {
        continue;
      }
      logTakeOutOfUse([&] {
        if (retired.claim == nullptr) {
          LOGComponentStore::close(*m_store.find(retired.appender));
        } else {
          retired.claim->use([](LOGAppenderSkeleton& appender) { appender.close(); });
        }
      });
    }
  }
}

LOGAppenderSkeleton* LOGReadingPlan::usableAppender(const I18NString& name) const {
  const auto found = m_names.find(name);
  LOGAppenderSkeleton* const newest = found == m_names.end() ? nullptr : found->second.newest;
  const bool isUsable = newest != nullptr && !isOut(*newest) && !newest->isClosedForGood();
  return isUsable ? newest : nullptr;
}

void LOGReadingPlan::retire(LOGAppenderSkeleton& appender,
                            std::unique_ptr<LOGAppenderClaim> claim) {
  m_queues.add(appender);
  m_retired.push_back({&appender, std::move(claim), LOGComponentStore::isAsynchronous(appender)});
  if (LOGComponentStore::Appender* const own = m_store.find(&appender)) {
    own->state = State::Retired;
  }
}

bool LOGReadingPlan::isRetired(const LOGAppenderSkeleton* appender) const {
  return std::any_of(m_retired.begin(), m_retired.end(),
                     [&](const Retired& retired) { return retired.appender == appender; });
}

/// Whether it gets no further events: this reading has retired it, or an earlier one closed it.
bool LOGReadingPlan::isOut(const LOGAppenderSkeleton& appender) const {
  return appender.isStale() != 0 || isRetired(&appender);
}
