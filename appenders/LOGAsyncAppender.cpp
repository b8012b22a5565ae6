#include "appenders/LOGAsyncAppender.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "appenders/LOGAppenderPin.h"
#include "appenders/LOGBoundedFIFO.h"
#include "appenders/LOGDispatcher.h"
#include "appenders/LOGFileAppender.h"
#include "core/LOGCallScope.h"
#include "core/LOGFailures.h"
#include "core/LOGLoggingEvent.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBForkGate.h"
#include "platform/ZEBForkHandler.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBTranslate.h"

namespace {

constexpr const char* SOURCE = "LOGAsyncAppender";

/// Guards which asynchronous appender takes the place of which. A leaf.
ZEBThreadCriticalSection g_successionLock;

constexpr LOGFailureTexts CLOSE_TEXTS{
    "LOGAsyncAppender::close --- ", "LOGAsyncAppender::close --- ",
    "LOGAsyncAppender::close --- An unknown exception has occured."};
// Deliberate: an append reports as addAppender does.
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

/// Has a file appender write what a dispatcher has held back for it.
void handOver(LOGAppenderSkeleton& appender) {
  auto* const file = dynamic_cast<LOGFileAppender*>(&appender);
  if (file != nullptr) {
    file->handOver();
  }
}

// An attached appender may take the list's lock under its own, to remove itself. So its lock is
// never taken under the list's, unless the caller has that already.

void handOverAll(LOGAppenderAttachableImpl& list) {
  LOGAppenderPin pin;
  for (LOGAppenderAttachableImpl::PinnedWalk walk(list, pin); walk.appender() != nullptr;
       walk.goOn()) {
    handOver(*walk.appender());
  }
}

template <typename Which>
LOGAppenderAttachableImpl::Removed takeOut(LOGAppenderAttachableImpl& list, const Which& which) {
  handOverAll(list);
  const ZEBThreadGuard guard(list.getCriticalSection());
  return list.takeOut(which);
}

void closeAndTakeOutEach(LOGAppenderAttachableImpl& list) {
  const LOGCallScope call;  // closing waits for no delivery
  LOGAppenderPin pin;
  const auto pinFirst = [&] {
    const ZEBThreadGuard guard(list.getCriticalSection());
    return list.pinAt(0, pin);
  };
  while (LOGAppenderSkeleton* const appender = pinFirst()) {
    handOver(*appender);
    appender->close();
    const ZEBThreadGuard guard(list.getCriticalSection());
    list.takeOut(appender);
  }
}

/// Runs `operation` under the list's lock.
template <typename Operation>
void underListLock(const LOGAppenderAttachableImpl& list, const LOGFailureTexts& texts,
                   Operation operation) {
  logReportingFailures(texts, [&] {
    const ZEBThreadGuard guard(list.getCriticalSection());
    operation();
  });
}

}  // namespace

const I18NString LOGAsyncAppender::BUFFER_SIZE_OPTION = "BufferSize";
const I18NString LOGAsyncAppender::LOCATION_INFO_OPTION = "LocationInfo";

/// Queue, list of attached appenders and thread.
struct LOGAsyncAppender::Core {
  Core() : bf(DEFAULT_BUFFER_SIZE), dispatcher(&bf, &aai) {}

  void warnOfInterruption() {
    LOGLogLog::warn(interruptedWarningMessage.exchange(1) == 0
                        ? "AsyncAppender interrupted."
                        : "AsyncAppender interrupted again.");
  }

  void renewInChild() noexcept {
    bf.renewInChild();
    if (dispatcher.isCurrentThread()) {
      bf.forgetParent();
    }
    if (dispatcher.isLeftByFork()) {
      isLeftByFork = true;
      ++forks;
      if (!aai.getCriticalSection().isHeldHere()) {
        aai.forgetWalks();
      }
    }
  }

  /// Null unless it is still passing on what it has queued; and where this one is.
  std::shared_ptr<Core> predecessor() const {
    const ZEBThreadGuard guard(g_successionLock);
    const std::shared_ptr<Core> core = m_predecessor.lock();
    return core == nullptr || core->bf.isClosed() ? nullptr : core;
  }
  std::shared_ptr<Core> successor() const {
    const ZEBThreadGuard guard(g_successionLock);
    return bf.isClosed() ? nullptr : m_successor.lock();
  }

  std::weak_ptr<Core> m_predecessor;  // guarded by the lock of successions, like the next
  std::weak_ptr<Core> m_successor;
  LOGAppenderAttachableImpl aai;
  LOGBoundedFIFO bf;
  std::atomic<int> interruptedWarningMessage{0};
  std::atomic<bool> isLeftByFork{false};  // what is queued is the parent's, and there is no thread
  std::atomic<unsigned> forks{0};         // in how many processes a thread was left behind
  LOGDispatcher dispatcher;               // destroyed first, which waits for the thread
  const ZEBForkHandler forkHandler{this,
                                   [](void* core) { static_cast<Core*>(core)->renewInChild(); }};
};

