#include "appenders/LOGAsyncAppender.h"

#include <algorithm>
#include <cassert>

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

// Literals, so that a report needs no memory.
#define TEXTS_OF(operation)                                                         \
  {                                                                                 \
    "LOGAsyncAppender::" operation " --- ", "LOGAsyncAppender::" operation " --- ", \
        "LOGAsyncAppender::" operation " --- An unknown exception has occurred."    \
  }
constexpr LOGFailureTexts ADD_TEXTS = TEXTS_OF("addAppender");
constexpr LOGFailureTexts GET_ALL_TEXTS = TEXTS_OF("getAllAppenders");
constexpr LOGFailureTexts GET_TEXTS = TEXTS_OF("getAppender");
constexpr LOGFailureTexts IS_ATTACHED_TEXTS = TEXTS_OF("isAttached");
constexpr LOGFailureTexts REMOVE_ALL_TEXTS = TEXTS_OF("removeAllAppenders");
constexpr LOGFailureTexts REMOVE_TEXTS = TEXTS_OF("removeAppender");
constexpr LOGFailureTexts APPEND_TEXTS = ADD_TEXTS;  // Deliberate: reports as addAppender does.
constexpr LOGFailureTexts CLOSE_TEXTS{
    "LOGAsyncAppender::close --- ", "LOGAsyncAppender::close --- ",
    "LOGAsyncAppender::close --- An unknown exception has occured."};

// An attached appender may take the list's lock under its own, to remove itself. So its lock is
// never taken under the list's, unless the caller has that already.

/// Has a file appender write the line of its last delivery, which may be held back.
void handOver(LOGAppenderSkeleton& appender) {
  if (auto* const file = dynamic_cast<LOGFileAppender*>(&appender)) {
    file->handOver();
  }
}

template <typename Which>
LOGAppenderAttachableImpl::Removed takeOut(LOGAppenderAttachableImpl& list, const Which& which) {
  const ZEBThreadGuard guard(list.getCriticalSection());
  return list.takeOut(which);
}

void closeAndTakeOutEach(LOGAppenderAttachableImpl& list) {
  const LOGCallScope call;  // closing waits for no delivery
  LOGAppenderPin pin;
  LOGFirstFailure failure;
  const auto pinFirst = [&] {
    const ZEBThreadGuard guard(list.getCriticalSection());
    LOGAppenderSkeleton* const first = list.pinAt(0, pin);
    if (first == nullptr) {
      failure.keepOf([&] { list.removeAllAppenders(); });  // the list's claims go, too
    }
    return first;
  };
  while (LOGAppenderSkeleton* const appender = pinFirst()) {
    failure.keepOf([&] { appender->close(); });
    takeOut(list, appender);
  }
  failure.passOn();
}

/// Runs `operation` under the list's lock. Returns what it does, or null or 0 where it failed.
template <typename Operation>
auto locked(LOGAppenderAttachableImpl& list, const LOGFailureTexts& texts, Operation operation) {
  decltype(operation(list)) result{};
  logReportingFailures(texts, [&] {
    const ZEBThreadGuard guard(list.getCriticalSection());
    result = operation(list);
  });
  return result;
}

}  // namespace

const I18NString LOGAsyncAppender::BUFFER_SIZE_OPTION = "BufferSize";
const I18NString LOGAsyncAppender::LOCATION_INFO_OPTION = "LocationInfo";

/// Queue, list of attached appenders and thread.
struct LOGAsyncAppender::Core {
  /// Null where `appender` is no asynchronous one.
  static std::shared_ptr<Core> of(const LOGAppenderSkeleton& appender) {
    const auto* const async = dynamic_cast<const LOGAsyncAppender*>(&appender);
    return async == nullptr ? nullptr : async->m_core;
  }

