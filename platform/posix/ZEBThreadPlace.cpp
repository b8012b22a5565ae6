#include "platform/ZEBThreadPlace.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <new>

class ZEBThreadPlace::Handle {
 public:
  Handle() : m_next(g_all.load()) {
    while (!g_all.compare_exchange_weak(m_next, this)) {
    }
  }

  std::mutex mutex;
  std::condition_variable woken;

  /// In the child of a fork nobody sleeps and nobody holds a lock, but the copies still count the
  /// parent's threads; what they hold on to is left alone.
  static void renewAll() {
    for (Handle* handle = g_all.load(); handle != nullptr; handle = handle->m_next) {
      new (&handle->mutex) std::mutex;
      new (&handle->woken) std::condition_variable;
    }
  }

 private:
  Handle* m_next;
  static std::atomic<Handle*> g_all;
};

std::atomic<ZEBThreadPlace::Handle*> ZEBThreadPlace::Handle::g_all{nullptr};

ZEBThreadPlace::ZEBThreadPlace() : m_handle(new Handle) {}

void ZEBThreadPlace::renewAfterFork() { Handle::renewAll(); }

void ZEBThreadPlace::lock() { m_handle->mutex.lock(); }

void ZEBThreadPlace::unlock() noexcept { m_handle->mutex.unlock(); }

void ZEBThreadPlace::sleep() {
  std::unique_lock<std::mutex> lock(m_handle->mutex, std::adopt_lock);
  m_handle->woken.wait(lock);
  lock.release();  // it stays taken
}

void ZEBThreadPlace::wakeAll() noexcept { m_handle->woken.notify_all(); }
