#include "platform/ZEBThreadCriticalSection.h"

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <new>
#include <system_error>

#include "platform/ZEBSystemError.h"
#include "platform/ZEBThreadPlace.h"

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

}  // namespace

ZEBThreadCriticalSection::Mark ZEBThreadCriticalSection::currentThreadMark() noexcept {
  // Differs from thread to thread, and its lowest bit is free.
  alignas(2 * OTHERS_WAIT) static thread_local char mark;
  return reinterpret_cast<Mark>(&mark);
}

LOG4ZEB_HOT void ZEBThreadCriticalSection::enter() {
  const Mark self = currentThreadMark();
  Mark found = 0;
  if (m_state.compare_exchange_strong(found, self, std::memory_order_acquire,
                                      std::memory_order_relaxed)) {
    m_depth = 1;
  } else if ((found & ~OTHERS_WAIT) == self) {
    ++m_depth;
  } else {
    waitFor(self);
    m_depth = 1;
  }
}

void ZEBThreadCriticalSection::waitFor(Mark self) {
  for (int i = 0; i < ATTEMPTS_AWAKE; ++i) {
    Mark nobody = 0;
    if (m_state.load(std::memory_order_relaxed) == 0 &&
        m_state.compare_exchange_strong(nobody, self, std::memory_order_acquire,
                                        std::memory_order_relaxed)) {
      return;
    }
  }
  try {
    ZEBThreadPlace& place = placeOf(this);
    const std::lock_guard<ZEBThreadPlace> lock(place);
    for (;;) {
      Mark found = m_state.load(std::memory_order_relaxed);
      // Whoever slept here may not be the only one.
      const Mark wanted = found == 0 ? self | OTHERS_WAIT : found | OTHERS_WAIT;
      if (found != wanted &&
          !m_state.compare_exchange_strong(found, wanted, std::memory_order_acquire,
                                           std::memory_order_relaxed)) {
        continue;
      }
      if (found == 0) {
        return;
      }
      place.sleep();
    }
  } catch (const std::system_error& refused) {
    throw ZEBSystemError("critical section", refused.code(), "ZEBThreadCriticalSection::enter",
                         __LINE__);
  } catch (const std::bad_alloc&) {
    throw ZEBSystemError("critical section", std::make_error_code(std::errc::not_enough_memory),
                         "ZEBThreadCriticalSection::enter", __LINE__);
  }
}

bool ZEBThreadCriticalSection::isHeldElsewhere() const noexcept {
  // Acquired, so that who sees the lock free sees also what was done under it.
  const Mark holder = m_state.load(std::memory_order_acquire) & ~OTHERS_WAIT;
  return holder != 0 && holder != currentThreadMark();
}

bool ZEBThreadCriticalSection::isWanted() const noexcept {
  return (m_state.load(std::memory_order_relaxed) & OTHERS_WAIT) != 0;
}

LOG4ZEB_HOT void ZEBThreadCriticalSection::leave() noexcept {
  // From the exchange on, another thread may take the lock and destroy it.
  if (--m_depth == 0 && (m_state.exchange(0, std::memory_order_release) & OTHERS_WAIT) != 0) {
    wakeWaiting();
  }
}

void ZEBThreadCriticalSection::wakeWaiting() const noexcept {
  ZEBThreadPlace& place = placeOf(this);
  // Who waits has said so and fallen asleep in one step under this lock.
  const std::lock_guard<ZEBThreadPlace> lock(place);
  place.wakeAll();
}
