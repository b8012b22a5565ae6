#include "platform/ZEBForkGate.h"

#include <chrono>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/LOG4ZEBExport.h"
#include "platform/ZEBForkHandler.h"
#include "platform/ZEBThread.h"

namespace {

using Clock = std::chrono::steady_clock;
using ThreadRecord = ZEBForkGate::ThreadRecord;

/// How long a fork waits for threads that hold locks.
constexpr std::chrono::milliseconds PATIENCE(500);
constexpr std::chrono::microseconds BETWEEN_LOOKS(20);
/// How long a thread waits at the closed gate. What another library does before a fork may wait for
/// a lock that this thread holds, so it goes on in the end, and opens the gate.
constexpr std::chrono::milliseconds LONGEST_WAIT(1000);

std::atomic<ThreadRecord*> g_threads{nullptr};
std::atomic<const ThreadRecord*> g_forking{nullptr};  // while the gate is closed

/// Held by a thread while it forks.
std::mutex& forkLock() {
  static auto* const lock = new std::mutex;  // destructors of static objects fork, too
  return *lock;
}

}  // namespace

/// Makes the lock before the first fork, which then needs no memory.
const bool ZEBForkGate::s_watchesForks =
    (forkLock(), ZEBThread::watchForks(&beforeFork, &afterForkInParent, &afterForkInChild));

ThreadRecord* ZEBForkGate::findUnused() noexcept {
  for (ThreadRecord* thread = g_threads.load(); thread != nullptr; thread = thread->m_next) {
    bool isUsed = false;
    if (!thread->m_isUsed.load(std::memory_order_relaxed) &&
        thread->m_isUsed.compare_exchange_strong(isUsed, true)) {
      return thread;
    }
  }
  return nullptr;
}

/// Lets another thread have the record.
void ZEBForkGate::leaveThread(void*) noexcept {
  ThreadRecord* const self = std::exchange(s_self, nullptr);
  if (self->m_held.load() == NOTHING) {
    self->m_isUsed.store(false, std::memory_order_release);
  }
}

LOG4ZEB_COLD ThreadRecord& ZEBForkGate::makeSelf() {
  s_self = findUnused();
  if (s_self == nullptr) {
    auto* const made = new ThreadRecord;
    made->m_next = g_threads.load();
    while (!g_threads.compare_exchange_weak(made->m_next, made)) {
    }
    s_self = made;
  }
  // Where nothing forks, a thread's record stays: there the variables of a thread may be gone
  // before the destructors of its objects run.
  if (s_watchesForks) {
    ZEBThread::atEnd(&leaveThread, nullptr);
  }
  return *s_self;
}

LOG4ZEB_COLD void ZEBForkGate::ThreadRecord::passGate(Held held) noexcept {
  m_held.store(held);
  const auto end = Clock::now() + LONGEST_WAIT;
  while (s_isClosed.load() && g_forking.load() != this) {
    m_held.store(NOTHING);
    if (Clock::now() >= end) {
      s_isClosed = false;
    }
    std::this_thread::sleep_for(BETWEEN_LOOKS);
    m_held.store(held);
  }
}

void ZEBForkGate::beforeFork() {
  ThreadRecord& forking = self();
  {
    const BlockedScope blocked;  // by another thread that forks
    forkLock().lock();
  }
  g_forking = &forking;
  s_isClosed = true;
  const auto end = Clock::now() + PATIENCE;
  for (const ThreadRecord* thread = g_threads.load(); thread != nullptr; thread = thread->m_next) {
    while (thread != &forking && !thread->isLost() && thread->m_held.load() != NOTHING &&
           Clock::now() < end) {
      std::this_thread::sleep_for(BETWEEN_LOOKS);
    }
  }
  ZEBForkHandler::beforeFork();
}

void ZEBForkGate::open() noexcept {
  g_forking = nullptr;
  s_isClosed = false;
}

void ZEBForkGate::afterForkInParent() noexcept {
  ZEBForkHandler::afterForkInParent();
  open();
  forkLock().unlock();
}

void ZEBForkGate::afterForkInChild() noexcept {
  const ThreadRecord* const forking = g_forking.load();
  for (ThreadRecord* thread = g_threads.load(); thread != nullptr; thread = thread->m_next) {
    if (thread != forking && thread->m_isUsed.load()) {
      thread->m_isLost = true;
    }
  }
  ZEBForkHandler::afterForkInChild();
  open();
  ZEBForkHandler::renew(forkLock());
}
