#include "platform/ZEBThreadPlace.h"

#include <condition_variable>
#include <mutex>

class ZEBThreadPlace::Handle {
 public:
  std::mutex mutex;
  std::condition_variable woken;
};

ZEBThreadPlace::ZEBThreadPlace() : m_handle(std::make_unique<Handle>()) {}

ZEBThreadPlace::~ZEBThreadPlace() = default;

void ZEBThreadPlace::lock() { m_handle->mutex.lock(); }

void ZEBThreadPlace::unlock() noexcept { m_handle->mutex.unlock(); }

void ZEBThreadPlace::sleep() {
  std::unique_lock<std::mutex> lock(m_handle->mutex, std::adopt_lock);
  m_handle->woken.wait(lock);
  lock.release();  // it stays taken
}

void ZEBThreadPlace::wakeAll() noexcept { m_handle->woken.notify_all(); }
