#include "appenders/LOGDispatcher.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <typeinfo>
#include <utility>

#include "appenders/LOGAppenderAttachableImpl.h"
#include "appenders/LOGBoundedFIFO.h"
#include "appenders/LOGFileAppender.h"
#include "appenders/LOGQuietWriter.h"
#include "appenders/LOGRollingFileAppender.h"
#include "core/LOGFailures.h"
#include "core/LOGLoggingEvent.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBThreadGuard.h"

namespace {

constexpr const char* SOURCE = "LOGDispatcher";
constexpr unsigned int LONGEST_PAUSE = 10000;  // milliseconds; ended early by whatever happens

using Clock = std::chrono::steady_clock;

/// A line that was delivered waits no longer than about this for others.
constexpr Clock::duration LONGEST_HELD = std::chrono::milliseconds(1);
constexpr Clock::duration SOON = std::chrono::microseconds(100);
constexpr int MOST_EVENTS_BETWEEN_LOOKS = 32;

/// As many as are taken at once from a queue that was not shrunk can be taken without an
/// allocation.
constexpr std::size_t TAKEN_WITHOUT_MEMORY = 4;

constexpr LOGFailureTexts RUN_TEXTS{"LOGDispatcher::run --- some i18nstring exception occurred",
                                    "LOGDispatcher::run --- some ZEBThrowable exception occurred",
                                    "LOGDispatcher::run --- An unknown exception has occurred."};

}  // namespace

LOGDispatcher::LOGDispatcher(LOGBoundedFIFO* bf, LOGAsyncAppender* container)
    : m_bf(bf), m_aai(nullptr), m_container(container) {
  ZEB_ASSERT(m_container, SOURCE, 23);
  m_aai = m_container->getAAI();
  m_taken.reserve(TAKEN_WITHOUT_MEMORY);
  // With this, no event but those beyond a queue that was shrunk needs memory to leave the queue.
  m_memory = ::operator new(sizeof(LOGLoggingEvent));
}

LOGDispatcher::~LOGDispatcher() {
  join();
  forgetTaken();
  ::operator delete(m_memory);
}

void LOGDispatcher::close() {
  ZEB_ASSERT(m_bf, SOURCE, 44);
  interrupted = 1;
  m_bf->endWaiting();
}

bool LOGDispatcher::isCurrentThread() const { return m_threadId == ZEBThread::currentThreadId(); }

bool LOGDispatcher::isLeftByFork() {
  // The thread holds the queue's lock whenever it calls something that might fork.
  if (m_bf->getCriticalSection().isHeldHere()) {
    m_threadId = ZEBThread::currentThreadId();
    return false;
  }
  m_threadId = 0;
  m_visitor = nullptr;
  return true;
}

void LOGDispatcher::startInChild() {
  forgetTaken();
  m_notHandedOver = 0;
  start();
}

void LOGDispatcher::run() {
  ZEB_ASSERT(m_bf, SOURCE, 55);
  m_threadId = ZEBThread::currentThreadId();
  m_visitor = &ZEBForkGate::self();
  bool goesOn = true;
  while (goesOn) {
    m_bf->yieldToResize();
    logContainingFailures(RUN_TEXTS, [&] { goesOn = drain(); });
  }
  m_threadId = 0;
  m_visitor = nullptr;
}

bool LOGDispatcher::drain() {
  const ZEBThreadGuard guard(m_bf->getCriticalSection());
  if (!hasTaken() && !m_bf->hasEvents()) {
    if (interrupted != 0) {
      return false;
    }
    m_bf->waitForEvent(LONGEST_PAUSE);
  }
  // What this pass delivers may reach the operating system together, at the latest at its end.
  ZEBFmFile::Batch batch;
  m_eventsUntilLook = 0;
  m_eventsBetweenLooks = 1;
  m_lastHandOver = m_lastLook = Clock::now();
  while ((hasTaken() || m_bf->hasEvents()) && !m_bf->isResizeWaiting()) {
    if (ZEBForkGate::isClosed()) {
      // A pass may last as long as there are events, and a fork does not have to wait for it.
      handOver(batch);
      const ZEBForkGate::Rest rest;
    }
    logContainingFailures(RUN_TEXTS, [&] { deliverNext(batch); });
  }
  handOver(batch);
  return true;
}

void LOGDispatcher::handOver(ZEBFmFile::Batch& batch) {
  logContainingFailures(RUN_TEXTS, [&] { LOGQuietWriter::handOver(batch); });
  m_bf->noteDelivered(std::exchange(m_notHandedOver, 0));
}

