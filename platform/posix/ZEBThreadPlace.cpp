#include "platform/ZEBThreadPlace.h"

#include <condition_variable>
#include <mutex>

#include "platform/ZEBForkHandler.h"

class ZEBThreadPlace::Handle {
 public:
  std::mutex mutex;
  std::condition_variable woken;
  // In the child of a fork nobody sleeps here and nobody holds the lock.
  const ZEBForkHandler forkHandler{this, [](void* handle) {
                                     ZEBForkHandler::renew(static_cast<Handle*>(handle)->mutex);
                                     ZEBForkHandler::renew(static_cast<Handle*>(handle)->woken);
                                   }};
};

ZEBThreadPlace::ZEBThreadPlace() : m_handle(new Handle) {}

void ZEBThreadPlace::lock() { m_handle->mutex.lock(); }

void ZEBThreadPlace::unlock() noexcept { m_handle->mutex.unlock(); }

void ZEBThreadPlace::sleep() {
  std::unique_lock<std::mutex> lock(m_handle->mutex, std::adopt_lock);
  m_handle->woken.wait(lock);
  lock.release();  // it stays taken
}

void ZEBThreadPlace::wakeAll() noexcept { m_handle->woken.notify_all(); }
