#include "platform/ZEBForkGate.h"

#include <chrono>
#include <mutex>
#include <new>
#include <thread>
#include <utility>

#include "platform/ZEBForkHandler.h"
#include "platform/ZEBThread.h"
#include "platform/ZEBThreadPlace.h"

namespace {

using Visitor = ZEBForkGate::Visitor;

/// How long a fork waits for threads that hold locks.
constexpr std::chrono::milliseconds PATIENCE(500);
constexpr std::chrono::microseconds BETWEEN_LOOKS(20);
/// How long a thread waits at the closed gate. What another library does before a fork may wait for
/// a lock that this thread holds, so that it has to go on in the end, and the gate is open then.
constexpr std::chrono::milliseconds LONGEST_WAIT(1000);

std::atomic<Visitor*> g_visitors{nullptr};
std::atomic<const Visitor*> g_forking{nullptr};  // while the gate is closed

/// Held by a thread while it forks.
std::mutex& forkLock() {
  static auto* const lock = new std::mutex;  // destructors of static objects fork, too
  return *lock;
}

/// With the lock made before the first fork, which then needs no memory.
const bool IS_WATCHING = (forkLock(), ZEBForkGate::watchForks());

thread_local Visitor* t_self = nullptr;

}  // namespace

std::atomic<bool> ZEBForkGate::s_isClosed{false};
std::atomic<unsigned> ZEBForkGate::s_epoch{0};

ZEBForkGate::Visitor* ZEBForkGate::findUnused() noexcept {
  for (Visitor* visitor = g_visitors.load(); visitor != nullptr; visitor = visitor->m_next) {
    bool isUsed = false;
    if (!visitor->m_isUsed.load(std::memory_order_relaxed) &&
        visitor->m_isUsed.compare_exchange_strong(isUsed, true)) {
      return visitor;
    }
  }
  return nullptr;
}

/// Leaves the thread's visitor to another thread.
void ZEBForkGate::leaveThread(void*) noexcept {
  Visitor* const self = std::exchange(t_self, nullptr);
  if (self->m_locks.load() == 0) {
    self->m_isUsed.store(false, std::memory_order_release);
  }
}

ZEBForkGate::Visitor& ZEBForkGate::enterThread() {
  t_self = findUnused();
  if (t_self == nullptr) {
    auto* const made = new Visitor;
    made->m_next = g_visitors.load();
    while (!g_visitors.compare_exchange_weak(made->m_next, made)) {
    }
    t_self = made;
  }
  // Where nothing forks, a thread's visitor stays: there the variables of a thread may be gone
  // before the destructors of its objects run.
  if (IS_WATCHING) {
    ZEBThread::atEnd(&leaveThread, nullptr);
  }
  return *t_self;
}

ZEBForkGate::Visitor& ZEBForkGate::join(Visitor*& cache) {
  cache = &self();
  if (IS_WATCHING) {
    // Before the thread's visitor is left.
    ZEBThread::atEnd([](void* kept) { *static_cast<Visitor**>(kept) = nullptr; }, &cache);
  }
  return *cache;
}

ZEBForkGate::Visitor& ZEBForkGate::self() { return t_self != nullptr ? *t_self : enterThread(); }

bool ZEBForkGate::mustWait(const Visitor& visitor) noexcept {
  return visitor.m_locks.load(std::memory_order_relaxed) == 1 && g_forking.load() != &visitor;
}

void ZEBForkGate::waitUntilOpen() {
  const auto end = std::chrono::steady_clock::now() + LONGEST_WAIT;
  while (s_isClosed.load()) {
    if (std::chrono::steady_clock::now() >= end) {
      s_isClosed = false;
    }
    std::this_thread::sleep_for(BETWEEN_LOOKS);
  }
}

ZEBForkGate::Stay::Stay() : m_visitor(self()) {
  if (m_visitor.m_locks.load(std::memory_order_relaxed) != 0) {
    m_visitor.comeIn();  // a fork waits for the thread already
    return;
  }
  m_visitor.comeIn(std::memory_order_seq_cst);
  while (turnsAway(m_visitor)) {
    m_visitor.goOut();
    waitUntilOpen();
    m_visitor.comeIn(std::memory_order_seq_cst);
  }
}

ZEBForkGate::Rest::Rest() : m_visitor(self()), m_locks(m_visitor.m_locks.load()) {
  m_visitor.m_locks.store(0);
}

ZEBForkGate::Rest::~Rest() {
  m_visitor.m_locks.store(m_locks);
  while (m_locks != 0 && s_isClosed.load() && g_forking.load() != &m_visitor) {
    m_visitor.m_locks.store(0);
    waitUntilOpen();
    m_visitor.m_locks.store(m_locks);
  }
}

void ZEBForkGate::waitUntilAllRest(const Visitor& forking) {
  const auto end = std::chrono::steady_clock::now() + PATIENCE;
  for (const Visitor* visitor = g_visitors.load(); visitor != nullptr; visitor = visitor->m_next) {
    while (visitor != &forking && !visitor->isGone() && visitor->m_locks.load() != 0 &&
           std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(BETWEEN_LOOKS);
    }
  }
}

void ZEBForkGate::beforeFork() {
  Visitor& forking = self();
  {
    const Rest rest;  // for another thread that forks
    forkLock().lock();
  }
  g_forking = &forking;
  s_isClosed = true;
  waitUntilAllRest(forking);
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
  ZEBThreadPlace::renewAfterFork();
  const Visitor* const forking = g_forking.load();
  for (Visitor* visitor = g_visitors.load(); visitor != nullptr; visitor = visitor->m_next) {
    if (visitor != forking && visitor->m_isUsed.load()) {
      visitor->m_isGone = true;
    }
  }
  if (forking->m_locks.load() == 0) {
    ++s_epoch;
  }
  ZEBForkHandler::afterForkInChild();
  open();
  new (&forkLock()) std::mutex;
}
