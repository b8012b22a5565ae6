#include "appenders/LOGAsyncAppender.h"

#include <algorithm>
#include <set>
#include <utility>

#include "appenders/LOGBoundedFIFO.h"
#include "appenders/LOGDispatcher.h"
#include "appenders/LOGFileAppender.h"
#include "core/LOGFailures.h"
#include "core/LOGLoggingEvent.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBForkGate.h"
#include "platform/ZEBThread.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBTranslate.h"

namespace {

constexpr const char* SOURCE = "LOGAsyncAppender";
constexpr unsigned int LONGEST_PAUSE = 10000;  // milliseconds between reports of waiting

/// In milliseconds, how long a thread lets the dispatcher of a full queue go on before it looks
/// whether there is any space, should there not be much.
constexpr unsigned int LONGEST_WAIT_FOR_ROOM = 10;
/// After so many milliseconds without any progress a thread believes that the dispatcher waits for
/// it. What threads say of each other may be out of date until they get a processor, and a queue
/// must not grow beyond its size for that.
constexpr unsigned int WAIT_IN_VAIN = 50;
constexpr const char* WAITING = "Waiting for free space in buffer, ";

constexpr LOGFailureTexts CLOSE_TEXTS{
    "LOGAsyncAppender::close --- ", "LOGAsyncAppender::close --- ",
    "LOGAsyncAppender::close --- An unknown exception has occured."};
// An append reports as addAppender does; that is how it is meant.
constexpr LOGFailureTexts ADD_TEXTS{
    "LOGAsyncAppender::addAppender --- ", "LOGAsyncAppender::addAppender --- ",
    "LOGAsyncAppender::addAppender --- An unknown exception has occurred."};
constexpr LOGFailureTexts GET_ALL_TEXTS{
    "LOGAsyncAppender::getAllAppenders --- ", "LOGAsyncAppender::getAllAppenders --- ",
    "LOGAsyncAppender::getAllAppenders --- An unknown exception has occurred."};
constexpr LOGFailureTexts GET_TEXTS{
    "LOGAsyncAppender::getAppender --- ", "LOGAsyncAppender::getAppender --- ",
    "LOGAsyncAppender::getAppender --- An unknown exception has occurred."};
constexpr LOGFailureTexts IS_ATTACHED_TEXTS{
    "LOGAsyncAppender::isAttached --- ", "LOGAsyncAppender::isAttached --- ",
    "LOGAsyncAppender::isAttached --- An unknown exception has occurred."};
constexpr LOGFailureTexts REMOVE_ALL_TEXTS{
    "LOGAsyncAppender::removeAllAppenders --- ", "LOGAsyncAppender::removeAllAppenders --- ",
    "LOGAsyncAppender::removeAllAppenders --- An unknown exception has occurred."};
constexpr LOGFailureTexts REMOVE_TEXTS{
    "LOGAsyncAppender::removeAppender --- ", "LOGAsyncAppender::removeAppender --- ",
    "LOGAsyncAppender::removeAppender --- An unknown exception has occurred."};

/// Has file appenders hand over what a dispatcher has held back for them, before they leave its
/// list.
void handOver(LOGAppenderAttachableImpl& list) {
  list.forEach([](LOGAppenderSkeleton& appender) {
    auto* const file = dynamic_cast<LOGFileAppender*>(&appender);
    if (file != nullptr) {
      file->handOver();
    }
  });
}

bool isAsynchronous(const LOGAppenderSkeleton& appender) {
  return dynamic_cast<const LOGAsyncAppender*>(&appender) != nullptr;
}

/// Appends the asynchronous ones, each behind those that it passes events on to.
void collectReachable(const std::vector<LOGAppenderSkeleton*>& appenders,
                      std::set<const LOGAppenderSkeleton*>& seen,
                      std::vector<LOGAsyncAppender*>& order) {
  for (LOGAppenderSkeleton* const appender : appenders) {
    auto* const async = dynamic_cast<LOGAsyncAppender*>(appender);
    if (async != nullptr && seen.insert(async).second) {
      collectReachable(async->getAAI()->snapshot(&isAsynchronous), seen, order);
      order.push_back(async);
    }
  }
}

/// Waits until a dispatcher that was asked to end does nothing any more (true) or waits for this
/// thread (false).
bool awaitEnd(const LOGDispatcher& dispatcher) {
  ZEBForkGate::Visitor& self = ZEBForkGate::self();
  unsigned int waited = 0;
  while (const ZEBForkGate::Visitor* const thread = dispatcher.visitor()) {
    if (waited++ >= WAIT_IN_VAIN && thread->waitsFor(self)) {
      return false;
    }
    const ZEBForkGate::Wait wait(self, thread);
    const ZEBForkGate::Rest rest;
    ZEBThread::sleep(1);
  }
  return true;
}

}  // namespace

