#include "config/LOGComponentStore.h"

#include <algorithm>

#include "appenders/LOGAppenderPin.h"
#include "appenders/LOGAsyncAppender.h"
#include "net/LOGLocalUDPAppender.h"

LOGComponentStore::~LOGComponentStore() {
  // Asynchronous ones first: they end threads that use the others.
  for (const bool isAsync : {true, false}) {
    for (const Appender& own : m_appenders) {
      if (isAsynchronous(*own.object) == isAsync) {
        logTakeOutOfUse([&] { own.object->close(); });
      }
    }
  }
  for (const Appender& own : m_appenders) {
    logTakeOutOfUse([&] { detachFromLoggers(own.object.get()); });
  }
  // Asynchronous ones again: their destructor waits for the thread, which a close() need not have
  // done.
  for (Appender& own : m_appenders) {
    LOGAppenderPin::awaitOthers(nullptr, own.object.get());
    if (isAsynchronous(*own.object)) {
      own.object.reset();
    }
  }
}

LOGAppenderSkeleton* LOGComponentStore::add(std::unique_ptr<LOGAppenderSkeleton> appender) {
  Appender*& entry = m_byAddress[appender.get()];  // stays null where the next throws
  entry = &m_appenders.emplace_back(Appender{std::move(appender), State::Built});
  return entry->object.get();
}

LOGLayout* LOGComponentStore::add(std::unique_ptr<LOGLayout> layout) {
  return m_layouts.emplace_back(std::move(layout)).get();
}

LOGFilter* LOGComponentStore::add(std::unique_ptr<LOGFilter> filter) {
  const bool isHere = std::any_of(m_filters.begin(), m_filters.end(),
                                  [&](const auto& known) { return known == filter; });
  return isHere ? filter.release() : m_filters.emplace_back(std::move(filter)).get();
}

LOGComponentStore::Appender* LOGComponentStore::find(const LOGAppenderSkeleton* appender) const {
  const auto found = m_byAddress.find(appender);
  return found == m_byAddress.end() ? nullptr : found->second;
}

void LOGComponentStore::keepBuilt() {
  for (Appender& own : m_appenders) {
    own.state = own.state == State::Built ? State::InUse : own.state;
  }
}

void LOGComponentStore::close(Appender& own) {
  LOGAppenderSkeleton& appender = *own.object;
  auto* const async = dynamic_cast<LOGAsyncAppender*>(&appender);
  const bool isDelivering = async != nullptr && async->flush(0) != 0;
  // A dispatcher that passes an event on may have come to it before it left the list.
  LOGAppenderPin::awaitOthers(nullptr, &appender);
  if (isDelivering) {
    async->flush(LOGAsyncAppender::LONGEST_FINAL_FLUSH);  // such an event
  }
  own.state = State::Closed;
  appender.markAsStale();
  appender.close();
  // It stays allocated, and without this each reading would leave a socket open.
  if (auto* const sender = dynamic_cast<LOGLocalUDPAppender*>(&appender)) {
    sender->release();
  }
  // Nor does it keep appenders of the program, which may be deleted.
  if (async != nullptr) {
    LOGAppenderAttachableImpl& list = *async->getAAI();
    const ZEBThreadGuard guard(list.getCriticalSection());
    const LOGAppenderAttachableImpl::Replacement withoutClosing(list);
    list.removeAllAppenders();
  }
}

void LOGComponentStore::forget(LOGLoggerRepository* repository) {
  LOGLogger* const root =
      m_repositories.erase(repository) == 0 ? nullptr : repository->getRootLogger();
  if (root != nullptr) {  // it may live on
    for (const Appender& own : m_appenders) {
      logTakeOutOfUse([&] { root->removeAppender(own.object.get()); });
    }
  }
}

void LOGComponentStore::detachFromLoggers(LOGAppenderSkeleton* appender) const {
  for (LOGLoggerRepository* const repository : m_repositories) {
    logForEachLogger(*repository, [appender](LOGLogger& logger) {
      const ZEBThreadGuard guard(logger.getCriticalSection());
      logger.removeAppender(appender);
      for (std::size_t i = 0; LOGAppenderSkeleton* const attached = logger.appenderAt(i); ++i) {
        if (auto* const holder = dynamic_cast<LOGAppenderAttachable*>(attached)) {
          holder->removeAppender(appender);
        }
      }
    });
  }
}

bool LOGComponentStore::isAsynchronous(const LOGAppenderSkeleton& appender) {
  return dynamic_cast<const LOGAsyncAppender*>(&appender) != nullptr;
}
