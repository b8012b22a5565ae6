#include "appenders/LOGAppenderAttachableImpl.h"

#include <algorithm>
#include <iterator>

#include "appenders/LOGAppenderSkeleton.h"
#include "core/LOGFailures.h"
#include "core/LOGHashtable.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBForkGate.h"
#include "platform/ZEBThreadGuard.h"

namespace {

constexpr const char* SOURCE = "LOGAppenderAttachableImpl";

}  // namespace

LOGAppenderAttachableImpl::Walk::Walk(LOGAppenderAttachableImpl& list)
    : m_list(list), m_next(list.m_appenderList.begin()), m_outer(list.innermostWalk()) {
  m_list.m_innermostWalk = this;
}

LOGAppenderAttachableImpl::Walk::~Walk() { m_list.m_innermostWalk = m_outer; }

LOGAppenderSkeleton* LOGAppenderAttachableImpl::Walk::next() {
  if (m_next.atEnd()) {
    return nullptr;
  }
  LOGAppenderSkeleton* const appender = *m_next;
  ++m_next;
  return appender;
}

void LOGAppenderAttachableImpl::Walk::leave(Position position) {
  if (m_next == position) {
    ++m_next;
  }
}

/// Publishes a change at its end, however it ends.
class LOGAppenderAttachableImpl::Publishing {
 public:
  explicit Publishing(LOGAppenderAttachableImpl& list) : m_list(list) {}
  Publishing(const Publishing&) = delete;
  Publishing& operator=(const Publishing&) = delete;
  ~Publishing() { m_list.publish(); }

 private:
  LOGAppenderAttachableImpl& m_list;
};

LOGAppenderAttachableImpl::LOGAppenderAttachableImpl() : m_iterator(m_appenderList.begin()) {}

LOGAppenderAttachableImpl::LOGAppenderAttachableImpl(const LOGAppenderAttachableImpl& other)
    : LOGAppenderAttachable(other), LOGMutex(other), m_iterator(m_appenderList.begin()) {
  *this = other;
}

LOGAppenderAttachableImpl& LOGAppenderAttachableImpl::operator=(
    const LOGAppenderAttachableImpl& other) {
  if (this != &other) {
    const Publishing publishing(*this);
    clear();
    for (LOGAppenderSkeleton* const appender : other.snapshot()) {
      add(appender);
    }
  }
  return *this;
}

LOGAppenderAttachableImpl::~LOGAppenderAttachableImpl() = default;

void LOGAppenderAttachableImpl::add(LOGAppenderSkeleton* appender) {
  const ZEBThreadGuard guard(m_access);
  m_appenderList.add(appender);
}

void LOGAppenderAttachableImpl::forgetVanishedThreads() {
  // A thread that a fork has left behind will not come to the end of its walk or replacement.
  const unsigned epoch = ZEBForkGate::epoch();
  if (m_epochOfThreads != epoch) {
    m_epochOfThreads = epoch;
    m_innermostWalk = nullptr;
    m_isBeingReplaced = false;
  }
}

LOGAppenderAttachableImpl::Walk* LOGAppenderAttachableImpl::innermostWalk() {
  forgetVanishedThreads();
  return m_innermostWalk;
}

void LOGAppenderAttachableImpl::remove(Position position) {
  for (Walk* walk = innermostWalk(); walk != nullptr; walk = walk->m_outer) {
    walk->leave(position);
  }
  const ZEBThreadGuard guard(m_access);
  m_appenderList.remove(position);
  m_iterator = m_appenderList.begin();
}

void LOGAppenderAttachableImpl::clear() {
  while (!m_appenderList.isEmpty()) {
    remove(m_appenderList.begin());
  }
}

void LOGAppenderAttachableImpl::publish() {
  forgetVanishedThreads();
  if (!m_isBeingReplaced) {
    m_hasAppenders.store(!m_appenderList.isEmpty(), std::memory_order_release);
  }
}

LOGAppenderAttachableImpl::Replacement::Replacement(LOGAppenderAttachableImpl& list)
    : m_list(list) {
  m_list.forgetVanishedThreads();
  m_list.m_isBeingReplaced = true;
}

LOGAppenderAttachableImpl::Replacement::~Replacement() {
  m_list.m_isBeingReplaced = false;
  m_list.publish();
}

void LOGAppenderAttachableImpl::addAppender(LOGAppenderSkeleton* newAppender) {
  addUnlessThere(newAppender);
  publish();
}

void LOGAppenderAttachableImpl::addUnlessThere(LOGAppenderSkeleton* newAppender) {
  ZEB_ASSERT(newAppender, SOURCE, 66);
  for (LOGAppenderSkeleton* const appender : m_appenderList) {
    if ((*appender == *newAppender) != 0) {
      return;
    }
  }
  add(newAppender);
}

