#include "appenders/LOGDispatcher.h"

#include <algorithm>
#include <optional>
#include <typeinfo>
#include <utility>

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

/// A line that was delivered waits no longer than about this for others.
constexpr Clock::duration LONGEST_HELD = std::chrono::milliseconds(1);
constexpr Clock::duration SOON = std::chrono::microseconds(100);
constexpr int MOST_EVENTS_BETWEEN_LOOKS = 32;
constexpr unsigned int PAUSE_WITHOUT_MEMORY = 10;  // milliseconds

constexpr LOGFailureTexts RUN_TEXTS{"LOGDispatcher::run --- some i18nstring exception occurred",
                                    "LOGDispatcher::run --- some ZEBThrowable exception occurred",
                                    "LOGDispatcher::run --- An unknown exception has occurred."};

LOGAppenderAttachableImpl* listOf(LOGAsyncAppender* container) {
  ZEB_ASSERT_AS(container, "m_container", SOURCE, 23);
  return container->getAAI();
}

/// Whether the lines of such an appender may wait for each other.
bool isFile(const LOGAppenderSkeleton& appender) {
  return typeid(appender) == typeid(LOGFileAppender) ||
         typeid(appender) == typeid(LOGRollingFileAppender);
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
  m_bf->wakeDispatcher();
}

void LOGDispatcher::startUnlessRunning() {
  if (!m_isRunning.exchange(true)) {
    try {
      start();
    } catch (...) {
      m_isRunning = false;
      throw;
    }
  }
}

void LOGDispatcher::awaitEnd() { m_bf->waitForEnd(m_isRunning); }

bool LOGDispatcher::isLeftByFork() noexcept {
  if (!m_isRunning || isCurrentThread()) {
    return false;
  }
  m_isRunning = false;
  m_notHandedOver = 0;
  return true;
}

void LOGDispatcher::run() {
  ZEB_ASSERT(m_bf, SOURCE, 55);
  s_current = this;
  m_isRunning = true;
  logContainingFailures(RUN_TEXTS, [this] {
    std::optional<LOGAppenderPin> pin;
    for (bool goesOn = true; goesOn;) {
      logContainingFailures(RUN_TEXTS, [&] {
        if (!pin.has_value()) {
          pin.emplace();
        }
        goesOn = pass(*pin);
      });
      if (!pin.has_value()) {
        ZEBThread::sleep(PAUSE_WITHOUT_MEMORY);
      }
    }
  });
  s_current = nullptr;
  m_isRunning = false;
  m_bf->noteEnd();
}

bool LOGDispatcher::pass(LOGAppenderPin& pin) {
  if (!m_bf->waitForEvent(interrupted)) {
    return false;
  }
  // What this pass delivers may reach the operating system together, at the latest at its end.
  ZEBFmHold hold;
  m_eventsUntilLook = 0;
  m_eventsBetweenLooks = 1;
  m_lastHandOver = m_lastLook = Clock::now();
  while (m_bf->hasEvents()) {
    m_mayHold = false;
    logContainingFailures(RUN_TEXTS, [&] { deliverNext(hold, pin); });
    ++m_notHandedOver;
    if (!m_mayHold || ZEBForkGate::isClosed() || isTimeToHandOver()) {
      handOver(hold);
    }
  }
  handOver(hold);
  return true;
}

void LOGDispatcher::handOver(ZEBFmHold& hold) {
  logContainingFailures(RUN_TEXTS, [&] { LOGQuietWriter::handOver(hold); });
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

void LOGDispatcher::deliverNext(ZEBFmHold& hold, LOGAppenderPin& pin) {
  std::unique_ptr<LOGLoggingEvent> whole;  // with its message destroyed here, without a lock
  LOGLoggingEvent* const event = m_bf->take(m_unpacked, whole);
  if (LOGLogLog::mayWrite() && m_bf->wasFull() != 0) {
    logContainingFailures(RUN_TEXTS,
                          [] { LOGLogLog::debug("Notifying AsyncAppender about freed space."); });
  }
  if (event != nullptr) {
    deliver(*event, hold, pin);
  }
}

void LOGDispatcher::deliver(LOGLoggingEvent& event, ZEBFmHold& hold, LOGAppenderPin& pin) {
  LOGCallScope call;  // waits at its end for room in queues that are attached here
  LOGAppenderAttachableImpl::PinnedWalk walk(*m_aai, pin);
  m_mayHold = walk.isOnly() && isFile(*walk.appender());
  if (!m_mayHold) {
    // Others may look at what a file appender has written, or write to the same file.
    handOver(hold);
  }
  event.setHold(m_mayHold ? &hold : nullptr);
  for (; walk.appender() != nullptr; walk.goOn()) {
    call.deliverTo(walk.appender());
    LOGAppenderAttachableImpl::append(*walk.appender(), &event);
  }
}