const I18NString LOGAsyncAppender::BUFFER_SIZE_OPTION = "BufferSize";
const I18NString LOGAsyncAppender::LOCATION_INFO_OPTION = "LocationInfo";

/// What an appender loses when it is closed.
struct LOGAsyncAppender::Parts {
  explicit Parts(LOGAsyncAppender* owner) : bf(DEFAULT_BUFFER_SIZE), dispatcher(&bf, owner) {}
  LOGBoundedFIFO bf;
  LOGDispatcher dispatcher;  // destroyed first, which waits for the thread
};

LOGAsyncAppender::LOGAsyncAppender()
    : m_parts(zebTranslate(SOURCE, __LINE__, [this] { return std::make_shared<Parts>(this); })) {
  instance(SOURCE);
  m_closed = 1;
}

LOGAsyncAppender::~LOGAsyncAppender() {
  LOGAsyncAppender::close();
  if (m_parts != nullptr) {
    m_parts->dispatcher.join();  // it uses members that come to their end before m_parts does
  }
}

std::shared_ptr<LOGAsyncAppender::Parts> LOGAsyncAppender::parts() const {
  const std::lock_guard<std::mutex> lock(m_leaf);
  return m_parts;
}

void LOGAsyncAppender::activateOptions() {
  if (!mayStart()) {
    return;
  }
  const ZEBThreadGuard guard(getCriticalSection());
  if (mayStart()) {
    const std::shared_ptr<Parts> m_dispatcher = parts();
    ZEB_ASSERT(m_dispatcher, SOURCE, 114);
    if (m_isLeftByFork) {
      startInChild();
    } else {
      m_dispatcher->dispatcher.start();
    }
    m_closed = 0;
  }
}

void LOGAsyncAppender::close() {
  m_closeRequested = true;
  const std::shared_ptr<Parts> closing = parts();
  if (closing == nullptr) {
    return;
  }
  // A thread that waits for space holds this appender's lock, so it is let go before that is taken.
  closing->bf.endWaiting();
  if (closing->dispatcher.isCurrentThread()) {
    // Closed by an appender attached here, under the list's lock, which comes after this
    // appender's. The thread cannot wait for its own end either: the destructor, or a close() from
    // elsewhere, does the rest.
    m_closed = 1;
    end(*closing);
    return;
  }
  logReportingFailures(CLOSE_TEXTS, [&] {
    {
      const ZEBThreadGuard guard(getCriticalSection());
      m_closed = 1;
    }
    // No lock is held from here on: the dispatcher may need it to come to its end.
    end(*closing);
    // Where it needs one of the caller, as that of a logger which has all appenders removed, or a
    // message closes the appender that copies it, the destructor or another close() does the rest.
    if (awaitEnd(closing->dispatcher)) {
      if (const std::shared_ptr<Parts> ended = takeParts()) {
        ended->dispatcher.join();
      }
    }
  });
}

