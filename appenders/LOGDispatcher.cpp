#include "appenders/LOGDispatcher.h"

#include "appenders/LOGAppenderAttachableImpl.h"
#include "appenders/LOGAsyncAppender.h"
#include "appenders/LOGBoundedFIFO.h"
#include "core/LOGFailures.h"
#include "core/LOGLoggingEvent.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBThreadGuard.h"

namespace {

constexpr const char* SOURCE = "LOGDispatcher";
constexpr unsigned int LONGEST_PAUSE = 10000;  // milliseconds; ended early by whatever happens

constexpr LOGFailureTexts RUN_TEXTS{"LOGDispatcher::run --- some i18nstring exception occurred",
                                    "LOGDispatcher::run --- some ZEBThrowable exception occurred",
                                    "LOGDispatcher::run --- An unknown exception has occurred."};

}  // namespace

LOGDispatcher::LOGDispatcher(LOGBoundedFIFO* bf, LOGAsyncAppender* container)
    : m_bf(bf), m_aai(nullptr), m_container(container) {
  ZEB_ASSERT(m_container, SOURCE, 23);
  m_aai = m_container->getAAI();
}

LOGDispatcher::~LOGDispatcher() { join(); }

void LOGDispatcher::close() {
  ZEB_ASSERT(m_bf, SOURCE, 44);
  interrupted = 1;
  m_bf->endWaiting();
}

bool LOGDispatcher::isCurrentThread() const { return m_threadId == ZEBThread::currentThreadId(); }

void LOGDispatcher::run() {
  ZEB_ASSERT(m_bf, SOURCE, 55);
  m_threadId = ZEBThread::currentThreadId();
  bool goesOn = true;
  while (goesOn) {
    m_bf->yieldToResize();
    logContainingFailures(RUN_TEXTS, [&] { goesOn = drain(); });
  }
}

bool LOGDispatcher::drain() {
  const ZEBThreadGuard guard(m_bf->getCriticalSection());
  if (m_bf->length() == 0) {
    if (interrupted != 0) {
      return false;
    }
    m_bf->waitForEvent(LONGEST_PAUSE);
  }
  while (m_bf->length() > 0 && !m_bf->isResizeWaiting()) {
    logContainingFailures(RUN_TEXTS, [this] { deliverNext(); });
  }
  return true;
}

void LOGDispatcher::deliverNext() {
  // Asked for before space is made, so that no further thread that logs takes that space and then,
  // waiting for more, keeps the lock which delivery needs.
  LOGAsyncAppender::DispatcherTurn turn(*m_container);
  std::deque<Event> events;
  takeOut(events);
  turn.begin();
  for (; !events.empty(); events.pop_front()) {
    logContainingFailures(RUN_TEXTS, [&] {
      if (m_aai != nullptr && events.front() != nullptr) {
        m_aai->appendLoopOnAppenders(events.front().get());
      }
    });
    m_bf->noteDelivered();
  }
}

void LOGDispatcher::takeOut(std::deque<Event>& events) {
  // More than one only from a queue that was shrunk: a producer that waits for space holds the lock
  // that delivery needs, so there must be space before anything can be delivered.
  do {
    events.emplace_back(m_bf->get());
    if (m_bf->wasFull() != 0) {
      LOGLogLog::debug("Notifying AsyncAppender about freed space.");
    }
  } while (m_bf->length() > 0 && !m_bf->hasSpace());
}
