#ifndef PLATFORM_ZEBFMBUFFEREDFILES_H
#define PLATFORM_ZEBFMBUFFEREDFILES_H

#include <atomic>
#include <chrono>
#include <set>

#include "platform/ZEBForkHandler.h"
#include "platform/ZEBThreadCriticalSection.h"

class ZEBFmFile;

/// The open files that may have records in memory. Writes these out at the normal end of the
/// process, after which files no longer buffer, and before a fork: the child forgets them, and a
/// parent that becomes a daemon ends at once. Waits only for a time for a file that another thread
/// has locked, because that thread may be stuck in a write.
class ZEBFmBufferedFiles {
 public:
  static void add(ZEBFmFile& file);
  /// Returns when the file is no longer used here.
  static void remove(ZEBFmFile& file);
  static bool hasProcessEnded() noexcept {
    return s_hasProcessEnded.load(std::memory_order_relaxed);
  }

  ZEBFmBufferedFiles(const ZEBFmBufferedFiles&) = delete;
  ZEBFmBufferedFiles& operator=(const ZEBFmBufferedFiles&) = delete;

 private:
  struct EndOfProcess;
  using Clock = std::chrono::steady_clock;

  ZEBFmBufferedFiles() = default;
  static ZEBFmBufferedFiles& instance();
  void writeAll(Clock::duration patience) noexcept;

  inline static std::atomic<bool> s_hasProcessEnded{false};
  static const EndOfProcess s_endOfProcess;

  ZEBThreadCriticalSection m_lock;
  std::set<ZEBFmFile*> m_files;  // guarded by m_lock
  const ZEBForkHandler m_forkHandler{
      this, [](void*) {},
      [](void* files) noexcept {
        static_cast<ZEBFmBufferedFiles*>(files)->writeAll(std::chrono::milliseconds(100));
      }};
};

#endif
