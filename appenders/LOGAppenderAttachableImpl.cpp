#include "appenders/LOGAppenderAttachableImpl.h"

#include <algorithm>
#include <iterator>

#include "appenders/LOGAppenderClaim.h"
#include "appenders/LOGAppenderPin.h"
#include "appenders/LOGAppenderSkeleton.h"
#include "core/LOGFailures.h"
#include "core/LOGHashtable.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBForkGate.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBThreadInlineGuard.h"

namespace {

constexpr const char* SOURCE = "LOGAppenderAttachableImpl";

}  // namespace

LOGAppenderAttachableImpl::Walk::Walk(LOGAppenderAttachableImpl& list)
    : m_list(list), m_next(list.m_appenderList.begin()), m_outer(list.innermostWalk()) {
  m_list.m_innermostWalk = this;
  m_list.m_user = &ZEBForkGate::self();
}

LOGAppenderAttachableImpl::Walk::~Walk() {
  // Usually the innermost; walks that let go of the list's lock in between may end in any order.
  Walk** walk = &m_list.m_innermostWalk;
  while (*walk != nullptr && *walk != this) {
    walk = &(*walk)->m_outer;
  }
  if (*walk == this) {
    *walk = m_outer;
  }
}

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

LOGAppenderAttachableImpl::PinnedWalk::PinnedWalk(LOGAppenderAttachableImpl& list,
                                                  LOGAppenderPin& pin)
    : m_list(list), m_pin(pin) {
  const ZEBThreadInlineGuard guard(m_list.getCriticalSection());
  m_walk.emplace(m_list);
  pinNext();
  m_isOnly = m_appender != nullptr && !m_walk.has_value();
}

LOGAppenderAttachableImpl::PinnedWalk::~PinnedWalk() {
  m_pin.clear();
  if (m_walk.has_value()) {
    const ZEBThreadGuard guard(m_list.getCriticalSection());
    m_walk.reset();
  }
}

void LOGAppenderAttachableImpl::PinnedWalk::pinNext() {
  m_appender = m_walk->next();
  if (m_appender != nullptr) {
    m_pin.set(m_list, *m_appender);
  }
  if (m_walk->isAtEnd()) {
    m_walk.reset();
  }
}

