#ifndef PLATFORM_ZEBTHREADMUTEX_H
#define PLATFORM_ZEBTHREADMUTEX_H

#include <mutex>

#include "platform/LOG4ZEBExport.h"

/// A lock for one thread at a time, used as std::mutex is. Constant-initialised on every system, so
/// that an object of static storage works from the first static initialiser to the last destructor
/// of the process; std::mutex is not where its threads run on Windows.
class LOG4ZEB_EXPORT ZEBThreadMutex {
 public:
  constexpr ZEBThreadMutex() noexcept = default;
  ZEBThreadMutex(const ZEBThreadMutex&) = delete;
  ZEBThreadMutex& operator=(const ZEBThreadMutex&) = delete;

#if defined(_WIN32)
  void lock();
  void unlock() noexcept;

 private:
  void* m_lock = nullptr;  // the system's slim lock
#else
  /// Throws std::system_error when the operating system refuses.
  void lock() { m_lock.lock(); }
  void unlock() noexcept { m_lock.unlock(); }

 private:
  std::mutex m_lock;
#endif
};

#endif