std::shared_ptr<LOGAsyncAppender::Parts> LOGAsyncAppender::takeParts() {
  const ZEBThreadGuard guard(getCriticalSection());
  const std::lock_guard<std::mutex> lock(m_leaf);
  return m_isAppending ? nullptr : std::exchange(m_parts, nullptr);
}

void LOGAsyncAppender::end(Parts& parts) {
  parts.bf.drop();
  parts.dispatcher.close();
}

int LOGAsyncAppender::requiresLayout() { return 0; }

int LOGAsyncAppender::flush(int milliseconds) {
  const std::shared_ptr<Parts> flushed = parts();
  if (flushed == nullptr || m_isLeftByFork) {
    return 1;
  }
  const unsigned int time = flushed->dispatcher.isCurrentThread()
                                ? 0
                                : static_cast<unsigned int>(std::max(milliseconds, 0));
  return flushed->bf.waitUntilDelivered(time) ? 1 : 0;
}

int LOGAsyncAppender::getBufferSize() const {
  const std::shared_ptr<Parts> current = parts();
  return current == nullptr ? 0 : current->bf.getMaxSize();
}

void LOGAsyncAppender::setBufferSize(int size) {
  const std::shared_ptr<Parts> m_bf = parts();
  ZEB_ASSERT(m_bf, SOURCE, __LINE__);
  m_bf->bf.resize(size);
}

LOGAsyncAppender::DispatcherTurn::DispatcherTurn(LOGAsyncAppender& appender)
    : m_appender(appender) {
  m_appender.setDispatcherWaits(true);
}

void LOGAsyncAppender::DispatcherTurn::begin() {
  m_appender.m_aai.getCriticalSection().enter();
  m_hasBegun = true;
  m_appender.detachDoomed();
  m_appender.m_isDelivering = true;
  m_appender.setDispatcherWaits(false);
}

bool LOGAsyncAppender::DispatcherTurn::isLockWanted() const {
  return m_appender.m_aai.getCriticalSection().isWanted();
}

LOGAsyncAppender::DispatcherTurn::~DispatcherTurn() {
  if (m_hasBegun) {
    m_appender.m_isDelivering = false;
    m_appender.m_aai.getCriticalSection().leave();
  } else {
    m_appender.setDispatcherWaits(false);
  }
}

void LOGAsyncAppender::setDispatcherWaits(bool waits) {
  m_dispatcherWaits = waits;
  if (!waits && m_turnWaiters > 0) {
    const std::lock_guard<std::mutex> lock(m_leaf);
    m_turnTaken.notify_all();
  }
}

void LOGAsyncAppender::waitForTurn() {
  if (m_dispatcherWaits) {
    const ZEBForkGate::Wait wait(ZEBForkGate::self(), m_parts->dispatcher.visitor());
    const ZEBForkGate::Rest rest;
    std::unique_lock<std::mutex> lock(m_leaf);
    ++m_turnWaiters;
    m_turnTaken.wait(lock, [this] { return !m_dispatcherWaits; });
    --m_turnWaiters;
  }
}

void LOGAsyncAppender::warnOfInterruption() {
  LOGLogLog::warn(interruptedWarningMessage == 0 ? "AsyncAppender interrupted."
                                                 : "AsyncAppender interrupted again.");
  interruptedWarningMessage = 1;
}

bool LOGAsyncAppender::waitForSpace() {
  LOGBoundedFIFO& bf = m_parts->bf;
  for (unsigned int waited = 0; !bf.isWaitingEnded() && !bf.hasSpace();
       waited += LONGEST_WAIT_FOR_ROOM) {
    if (waited >= WAIT_IN_VAIN && isAwaitedByDispatcher()) {
      return true;  // it had no memory to take as much out as there is too much
    }
    if (waited % LONGEST_PAUSE == 0) {
      LOGLogLog::debug(WAITING);
    }
    bf.waitForSpace(LONGEST_WAIT_FOR_ROOM);
    if (bf.isWaitingEnded()) {
      warnOfInterruption();
    }
  }
  return !bf.isWaitingEnded();
}