bool LOGDispatcher::isTimeToHandOver() {
  if (--m_eventsUntilLook > 0) {
    return false;
  }
  // Looking at the clock takes as long as a part of an event, so it is done the less often the
  // faster events go.
  const Clock::time_point now = Clock::now();
  m_eventsBetweenLooks =
      now - m_lastLook < SOON ? std::min(2 * m_eventsBetweenLooks, MOST_EVENTS_BETWEEN_LOOKS) : 1;
  m_eventsUntilLook = m_eventsBetweenLooks;
  m_lastLook = now;
  if (now - m_lastHandOver < LONGEST_HELD) {
    return false;
  }
  m_lastHandOver = now;
  return true;
}

void LOGDispatcher::deliverNext(ZEBFmFile::Batch& batch) {
  // Asked for before space is made, so that no further thread that logs takes that space and then,
  // waiting for more, keeps the lock which delivery needs.
  LOGAsyncAppender::DispatcherTurn turn(*m_container);
  takeOut();
  turn.begin();
  if (!passesOnToOneFile()) {
    // Others may look at what a file appender has written, or write to the same file.
    handOver(batch);
    const ZEBFmFile::Batch::Pause pause;
    deliverTaken(turn);
    m_bf->noteDelivered(std::exchange(m_notHandedOver, 0));
  } else {
    deliverTaken(turn);
    // While nobody wants the lock, letting it go and taking it again would change nothing.
    while (!isTimeToHandOver()) {
      if (!mayGoOn(turn)) {
        return;
      }
      takeOut();
      deliverTaken(turn);
    }
    handOver(batch);
  }
}

bool LOGDispatcher::mayGoOn(const LOGAsyncAppender::DispatcherTurn& turn) const {
  return !turn.isLockWanted() && !m_bf->isResizeWaiting() && !ZEBForkGate::isClosed() &&
         !hasTaken() && m_bf->hasEvents() &&
         passesOnToOneFile();  // what was delivered may have changed the list
}

bool LOGDispatcher::passesOnToOneFile() const {
  if (m_aai == nullptr || m_aai->size() != 1) {
    return false;
  }
  const LOGAppenderSkeleton& appender = *m_aai->first();
  return typeid(appender) == typeid(LOGFileAppender) ||
         typeid(appender) == typeid(LOGRollingFileAppender);
}

void LOGDispatcher::deliverTaken(const LOGAsyncAppender::DispatcherTurn& turn) {
  // Nothing was taken when the appender was closed meanwhile.
  while (hasTaken()) {
    deliver(std::exchange(m_taken[m_nextTaken], nullptr));
    ++m_nextTaken;
    if (m_bf->isWaitingEnded()) {
      forgetTaken();  // closed, as what is still queued is dropped
    }
    if (turn.isLockWanted() || ZEBForkGate::isClosed()) {
      return;
    }
  }
}

void LOGDispatcher::deliver(LOGLoggingEvent* event) {
  logContainingFailures(RUN_TEXTS, [&] {
    if (m_aai != nullptr && event != nullptr) {
      m_aai->appendLoopOnAppenders(event);
    }
  });
  forget(event);
  ++m_notHandedOver;
}

void LOGDispatcher::takeOut() {
  m_taken.erase(m_taken.begin(), m_taken.begin() + static_cast<std::ptrdiff_t>(m_nextTaken));
  m_nextTaken = 0;
  // A producer that waits for space holds the lock that delivery needs, so there must be space
  // before anything can be delivered. Only one that came before this turn can hold it, and it needs
  // one place: more than one event is taken from a queue that was shrunk only.
  const int free = hasTaken() ? std::max(m_bf->getMaxSize(), 1) - m_bf->length() : 0;
  for (int events = m_bf->excess() + (free > 0 ? 0 : 1); events > 0 && m_bf->hasEvents();
       --events) {
    if (hasTaken() && m_memory == nullptr) {
      m_memory = ::operator new(sizeof(LOGLoggingEvent), std::nothrow);
      if (m_memory == nullptr) {
        return;  // what was taken leaves some
      }
    }
    takeOne();
  }
}

void LOGDispatcher::takeOne() {
  m_taken.reserve(m_taken.size() + 1);
  m_taken.push_back(m_bf->get(m_memory));
  if (LOGLogLog::mayWrite() && m_bf->wasFull() != 0) {
    LOGLogLog::debug("Notifying AsyncAppender about freed space.");
  }
}

void LOGDispatcher::forgetTaken() noexcept {
  for (; hasTaken(); ++m_nextTaken) {
    forget(m_taken[m_nextTaken]);
  }
  m_taken.clear();
  m_nextTaken = 0;
}

void LOGDispatcher::forget(LOGLoggingEvent* event) noexcept {
  if (event != nullptr && m_memory == nullptr && typeid(*event) == typeid(LOGLoggingEvent)) {
    event->~LOGLoggingEvent();
    m_memory = event;
  } else {
    delete event;
  }
}
