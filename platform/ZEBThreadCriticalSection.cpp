#include "platform/ZEBThreadCriticalSection.h"

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <new>
#include <system_error>

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

/// Where threads sleep that wait for a lock. Locks share the places, so that each is small; leaving
/// one wakes all that sleep at its place.
ZEBThreadPlace& placeOf(const void* section) {
  constexpr std::size_t PLACES = 61;  // prime, because addresses are multiples of powers of two
  // Never destroyed: static destructors lock too.
  static auto* const places = new ZEBThreadPlace[PLACES];
  return places[reinterpret_cast<std::uintptr_t>(section) % PLACES];
}

/// Made when the library is loaded, so that waiting for a lock needs no memory.
[[maybe_unused]] const ZEBThreadPlace* const FIRST_PLACE = &placeOf(nullptr);

std::uintptr_t ownerOf(const ZEBForkGate::ThreadRecord* thread) {
  return reinterpret_cast<std::uintptr_t>(thread);
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

void ZEBThreadCriticalSection::noteLeft() noexcept {
  __tsan_mutex_pre_unlock(this, 0);
  __tsan_mutex_post_unlock(this, 0);
}
#endif

ZEBForkGate::ThreadRecord& ZEBThreadCriticalSection::currentThread() {
  try {
    return ZEBForkGate::self();
  } catch (const std::bad_alloc&) {
    throw ZEBOutOfMemoryError("ZEBThreadCriticalSection::enter", __LINE__);
  }
}

void ZEBThreadCriticalSection::enterHeld(Owner self, Owner owner) {
  if (isOwner(self, owner)) {
    ++m_repeats;
    return;
  }
  waitFor(self);
  noteTaken();
}

bool ZEBThreadCriticalSection::tryEnter() {
  const Owner self = ownerOf(&currentThread());
  Owner owner = 0;
  if (m_owner.compare_exchange_strong(owner, self)) {
    noteTaken(false);
    return true;
  }
  if (isFree(owner) && m_owner.compare_exchange_strong(owner, self | (owner & OTHERS_WAIT))) {
    m_repeats = 0;  // those of a lost thread
    noteTaken(false);
    return true;
  }
  if (isOwner(self, owner)) {
    ++m_repeats;
    return true;
  }
  return false;
}

LOG4ZEB_COLD void ZEBThreadCriticalSection::waitFor(Owner self) {
  for (int i = 0; i < ATTEMPTS_AWAKE; ++i) {
    Owner nobody = 0;
    if (m_owner.load(std::memory_order_relaxed) == 0 &&
        m_owner.compare_exchange_strong(nobody, self)) {
      return;
    }
  }
  try {
    const ZEBForkGate::BlockedScope blocked;
    sleepUntilTaken(self);
  } catch (const std::system_error& refused) {
    throw ZEBSystemError("critical section", refused.code(), "ZEBThreadCriticalSection::enter",
                         __LINE__);
  }
}

void ZEBThreadCriticalSection::sleepUntilTaken(Owner self) {
  ZEBThreadPlace& place = placeOf(this);
  const std::lock_guard<ZEBThreadPlace> lock(place);
  for (;;) {
    Owner owner = m_owner.load(std::memory_order_acquire);
    const bool takes = isFree(owner);
    // Whoever slept here may not be the only one.
    const Owner wanted = (takes ? self : owner) | OTHERS_WAIT;
    if (owner != wanted && !m_owner.compare_exchange_strong(owner, wanted)) {
      continue;
    }
    if (takes) {
      m_repeats = 0;  // those of a lost thread
      return;
    }
    place.sleep();
  }
}

bool ZEBThreadCriticalSection::isOfOther(Owner owner) noexcept {
  return !isFree(owner) && !isOwner(ownerOf(ZEBForkGate::selfIfKnown()), owner);
}

bool ZEBThreadCriticalSection::isHeldHere() const noexcept {
  const Owner owner = m_owner.load(std::memory_order_relaxed);
  return owner != 0 && isOwner(ownerOf(ZEBForkGate::selfIfKnown()), owner);
}

void ZEBThreadCriticalSection::leave() noexcept { leaveInline(); }

LOG4ZEB_COLD void ZEBThreadCriticalSection::wakeWaiting() const noexcept {
  ZEBThreadPlace& place = placeOf(this);
  // A thread that waits sets OTHERS_WAIT and sleeps under this lock, so it misses no wake-up.
  const std::lock_guard<ZEBThreadPlace> lock(place);
  place.wakeAll();
}