void LOGAppenderAttachableImpl::PinnedWalk::goOn() {
  m_pin.clear();
  m_appender = nullptr;
  if (m_walk.has_value()) {
    const ZEBThreadGuard guard(m_list.getCriticalSection());
    pinNext();
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
  if (m_user != nullptr && m_user->isLost()) {
    m_user = nullptr;
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
  m_list.m_user = &ZEBForkGate::self();
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

LOGAppenderSkeleton* LOGAppenderAttachableImpl::at(std::size_t position) const {
  for (LOGAppenderSkeleton* const appender : m_appenderList) {
    if (position-- == 0) {
      return appender;
    }
  }
  return nullptr;
}

LOGAppenderSkeleton* LOGAppenderAttachableImpl::pinAt(std::size_t position,
                                                      LOGAppenderPin& pin) const {
  const ZEBThreadGuard guard(m_access);
  LOGAppenderSkeleton* const appender = at(position);
  if (appender != nullptr) {
    pin.set(*this, *appender);
  }
  return appender;
}

bool LOGAppenderAttachableImpl::pinIfAttached(const LOGAppenderSkeleton& appender,
                                              LOGAppenderPin& pin) const {
  const ZEBThreadGuard guard(m_access);
  const bool isAttached =
      std::find(m_appenderList.begin(), m_appenderList.end(), &appender) != m_appenderList.end();
  if (isAttached) {
    pin.set(*this, appender);
  }
  return isAttached;
}

int LOGAppenderAttachableImpl::isAttached(LOGAppenderSkeleton* appender) {
  const std::vector<LOGAppenderSkeleton*> attached = snapshot();
  if (attached.empty()) {
    return 0;
  }
  ZEB_ASSERT(appender, SOURCE, 115);
  if (std::find(attached.begin(), attached.end(), appender) != attached.end()) {
    return 1;
  }
  LOGAppenderPin pin;
  for (LOGAppenderSkeleton* const candidate : attached) {
    if (pinIfAttached(*candidate, pin) && (*candidate == *appender) != 0) {
      return 1;
    }
  }
  return 0;
}

void LOGAppenderAttachableImpl::removeAllAppenders(LOGHashtable* appenderBag) {
  const bool isAny = !m_appenderList.isEmpty();
  LOGFirstFailure failure;
  forgetVanishedThreads();
  if (!m_isBeingReplaced) {
    forEach([&](LOGAppenderSkeleton& appender) {
      failure.keepOf([&] { appender.close(); });
      if (appenderBag != nullptr &&
          appenderBag->get(appender.getName()) == static_cast<LOGObject*>(&appender)) {
        appender.markAsStale();
      }
    });
  }
  clear();
  publish();
  if (!m_isBeingReplaced) {
    LOGAppenderClaim::revokeAll(*this);
    awaitUsers({nullptr, true, isAny});
  }
  failure.passOn();
}

void LOGAppenderAttachableImpl::removeAppender(const I18NString& name) {
  awaitUsers(takeOut(name));
}

void LOGAppenderAttachableImpl::removeAppender(LOGAppenderSkeleton* appender) {
  awaitUsers(takeOut(appender));
}

LOGAppenderAttachableImpl::Removed LOGAppenderAttachableImpl::takeOut(const I18NString& name) {
  const bool isRevoked = LOGAppenderClaim::revokeNamed(*this, name);
  for (Position position = m_appenderList.begin(); !position.atEnd(); ++position) {
    LOGAppenderSkeleton* const appender = *position;
    if (appender->getName() == name) {
      LOGAppenderClaim::revoke(appender);
      remove(position);
      publish();
      return {appender, true, true, isRevoked};
    }
  }
  // Another thread may have taken it out and still use it.
  return {nullptr, true};
}

LOGAppenderAttachableImpl::Removed LOGAppenderAttachableImpl::takeOut(
    LOGAppenderSkeleton* appender) {
  LOGAppenderClaim::revoke(appender);
  Removed removed{appender, appender != nullptr, false};
  if (m_appenderList.isEmpty()) {
    return removed;
  }
  ZEB_ASSERT(appender, SOURCE, 162);
  const Publishing publishing(*this);
  for (Position position = m_appenderList.begin(); !position.atEnd();) {
    const Position current = position;
    ++position;
    if ((**current == *appender) != 0) {
      if (*current != appender) {
        removed.appender = nullptr;
      }
      remove(current);
      removed.wasThere = true;
    }
  }
  return removed;
}

void LOGAppenderAttachableImpl::replaceAppender(const LOGAppenderSkeleton& old,
                                                LOGAppenderSkeleton& live) {
  const Publishing publishing(*this);
  const Position place = std::find(m_appenderList.begin(), m_appenderList.end(), &old);
  if (place.atEnd()) {
    return;
  }
  if (std::find(m_appenderList.begin(), m_appenderList.end(), &live).atEnd()) {
    const ZEBThreadGuard guard(m_access);
    *place = &live;
  } else {
    remove(place);
  }
}

void LOGAppenderAttachableImpl::awaitUsers(const Removed& removed) const {
  if (removed.isAny) {
    LOGAppenderPin::awaitOthers(this, removed.appender);
  }
  if (removed.isOfClaim) {
    LOGAppenderPin::awaitOthers(this, nullptr);
  }
}

void LOGAppenderAttachableImpl::activate(LOGAppenderSkeleton& appender) {
  // The program that logs has nothing to do with an appender that cannot be activated, and neither
  // have the other appenders.
  static constexpr LOGFailureTexts TEXTS = LOGFailureTexts::same(
      "LOGAppenderAttachableImpl::appendLoopOnAppenders -- activateOptions failed");
  logContainingFailures(TEXTS, [&] { appender.activateOptions(); });
}

LOG4ZEB_HOT void LOGAppenderAttachableImpl::append(LOGAppenderSkeleton& appender,
                                                   LOGLoggingEvent* event) {
  // Deliberate: appenders are activated before every event, so that one whose file could not be
  // opened gets another chance with each.
  activate(appender);
  appender.doAppend(event);
}

LOG4ZEB_HOT int LOGAppenderAttachableImpl::appendLoopOnAppenders(LOGLoggingEvent* event) {
  int called = 0;
  forEach([&](LOGAppenderSkeleton& appender) {
    append(appender, event);
    ++called;
  });
  return std::max(called, static_cast<int>(m_appenderList.size()));
}
