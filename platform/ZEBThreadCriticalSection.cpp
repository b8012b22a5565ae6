#include "platform/ZEBThreadCriticalSection.h"

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <new>
#include <system_error>

#include "platform/ZEBForkGate.h"
#include "platform/ZEBOutOfMemoryError.h"
#include "platform/ZEBSystemError.h"
#include "platform/ZEBThreadPlace.h"

#ifdef __SANITIZE_THREAD__
#include <sanitizer/tsan_interface.h>
#endif

namespace {

/// How often a lock is asked for before the thread sleeps: most are held for less than it takes to
/// fall asleep and to be woken.
constexpr int ATTEMPTS_AWAKE = 100;

constexpr std::uintptr_t OTHERS_WAIT = 1;

/// Where threads sleep that wait for a lock. Locks share the places, so that each is small; who
/// wakes wakes all that sleep at one.
ZEBThreadPlace& placeOf(const void* section) {
  constexpr std::size_t PLACES = 61;  // prime, because addresses are multiples of powers of two
  // Never destroyed: static destructors lock too.
  static auto* const places = new ZEBThreadPlace[PLACES];
  return places[reinterpret_cast<std::uintptr_t>(section) % PLACES];
}

/// Made when the library is loaded, so that waiting for a lock needs no memory.
[[maybe_unused]] const ZEBThreadPlace* const FIRST_PLACE = &placeOf(nullptr);

thread_local ZEBForkGate::Visitor* t_visitor = nullptr;

ZEBForkGate::Visitor& currentVisitor() {
  if (t_visitor != nullptr) {
    return *t_visitor;
  }
  try {
    return ZEBForkGate::join(t_visitor);
  } catch (const std::bad_alloc&) {
    throw ZEBOutOfMemoryError("ZEBThreadCriticalSection::enter", __LINE__);
  }
}

/// Differs from thread to thread, and its lowest bit is free.
std::uintptr_t markOf(const ZEBForkGate::Visitor* visitor) {
  return reinterpret_cast<std::uintptr_t>(visitor);
}

ZEBForkGate::Visitor* holderIn(std::uintptr_t state) {
  return reinterpret_cast<ZEBForkGate::Visitor*>(state & ~OTHERS_WAIT);
}

/// Whether nobody in this process holds a lock in that state.
bool isFree(std::uintptr_t state) {
  const ZEBForkGate::Visitor* const holder = holderIn(state);
  return holder == nullptr || holder->isGone();
}

}  // namespace

// The thread sanitizer sees only atomic operations here. With these notes it knows the lock as one,
// and reports locks that are taken in opposite orders. They stand apart from the operations, so
// that it also follows what isHeldElsewhere() tells a thread that takes no lock.
#ifdef __SANITIZE_THREAD__
ZEBThreadCriticalSection::~ZEBThreadCriticalSection() { __tsan_mutex_destroy(this, 0); }

void ZEBThreadCriticalSection::noteTaken(bool hasWaited) noexcept {
  const unsigned flags = hasWaited ? 0 : __tsan_mutex_try_lock;
  __tsan_mutex_pre_lock(this, flags);
  __tsan_mutex_post_lock(this, flags, 0);
}

void ZEBThreadCriticalSection::noteTakenFromLostThread() noexcept {
  __tsan_mutex_destroy(this, __tsan_mutex_linker_init);
}

void ZEBThreadCriticalSection::noteLeft() noexcept {
  __tsan_mutex_pre_unlock(this, 0);
  __tsan_mutex_post_unlock(this, 0);
}
#else
inline void ZEBThreadCriticalSection::noteTaken(bool) noexcept {}
inline void ZEBThreadCriticalSection::noteTakenFromLostThread() noexcept {}
inline void ZEBThreadCriticalSection::noteLeft() noexcept {}
#endif