ZEBListIterator<LOGAppenderSkeleton*> LOGAppenderAttachableImpl::getAllAppenders() {
  m_iterator = m_appenderList.begin();
  return m_iterator;
}

LOGAppenderSkeleton* LOGAppenderAttachableImpl::getAppender(const I18NString& name) {
  for (LOGAppenderSkeleton* const appender : m_appenderList) {
    if (appender->getName() == name) {
      return appender;
    }
  }
  return nullptr;
}

std::vector<LOGAppenderSkeleton*> LOGAppenderAttachableImpl::snapshot() const {
  const ZEBThreadGuard guard(m_access);
  return {m_appenderList.begin(), m_appenderList.end()};
}

std::vector<LOGAppenderSkeleton*> LOGAppenderAttachableImpl::snapshot(
    bool (*isWanted)(const LOGAppenderSkeleton&)) const {
  const ZEBThreadGuard guard(m_access);
  std::vector<LOGAppenderSkeleton*> wanted;
  std::copy_if(m_appenderList.begin(), m_appenderList.end(), std::back_inserter(wanted),
               [isWanted](const LOGAppenderSkeleton* appender) { return isWanted(*appender); });
  return wanted;
}

LOGAppenderSkeleton* LOGAppenderAttachableImpl::at(std::size_t position) const {
  const ZEBThreadGuard guard(m_access);
  for (LOGAppenderSkeleton* const appender : m_appenderList) {
    if (position-- == 0) {
      return appender;
    }
  }
  return nullptr;
}

int LOGAppenderAttachableImpl::isAttached(LOGAppenderSkeleton* appender) {
  const std::vector<LOGAppenderSkeleton*> attached = snapshot();
  if (attached.empty()) {
    return 0;
  }
  ZEB_ASSERT(appender, SOURCE, 115);
  for (const LOGAppenderSkeleton* const candidate : attached) {
    if ((*candidate == *appender) != 0) {
      return 1;
    }
  }
  return 0;
}

void LOGAppenderAttachableImpl::removeAllAppenders() { removeAllAppenders(nullptr); }

void LOGAppenderAttachableImpl::removeAllAppenders(LOGHashtable* appenderBag) {
  forgetVanishedThreads();
  if (!m_isBeingReplaced) {
    forEach([appenderBag](LOGAppenderSkeleton& appender) {
      appender.close();
      if (appenderBag != nullptr &&
          appenderBag->get(appender.getName()) == static_cast<LOGObject*>(&appender)) {
        appender.markAsStale();
      }
    });
  }
  clear();
  publish();
}

void LOGAppenderAttachableImpl::removeAppender(const I18NString& name) {
  for (Position position = m_appenderList.begin(); !position.atEnd(); ++position) {
    if ((*position)->getName() == name) {
      remove(position);
      publish();
      return;
    }
  }
}

void LOGAppenderAttachableImpl::removeAppender(LOGAppenderSkeleton* appender) {
  if (m_appenderList.isEmpty()) {
    return;
  }
  ZEB_ASSERT(appender, SOURCE, 162);
  const Publishing publishing(*this);
  for (Position position = m_appenderList.begin(); !position.atEnd();) {
    const Position current = position;
    ++position;
    if ((**current == *appender) != 0) {
      remove(current);
    }
  }
}

void LOGAppenderAttachableImpl::detach(const std::vector<LOGAppenderSkeleton*>& appenders) {
  const Publishing publishing(*this);
  for (Position position = m_appenderList.begin(); !position.atEnd();) {
    const Position current = position;
    ++position;
    if (std::find(appenders.begin(), appenders.end(), *current) != appenders.end()) {
      remove(current);
    }
  }
}

void LOGAppenderAttachableImpl::activate(LOGAppenderSkeleton& appender) {
  // The program that logs has nothing to do with an appender that cannot be activated, and neither
  // have the other appenders.
  logContainingFailures(LOGFailureTexts::same("LOGAppenderAttachableImpl::appendLoopOnAppenders -- "
                                              "activateOptions failed"),
                        [&] { appender.activateOptions(); });
}

LOG4ZEB_HOT int LOGAppenderAttachableImpl::appendLoopOnAppenders(LOGLoggingEvent* event) {
  // Appenders are activated before every event, on purpose: an appender whose file could not be
  // opened gets another chance with each.
  forEach([&](LOGAppenderSkeleton& appender) {
    activate(appender);
    appender.doAppend(event);
  });
  return static_cast<int>(m_appenderList.size());
}