  /// Called at the end of the outermost call of a thread that has found no room.
  void waitForRoom(std::uint64_t place) noexcept {
    logContainingFailures(APPEND_TEXTS, [&] {
      // Under a lock that the program holds itself, the dispatcher might wait for this thread.
      if (ZEBForkGate::self().mayWait() && !bf.waitForRoom(place)) {
        LOGLogLog::warn(interruptedWarningMessage.exchange(1) == 0
                            ? "AsyncAppender interrupted."
                            : "AsyncAppender interrupted again.");
      }
    });
  }

  void renewInChild() noexcept {
    bf.renewInChild();
    dispatcher.renewInChild();
    if (dispatcher.isLeftByFork() && !aai.getCriticalSection().isHeldHere()) {
      aai.forgetWalks();
    }
  }

  /// The one that this one takes the place of, while that still passes on what it has queued.
  std::shared_ptr<Core> predecessor() const {
    const ZEBThreadGuard guard(g_successionLock);
    const std::shared_ptr<Core> core = m_predecessor.lock();
    return core == nullptr || core->bf.isClosed() ? nullptr : core;
  }
  /// The one that takes its place, while it still passes on what it has queued.
  std::shared_ptr<Core> successor() const {
    const ZEBThreadGuard guard(g_successionLock);
    return bf.isClosed() ? nullptr : m_successor.lock();
  }

  std::weak_ptr<Core> m_predecessor;  // guarded by the lock of successions, like the next
  std::weak_ptr<Core> m_successor;
  LOGAppenderAttachableImpl aai;
  LOGBoundedFIFO bf{DEFAULT_BUFFER_SIZE};
  std::atomic<int> interruptedWarningMessage{0};
  LOGDispatcher dispatcher{&bf, &aai};  // destroyed before the others, when its thread has ended
  const ZEBForkHandler forkHandler{this,
                                   [](void* core) { static_cast<Core*>(core)->renewInChild(); }};
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
  m_core->bf.close();  // which ends the dispatcher, too
  logReportingFailures(CLOSE_TEXTS, [this] {
    {
      const ZEBThreadGuard guard(getCriticalSection());
      m_closed = 1;
    }
    // Elsewhere the delivery that is under way may wait for the calling thread.
    if (LOGCallScope::mayWait()) {
      m_core->dispatcher.awaitEnd();
    }
  });
}

int LOGAsyncAppender::flush(int milliseconds) {
  return m_core->bf.isClosed() || m_core->bf.flush(LOGCallScope::mayWait() ? milliseconds : 0) ? 1
                                                                                               : 0;
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
  logReportingFailures(APPEND_TEXTS, [&] {
    if (m_core->dispatcher.isLeftByFork()) {
      m_core->dispatcher.startUnlessRunning();
    }
    // Asked for here, these are the thread that logs and its context.
    event->getThreadName();
    event->getNDC();
    if (locationInfo != 0) {
      event->getLocationInformation();
    }
    const std::uint64_t place = m_core->bf.add(*event);
    if (place != 0) {
      leaveWaitToEndOfCall(place);
    }
  });
}

void LOGAsyncAppender::leaveWaitToEndOfCall(std::uint64_t place) const {
  const LOGCallScope call;  // outermost where the program itself appends
  LOGCallScope& outermost = *LOGCallScope::outermost();
  const LOGDispatcher* const dispatcher = outermost.dispatcher();
  // What is logged from within a delivery never waits. A dispatcher waits for a queue that it
  // delivers to, unless events come back from there.
  const bool mayWait =
      dispatcher == nullptr || (outermost.isDeliveryTo(*this) && !leadsTo(*dispatcher, *this));
  if (mayWait) {
    outermost.atEnd([core = m_core, place] { core->waitForRoom(place); });
  }
}

bool LOGAsyncAppender::leadsTo(const LOGDispatcher& dispatcher, const LOGAppenderSkeleton& from) {
  Queues queues;
  queues.add(from);
  return std::any_of(queues.m_cores.begin(), queues.m_cores.end(),
                     [&](const auto& core) { return &core->dispatcher == &dispatcher; });
}

bool LOGAsyncAppender::reaches(const LOGAppenderSkeleton& from, const LOGAsyncAppender& to) {
  return leadsTo(to.m_core->dispatcher, from);
}