void LOGAsyncAppender::append(LOGLoggingEvent* event) {
  ZEB_ASSERT(event, SOURCE, __LINE__);
  if (m_parts == nullptr) {
    return;  // a filter has closed this appender
  }
  struct Appending {
    bool& isAppending;
    const bool wasAppending = std::exchange(isAppending, true);
    ~Appending() { isAppending = wasAppending; }
  };
  const Appending appending{m_isAppending};
  logReportingFailures(ADD_TEXTS, [&] { enqueue(*event); });
}

void LOGAsyncAppender::renewInChild() {
  ZEBForkHandler::renew(m_leaf);
  ZEBForkHandler::renew(m_turnTaken);
  m_turnWaiters = 0;
  m_isAppending = m_isAppending && getCriticalSection().isHeldHere();
  if (m_parts != nullptr) {
    m_parts->bf.renewInChild();
    m_isLeftByFork = m_parts->dispatcher.isLeftByFork();
  }
  if (m_isLeftByFork) {
    m_dispatcherWaits = false;
    m_isDelivering = false;
  }
}

void LOGAsyncAppender::startInChild() {
  m_parts->bf.forgetParent();
  m_parts->dispatcher.startInChild();
  m_isLeftByFork = false;
}

void LOGAsyncAppender::enqueue(LOGLoggingEvent& event) {
  if (m_isLeftByFork) {
    startInChild();
  }
  // Asked for here, these are the thread that logs and its context.
  event.getThreadName();
  event.getNDC();
  if (locationInfo != 0) {
    event.getLocationInformation();
  }
  if (putBesideList(event)) {
    return;
  }
  const bool isDispatcher = m_parts->dispatcher.isCurrentThread();
  if (!isDispatcher) {
    waitForTurn();
  }
  if (!enterList()) {
    put(event);
    return;
  }
  const ZEBThreadGuard guard(m_aai.getCriticalSection(), ZEBThreadGuard::Held());
  // The thread that makes space cannot wait for it.
  if (isDispatcher || waitForSpace()) {
    put(event);
  }
}

void LOGAsyncAppender::put(const LOGLoggingEvent& event) {
  zebTranslate(SOURCE, __LINE__, [&] { m_parts->bf.putCopy(event); });
}

bool LOGAsyncAppender::putBesideList(const LOGLoggingEvent& event) {
  LOGBoundedFIFO& bf = m_parts->bf;
  unsigned int waited = 0;
  while (!bf.isWaitingEnded() && !isListLockedByOthers()) {
    // The usual case. Nobody holds the list's lock, or a delivery does, which this does not touch:
    // nobody could notice if it was taken here.
    if (bf.hasSpace() || (waited >= WAIT_IN_VAIN && isAwaitedByDispatcher())) {
      put(event);
      return true;
    }
    if (m_parts->dispatcher.isCurrentThread() || (!m_isDelivering && !m_dispatcherWaits)) {
      break;
    }
    // The dispatcher is at work, and would have to wait for a lock that was taken here.
    if (waited == 0) {
      LOGLogLog::debug(WAITING);
    }
    const ZEBForkGate::Wait wait(ZEBForkGate::self(), m_parts->dispatcher.visitor());
    bf.waitForRoom(LONGEST_WAIT_FOR_ROOM);
    waited += LONGEST_WAIT_FOR_ROOM;
  }
  if (waited > 0 && bf.isWaitingEnded()) {
    warnOfInterruption();
  }
  return false;
}