LOG4ZEB_HOT void ZEBThreadCriticalSection::enter() {
  ZEBForkGate::Visitor& visitor = currentVisitor();
  const Mark self = markOf(&visitor);
  for (;;) {
    // A fork that does not see this yet has closed the gate where it is seen below.
    visitor.comeIn();
    Mark found = 0;
    if (!m_state.compare_exchange_strong(found, self, std::memory_order_seq_cst,
                                         std::memory_order_relaxed)) {
      visitor.goOut();
      if (holderIn(found) == &visitor) {
        ++m_depth;
        return;
      }
      waitFor(self);
      visitor.comeIn(std::memory_order_seq_cst);
    }
    m_depth = 1;
    noteTaken();
    if (!ZEBForkGate::turnsAway(visitor)) {
      return;
    }
    leave();
    ZEBForkGate::waitUntilOpen();
  }
}

bool ZEBThreadCriticalSection::tryEnter() {
  ZEBForkGate::Visitor& visitor = currentVisitor();
  if (isHeldHere()) {
    ++m_depth;
    return true;
  }
  visitor.comeIn(std::memory_order_seq_cst);
  Mark found = 0;
  if (!ZEBForkGate::turnsAway(visitor) &&
      m_state.compare_exchange_strong(found, markOf(&visitor), std::memory_order_seq_cst,
                                      std::memory_order_relaxed)) {
    m_depth = 1;
    noteTaken(false);
    return true;
  }
  visitor.goOut();
  return false;
}

void ZEBThreadCriticalSection::waitFor(Mark self) {
  for (int i = 0; i < ATTEMPTS_AWAKE; ++i) {
    Mark nobody = 0;
    if (m_state.load(std::memory_order_relaxed) == 0 &&
        m_state.compare_exchange_strong(nobody, self, std::memory_order_acq_rel,
                                        std::memory_order_relaxed)) {
      return;
    }
  }
  try {
    const ZEBForkGate::Rest rest;
    sleepUntilTaken(self);
  } catch (const std::system_error& refused) {
    throw ZEBSystemError("critical section", refused.code(), "ZEBThreadCriticalSection::enter",
                         __LINE__);
  } catch (const std::bad_alloc&) {
    throw ZEBOutOfMemoryError("ZEBThreadCriticalSection::enter", __LINE__);
  }
}

void ZEBThreadCriticalSection::sleepUntilTaken(Mark self) {
  ZEBThreadPlace& place = placeOf(this);
  const std::lock_guard<ZEBThreadPlace> lock(place);
  for (;;) {
    Mark found = m_state.load(std::memory_order_acquire);  // with what its holder made of itself
    const bool takes = isFree(found);
    // Whoever slept here may not be the only one.
    const Mark wanted = takes ? self | OTHERS_WAIT : found | OTHERS_WAIT;
    if (found != wanted &&
        !m_state.compare_exchange_strong(found, wanted, std::memory_order_acq_rel,
                                         std::memory_order_relaxed)) {
      continue;
    }
    if (takes) {
      if (found != 0) {
        noteTakenFromLostThread();
      }
      return;
    }
    place.sleep();
  }
}

bool ZEBThreadCriticalSection::isHeldElsewhere() const noexcept {
  // Acquired, so that who sees the lock free sees also what was done under it.
  const Mark state = m_state.load(std::memory_order_acquire);
  return state != 0 && holderIn(state) != t_visitor && !isFree(state);
}

bool ZEBThreadCriticalSection::isHeldHere() const noexcept {
  const Mark state = m_state.load(std::memory_order_relaxed);
  return state != 0 && holderIn(state) == t_visitor;
}

bool ZEBThreadCriticalSection::isLeftByFork() const noexcept {
  const Mark state = m_state.load(std::memory_order_acquire);
  return state != 0 && isFree(state);
}

LOG4ZEB_HOT void ZEBThreadCriticalSection::leave() noexcept {
  if (--m_depth == 0) {
    noteLeft();
    // From the exchange on, another thread may take the lock and destroy it.
    const Mark state = m_state.exchange(0, std::memory_order_release);
    holderIn(state)->goOut();
    if ((state & OTHERS_WAIT) != 0) {
      wakeWaiting();
    }
  }
}

void ZEBThreadCriticalSection::wakeWaiting() const noexcept {
  ZEBThreadPlace& place = placeOf(this);
  // Who waits has said so and fallen asleep in one step under this lock.
  const std::lock_guard<ZEBThreadPlace> lock(place);
  place.wakeAll();
}