/// An event for which there was no room.
class LOGAsyncAppender::Arrival : public LOGCallScope::Waiting {
 public:
  Arrival(std::shared_ptr<Core> core, std::unique_ptr<LOGLoggingEvent> event)
      : Waiting(core.get()),
        m_core(std::move(core)),
        m_place(m_core->bf),
        m_event(std::move(event)),
        m_forks(m_core->forks) {}

  void finish() noexcept override {
    logContainingFailures(ADD_TEXTS, [this] {
      if (m_core->forks != m_forks) {
        return;  // the parent's
      }
      // Under a lock that the program itself holds the dispatcher might wait for this thread.
      if (!ZEBForkGate::self().mayWait()) {
        m_core->bf.putBeyond(*m_event);
      } else if (!m_core->bf.putWhenThereIsRoom(*m_event)) {
        m_core->warnOfInterruption();
      }
    });
  }

 private:
  const std::shared_ptr<Core> m_core;
  const LOGBoundedFIFO::Caller m_place;
  const std::unique_ptr<LOGLoggingEvent> m_event;
  const unsigned m_forks;
};

LOGAsyncAppender::LOGAsyncAppender()
    : m_core(zebTranslate(SOURCE, __LINE__, [] { return std::make_shared<Core>(); })) {
  instance(SOURCE);
  m_closed = 1;
}

LOGAsyncAppender::~LOGAsyncAppender() {
  LOGAsyncAppender::close();
  assert(ZEBForkGate::self().mayWait());
  m_core->dispatcher.join();
}

LOGAppenderAttachableImpl* LOGAsyncAppender::getAAI() { return &m_core->aai; }

void LOGAsyncAppender::activateOptions() {
  if (!mayStart()) {
    return;
  }
  const ZEBThreadGuard guard(getCriticalSection());
  if (mayStart()) {
    m_core->dispatcher.startUnlessRunning();
    m_closed = 0;
  }
}

void LOGAsyncAppender::close() {
  m_closeRequested = true;
  m_core->bf.close();
  logReportingFailures(CLOSE_TEXTS, [this] {
    {
      const ZEBThreadGuard guard(getCriticalSection());
      m_closed = 1;
    }
    m_core->dispatcher.close();
    // Elsewhere the delivery that is under way may wait for the calling thread.
    if (LOGCallScope::mayWait()) {
      m_core->dispatcher.awaitEnd();
    }
  });
}

int LOGAsyncAppender::requiresLayout() { return 0; }

int LOGAsyncAppender::flush(int milliseconds) {
  if (m_core->bf.isClosed() || m_core->isLeftByFork) {
    return 1;
  }
  return m_core->bf.waitUntilDelivered(LOGCallScope::mayWait() ? milliseconds : 0) ? 1 : 0;
}

int LOGAsyncAppender::getBufferSize() const {
  return m_core->bf.isClosed() ? 0 : m_core->bf.getMaxSize();
}

void LOGAsyncAppender::setBufferSize(int size) {
  ZEB_ASSERT_AS(!m_core->bf.isClosed(), "m_bf", SOURCE, __LINE__);
  m_core->bf.resize(size);
}

LOG4ZEB_HOT void LOGAsyncAppender::append(LOGLoggingEvent* event) {
  ZEB_ASSERT(event, SOURCE, __LINE__);
  const LOGCallScope call;
  logReportingFailures(ADD_TEXTS, [&] { enqueue(*event); });
}

LOG4ZEB_HOT void LOGAsyncAppender::enqueue(LOGLoggingEvent& event) {
  LOGBoundedFIFO& queue = m_core->bf;
  if (m_core->isLeftByFork) {
    const ZEBThreadGuard guard(getCriticalSection());  // which a program that appends may not have
    if (m_core->isLeftByFork) {
      queue.forgetParent();
      m_core->dispatcher.startUnlessRunning();
      m_core->isLeftByFork = false;
    }
  }
  // Asked for here, these are the thread that logs and its context.
  event.getThreadName();
  event.getNDC();
  if (locationInfo != 0) {
    event.getLocationInformation();
  }
  LOGCallScope& outermost = *LOGCallScope::outermost();
  if ((!outermost.hasLeft(m_core.get()) && queue.tryPut(event)) || queue.isClosed()) {
    return;
  }
  // What is logged from within a delivery, or by a message that is destroyed after one, never
  // waits.
  if (LOGDispatcher::isAnyCurrentThread() && !outermost.hasLeft(m_core.get()) &&
      (!outermost.isDeliveryTo(*this) || isServedByThisThread())) {
    queue.putBeyond(event);
  } else {
    outermost.leave(std::make_unique<Arrival>(m_core, event.copyForQueue()));
  }
}

bool LOGAsyncAppender::isServedByThisThread() const {
  Queues queues;
  queues.add(*this);
  return std::any_of(queues.m_cores.begin(), queues.m_cores.end(),
                     [](const auto& core) { return core->dispatcher.isCurrentThread(); });
}