bool LOGAsyncAppender::enterList() {
  // Not waited for as other locks are: the dispatcher may get it first, and then wait for one that
  // this thread holds.
  ZEBThreadCriticalSection& list = m_aai.getCriticalSection();
  for (unsigned int waited = 0; !list.tryEnter(); ++waited) {
    if ((waited >= WAIT_IN_VAIN && isAwaitedByDispatcher()) ||
        (m_isDelivering && m_parts->bf.hasSpace())) {
      return false;
    }
    if (list.isLeftByFork()) {
      list.enter();
      return true;
    }
    const ZEBForkGate::Wait wait(ZEBForkGate::self(), list.holder());
    const ZEBForkGate::Rest rest;
    ZEBThread::sleep(1);
  }
  return true;
}

bool LOGAsyncAppender::isAwaitedByDispatcher() const {
  const ZEBForkGate::Visitor* const dispatcher = m_parts->dispatcher.visitor();
  return dispatcher != nullptr && dispatcher->waitsFor(ZEBForkGate::self());
}

bool LOGAsyncAppender::isListLockedByOthers() const {
  return !m_isDelivering && m_aai.getCriticalSection().isHeldElsewhere();
}

void LOGAsyncAppender::flushReachable(const std::vector<LOGAppenderSkeleton*>& appenders,
                                      int milliseconds) {
  std::set<const LOGAppenderSkeleton*> seen;
  std::vector<LOGAsyncAppender*> order;
  collectReachable(appenders, seen, order);
  // Backwards: several may pass events on to the same one, which then waits for all of them.
  std::for_each(order.rbegin(), order.rend(),
                [milliseconds](LOGAsyncAppender* async) { async->flush(milliseconds); });
}

bool LOGAsyncAppender::reaches(LOGAppenderSkeleton* from, const LOGAsyncAppender& to) {
  std::set<const LOGAppenderSkeleton*> seen;
  std::vector<LOGAsyncAppender*> order;
  collectReachable({from}, seen, order);
  return seen.count(&to) != 0;
}

template <typename Operation>
void LOGAsyncAppender::underListLock(const LOGFailureTexts& texts, Operation operation) {
  logReportingFailures(texts, [&] {
    const ZEBThreadGuard guard(m_aai.getCriticalSection());
    detachDoomed();
    operation();
  });
}

void LOGAsyncAppender::addAppender(LOGAppenderSkeleton* newAppender) {
  underListLock(ADD_TEXTS, [&] { m_aai.addAppender(newAppender); });
}

ZEBListIterator<LOGAppenderSkeleton*> LOGAsyncAppender::getAllAppenders() {
  ZEBListIterator<LOGAppenderSkeleton*> all;
  underListLock(GET_ALL_TEXTS, [&] { all = m_aai.getAllAppenders(); });
  return all;
}

LOGAppenderSkeleton* LOGAsyncAppender::getAppender(const I18NString& name) {
  LOGAppenderSkeleton* found = nullptr;
  underListLock(GET_TEXTS, [&] { found = m_aai.getAppender(name); });
  return found;
}

int LOGAsyncAppender::isAttached(LOGAppenderSkeleton* appender) {
  int attached = 0;
  underListLock(IS_ATTACHED_TEXTS, [&] { attached = m_aai.isAttached(appender); });
  return attached;
}

