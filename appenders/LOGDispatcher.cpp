#include "appenders/LOGDispatcher.h"

#include <algorithm>
#include <typeinfo>

#include "appenders/LOGAppenderAttachableImpl.h"
#include "appenders/LOGAppenderPin.h"
#include "appenders/LOGAsyncAppender.h"
#include "appenders/LOGBoundedFIFO.h"
#include "appenders/LOGQuietWriter.h"
#include "appenders/LOGRollingFileAppender.h"
#include "core/LOGCallScope.h"
#include "core/LOGFailures.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBForkGate.h"

namespace {

constexpr const char* SOURCE = "LOGDispatcher";

using Clock = std::chrono::steady_clock;

/// Lines that were delivered wait for each other twice as long at most, as far as one can tell.
constexpr Clock::duration USUAL_HELD = std::chrono::microseconds(500);
constexpr int MOST_HELD = 64;
constexpr unsigned int PAUSE_AFTER_FAILURE = 10;  // milliseconds

constexpr LOGFailureTexts RUN_TEXTS{"LOGDispatcher::run --- some i18nstring exception occurred",
                                    "LOGDispatcher::run --- some ZEBThrowable exception occurred",
                                    "LOGDispatcher::run --- An unknown exception has occurred."};

LOGAppenderAttachableImpl* listOf(LOGAsyncAppender* m_container) {
  ZEB_ASSERT(m_container, SOURCE, 23);
  return m_container->getAAI();
}

/// Whether the lines of such an appender may wait for each other.
bool isFile(const LOGAppenderSkeleton& appender) {
  return typeid(appender) == typeid(LOGFileAppender) ||
         typeid(appender) == typeid(LOGRollingFileAppender);
}

void handOver(ZEBFmHold& hold) {
  logContainingFailures(RUN_TEXTS, [&] { LOGQuietWriter::handOver(hold); });
}

}  // namespace

LOGDispatcher::LOGDispatcher(LOGBoundedFIFO* bf, LOGAsyncAppender* container)
    : LOGDispatcher(bf, listOf(container)) {}

LOGDispatcher::LOGDispatcher(LOGBoundedFIFO* bf, LOGAppenderAttachableImpl* list)
    : m_bf(bf), m_aai(list) {}

LOGDispatcher::~LOGDispatcher() { join(); }

void LOGDispatcher::close() {
  ZEB_ASSERT(m_bf, SOURCE, 44);
  interrupted = 1;
  m_bf->wakeAll();
}

void LOGDispatcher::startUnlessRunning() {
  if (!m_isRunning.exchange(true)) {
    try {
      start();
      m_isLeftByFork = false;
    } catch (...) {
      m_isRunning = false;
      throw;
    }
  }
}

void LOGDispatcher::awaitEnd() { m_bf->waitForEnd(m_isRunning); }

void LOGDispatcher::renewInChild() noexcept {
  const LOGCallScope* const call = LOGCallScope::outermost();
  const bool hasForked = call != nullptr && call->dispatcher() == this;
  if (m_isRunning && !hasForked) {
    m_isRunning = false;
    m_isLeftByFork = true;
  }
}

void LOGDispatcher::run() {
  ZEB_ASSERT(m_bf, SOURCE, 55);
  m_isRunning = true;
  for (bool goesOn = true; goesOn;) {
    if (!logContainingFailures(RUN_TEXTS, [&] { goesOn = pass(); })) {
      ZEBThread::sleep(PAUSE_AFTER_FAILURE);  // there was no memory to begin with
    }
  }
  m_isRunning = false;
  m_bf->wakeAll();
}

/// Waits for events and delivers them until there is none. Returns false when there is none to
/// come.
bool LOGDispatcher::pass() {
  if (!m_bf->waitForEvent(interrupted)) {
    return false;
  }
  LOGAppenderPin pin;
  // What this pass delivers may reach the operating system together, at the latest at its end.
  ZEBFmHold hold;
  m_held = 0;
  m_lastHandOver = Clock::now();
  while (m_bf->hasEvents()) {
    bool mayHold = false;
    logContainingFailures(RUN_TEXTS, [&] { mayHold = deliverNext(hold, pin); });
    if (!mayHold || ZEBForkGate::isClosed() || isTimeToHandOver()) {
      m_bf->wakeCallers(mayHold && m_mostHeld == MOST_HELD ? m_bf->getMaxSize() / 4 : 0);
      handOver(hold);
      m_bf->noteDelivered();
    }
  }
  m_bf->wakeCallers(0);
  handOver(hold);
  m_bf->noteDelivered();
  return true;
}

bool LOGDispatcher::isTimeToHandOver() {
  if (++m_held < m_mostHeld) {
    return false;
  }
  // As many as would have taken that long, but not more than twice as many.
  const Clock::time_point now = Clock::now();
  const Clock::duration passed = std::max(now - m_lastHandOver, Clock::duration(1));
  m_mostHeld = static_cast<int>(std::clamp<Clock::rep>(m_mostHeld * USUAL_HELD / passed, 1,
                                                       std::min(2 * m_mostHeld, MOST_HELD)));
  m_lastHandOver = now;
  m_held = 0;
  return true;
}

/// Returns whether the event's lines may be held back for a while.
bool LOGDispatcher::deliverNext(ZEBFmHold& hold, LOGAppenderPin& pin) {
  LOGCallScope call(*this);  // waits at its end for room in queues that are attached here
  std::unique_ptr<LOGLoggingEvent> whole;  // destroyed within the call, and without a lock
  LOGLoggingEvent* const event = m_bf->take(m_unpacked, whole);
  if (LOGLogLog::mayWrite() && m_bf->wasFull() != 0) {
    logContainingFailures(RUN_TEXTS,
                          [] { LOGLogLog::debug("Notifying AsyncAppender about freed space."); });
  }
  if (event == nullptr) {
    return false;
  }
  LOGAppenderAttachableImpl::PinnedWalk walk(*m_aai, pin);
  const bool mayHold = walk.isOnly() && isFile(*walk.appender());
  if (!mayHold) {
    // Others may look at what a file appender has written, or write to the same file.
    handOver(hold);
    m_bf->wakeCallers(0);
  }
  event->setHold(mayHold ? &hold : nullptr);
  for (; walk.appender() != nullptr; walk.goOn()) {
    call.deliverTo(walk.appender());
    LOGAppenderAttachableImpl::append(*walk.appender(), event);
  }
  return mayHold;
}