void LOGAsyncAppender::Queues::add(const std::shared_ptr<Core>& core) {
  if (m_seen.insert(core.get()).second) {
    add(core->aai);
    m_cores.push_back(core);
  }
}

void LOGAsyncAppender::Queues::add(const LOGAppenderSkeleton& appender) {
  const auto* const async = dynamic_cast<const LOGAsyncAppender*>(&appender);
  if (async != nullptr) {
    add(async->m_core);
  }
}

void LOGAsyncAppender::Queues::add(const LOGAppenderAttachableImpl& list) {
  std::vector<std::shared_ptr<Core>> attached;
  list.lookAtEach([&](const LOGAppenderSkeleton& appender) {
    const auto* const async = dynamic_cast<const LOGAsyncAppender*>(&appender);
    if (async != nullptr) {
      attached.push_back(async->m_core);
    }
  });
  for (const std::shared_ptr<Core>& core : attached) {
    add(core);
  }
}

void LOGAsyncAppender::Queues::flush(int milliseconds) const {
  // Backwards: several may pass events on to the same one, which then waits for all of them.
  std::for_each(m_cores.rbegin(), m_cores.rend(), [milliseconds](const auto& core) {
    if (!core->bf.isClosed() && !core->isLeftByFork) {
      core->bf.waitUntilDelivered(milliseconds);
    }
  });
}

bool LOGAsyncAppender::reaches(const LOGAppenderSkeleton& from, const LOGAsyncAppender& to) {
  Queues queues;
  queues.add(from);
  return std::find(queues.m_cores.begin(), queues.m_cores.end(), to.m_core) != queues.m_cores.end();
}

void LOGAsyncAppender::addAppender(LOGAppenderSkeleton* newAppender) {
  underListLock(m_core->aai, ADD_TEXTS, [&] { m_core->aai.addAppender(newAppender); });
}

ZEBListIterator<LOGAppenderSkeleton*> LOGAsyncAppender::getAllAppenders() {
  ZEBListIterator<LOGAppenderSkeleton*> all;
  underListLock(m_core->aai, GET_ALL_TEXTS, [&] { all = m_core->aai.getAllAppenders(); });
  return all;
}

LOGAppenderSkeleton* LOGAsyncAppender::getAppender(const I18NString& name) {
  LOGAppenderSkeleton* found = nullptr;
  underListLock(m_core->aai, GET_TEXTS, [&] { found = m_core->aai.getAppender(name); });
  return found;
}

int LOGAsyncAppender::isAttached(LOGAppenderSkeleton* appender) {
  int attached = 0;
  underListLock(m_core->aai, IS_ATTACHED_TEXTS,
                [&] { attached = m_core->aai.isAttached(appender); });
  return attached;
}

template <typename Remove>
void LOGAsyncAppender::removeEverywhere(const LOGFailureTexts& texts, Remove remove) {
  const auto removeFrom = [&](LOGAppenderAttachableImpl& list) {
    LOGAppenderAttachableImpl::Removed removed;
    logReportingFailures(texts, [&] { removed = remove(list); });
    list.awaitUsers(removed);
    // A delivery that went on meanwhile may have held a line back.
    if (removed.wasThere && removed.appender != nullptr && LOGCallScope::mayWait()) {
      logReportingFailures(texts, [&] { handOver(*removed.appender); });
    }
  };
  removeFrom(m_core->aai);
  for (std::shared_ptr<Core> core = m_core->predecessor(); core; core = core->predecessor()) {
    removeFrom(core->aai);
  }
  for (std::shared_ptr<Core> core = m_core->successor(); core; core = core->successor()) {
    removeFrom(core->aai);
  }
}

void LOGAsyncAppender::removeAllAppenders() {
  removeEverywhere(REMOVE_ALL_TEXTS, [](LOGAppenderAttachableImpl& list) {
    if (!list.getCriticalSection().isHeldHere()) {
      closeAndTakeOutEach(list);
    }
    const ZEBThreadGuard guard(list.getCriticalSection());
    list.removeAllAppenders();
    return LOGAppenderAttachableImpl::Removed{nullptr, true, true};
  });
}

void LOGAsyncAppender::removeAppender(const I18NString& name) {
  removeEverywhere(REMOVE_TEXTS,
                   [&](LOGAppenderAttachableImpl& list) { return takeOut(list, name); });
}

void LOGAsyncAppender::removeAppender(LOGAppenderSkeleton* appender) {
  removeEverywhere(REMOVE_TEXTS,
                   [&](LOGAppenderAttachableImpl& list) { return takeOut(list, appender); });
}

void LOGAsyncAppender::succeed(const LOGAsyncAppender& predecessor) {
  const ZEBThreadGuard guard(g_successionLock);
  m_core->m_predecessor = predecessor.m_core;
  predecessor.m_core->m_successor = m_core;
}