void LOGAsyncAppender::Queues::add(const std::shared_ptr<Core>& core) {
  if (core != nullptr && m_seen.insert(core.get()).second) {
    add(core->aai);
    m_cores.push_back(core);
  }
}

void LOGAsyncAppender::Queues::add(const LOGAppenderSkeleton& appender) { add(Core::of(appender)); }

void LOGAsyncAppender::Queues::add(const LOGAppenderAttachableImpl& list) {
  std::vector<std::shared_ptr<Core>> attached;
  list.lookAtEach(
      [&](const LOGAppenderSkeleton& appender) { attached.push_back(Core::of(appender)); });
  for (const std::shared_ptr<Core>& core : attached) {
    add(core);
  }
}

void LOGAsyncAppender::Queues::flush(int milliseconds) const {
  const int most = LOGCallScope::mayWait() ? milliseconds : 0;
  // Backwards: several may pass events on to the same one, which then waits for all of them.
  std::for_each(m_cores.rbegin(), m_cores.rend(),
                [most](const auto& core) { core->bf.flush(most); });
}

void LOGAsyncAppender::addAppender(LOGAppenderSkeleton* newAppender) {
  locked(m_core->aai, ADD_TEXTS, [&](auto& list) { return list.addAppender(newAppender), 0; });
}

ZEBListIterator<LOGAppenderSkeleton*> LOGAsyncAppender::getAllAppenders() {
  return locked(m_core->aai, GET_ALL_TEXTS, [](auto& list) { return list.getAllAppenders(); });
}

LOGAppenderSkeleton* LOGAsyncAppender::getAppender(const I18NString& name) {
  return locked(m_core->aai, GET_TEXTS, [&](auto& list) { return list.getAppender(name); });
}

int LOGAsyncAppender::isAttached(LOGAppenderSkeleton* appender) {
  return locked(m_core->aai, IS_ATTACHED_TEXTS,
                [&](auto& list) { return list.isAttached(appender); });
}

template <typename Remove>
void LOGAsyncAppender::removeEverywhere(const LOGFailureTexts& texts, Remove remove) {
  LOGFirstFailure failure;
  const auto removeFrom = [&](LOGAppenderAttachableImpl& list) {
    LOGAppenderAttachableImpl::Removed removed{nullptr, true};
    failure.keepOf([&] { logReportingFailures(texts, [&] { removed = remove(list); }); });
    list.awaitUsers(removed);
    if (removed.wasThere && removed.appender != nullptr && LOGCallScope::mayWait()) {
      failure.keepOf([&] { logReportingFailures(texts, [&] { handOver(*removed.appender); }); });
    }
  };
  removeFrom(m_core->aai);
  for (std::shared_ptr<Core> core = m_core->predecessor(); core; core = core->predecessor()) {
    removeFrom(core->aai);
  }
  for (std::shared_ptr<Core> core = m_core->successor(); core; core = core->successor()) {
    removeFrom(core->aai);
  }
  failure.passOn();
}

void LOGAsyncAppender::removeAllAppenders() {
  removeEverywhere(REMOVE_ALL_TEXTS, [](LOGAppenderAttachableImpl& list) {
    if (list.getCriticalSection().isHeldHere()) {
      list.removeAllAppenders();
    } else {
      closeAndTakeOutEach(list);
    }
    return LOGAppenderAttachableImpl::Removed{nullptr, true};
  });
}

void LOGAsyncAppender::removeAppender(const I18NString& name) {
  removeEverywhere(REMOVE_TEXTS, [&](auto& list) { return takeOut(list, name); });
}

void LOGAsyncAppender::removeAppender(LOGAppenderSkeleton* appender) {
  removeEverywhere(REMOVE_TEXTS, [&](auto& list) { return takeOut(list, appender); });
}

void LOGAsyncAppender::succeed(const LOGAsyncAppender& predecessor) {
  const ZEBThreadGuard guard(g_successionLock);
  m_core->m_predecessor = predecessor.m_core;
  predecessor.m_core->m_successor = m_core;
}