template <typename Doomed, typename Operation>
void LOGAsyncAppender::removeEverywhere(const LOGFailureTexts& texts, bool isOne, Doomed doomed,
                                        Operation operation) {
  std::vector<LOGAppenderSkeleton*> objects;
  const auto removeFrom = [&](LOGAsyncAppender& async) {
    async.underListLock(texts, [&] {
      handOver(async.m_aai);
      operation(async.m_aai);
    });
  };
  const auto removeFromRelated = [&](LOGAsyncAppender& related) {
    ZEBThreadCriticalSection& list = related.m_aai.getCriticalSection();
    if (list.isLeftByFork()) {
      removeFrom(related);
      return;
    }
    bool isAsked = false;
    while (!list.tryEnter()) {
      if (!isAsked) {
        related.detachSoon(objects);
        isAsked = true;
      }
      // A thread that holds a lock may be in a delivery that the related list's thread waits for.
      // Others wait for the delivery under way, and not for further ones: the lock is not fair.
      if (ZEBForkGate::self().holdsLocks() || (isOne && !objects.empty() && !related.m_hasDoomed)) {
        return;
      }
      ZEBThread::sleep(1);
    }
    const ZEBThreadGuard guard(list, ZEBThreadGuard::Held());
    removeFrom(related);
  };
  underListLock(texts, [&] {
    if (m_predecessor != nullptr || m_successor != nullptr) {
      objects = doomed(m_aai);
    }
    handOver(m_aai);
    operation(m_aai);
  });
  logReportingFailures(texts, [&] {
    for (auto* async = m_predecessor.load(); async != nullptr; async = async->m_predecessor) {
      removeFromRelated(*async);
    }
    for (auto* async = m_successor.load(); async != nullptr; async = async->m_successor) {
      removeFromRelated(*async);
    }
  });
}

void LOGAsyncAppender::removeAllAppenders() {
  removeEverywhere(
      REMOVE_ALL_TEXTS, false, [](LOGAppenderAttachableImpl& list) { return list.snapshot(); },
      [](LOGAppenderAttachableImpl& list) { list.removeAllAppenders(); });
}

void LOGAsyncAppender::removeAppender(const I18NString& name) {
  removeEverywhere(
      REMOVE_TEXTS, true,
      [&](LOGAppenderAttachableImpl& list) {
        LOGAppenderSkeleton* const found = list.getAppender(name);
        return found == nullptr ? std::vector<LOGAppenderSkeleton*>()
                                : std::vector<LOGAppenderSkeleton*>{found};
      },
      [&](LOGAppenderAttachableImpl& list) { list.removeAppender(name); });
}

void LOGAsyncAppender::removeAppender(LOGAppenderSkeleton* appender) {
  removeEverywhere(
      REMOVE_TEXTS, true,
      [&](LOGAppenderAttachableImpl&) { return std::vector<LOGAppenderSkeleton*>{appender}; },
      [&](LOGAppenderAttachableImpl& list) { list.removeAppender(appender); });
}

void LOGAsyncAppender::exchangeAppender(LOGAppenderSkeleton* old, LOGAppenderSkeleton* live) {
  detachDoomed();
  handOver(m_aai);
  m_aai.removeAppender(old);
  m_aai.addAppender(live);
}

void LOGAsyncAppender::detachSoon(const std::vector<LOGAppenderSkeleton*>& doomed) {
  const std::lock_guard<std::mutex> lock(m_leaf);
  m_doomed.insert(m_doomed.end(), doomed.begin(), doomed.end());
  m_hasDoomed = true;
}

void LOGAsyncAppender::detachDoomed() {
  if (m_hasDoomed) {
    handOver(m_aai);
    std::vector<LOGAppenderSkeleton*> doomed;
    {
      const std::lock_guard<std::mutex> lock(m_leaf);
      doomed.swap(m_doomed);
    }
    m_aai.detach(doomed);
    const std::lock_guard<std::mutex> lock(m_leaf);
    m_hasDoomed = !m_doomed.empty();
  }
}

void LOGAsyncAppender::succeed(LOGAsyncAppender& predecessor) {
  m_predecessor = &predecessor;
  predecessor.m_successor = this;
}

void LOGAsyncAppender::endSuccession() {
  LOGAsyncAppender* const successor = m_successor;
  if (successor == nullptr || parts() != nullptr) {
    return;
  }
  {
    // First, so that whoever still finds this one removes from it, and whoever does not need not.
    const ZEBThreadGuard guard(m_aai.getCriticalSection());
    m_aai.detach(m_aai.snapshot());
  }
  LOGAsyncAppender* const predecessor = m_predecessor;
  successor->m_predecessor = predecessor;
  if (predecessor != nullptr) {
    predecessor->m_successor = successor;
  }
  m_successor = nullptr;
}
