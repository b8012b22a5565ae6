#ifndef PLATFORM_ZEBFILELOCKRW_H
#define PLATFORM_ZEBFILELOCKRW_H

#include <atomic>
#include <cstdint>
#include <shared_mutex>

#include "platform/ZEBThreadRWLockableResource.h"

class ZEBFmFile;

/// A reader-writer lock that is bound to a file: a writer who holds it appends whole records, next
/// to other threads and other processes. Where one write to the file appends atomically, which is
/// so on local file systems, that needs no lock between processes and none is taken; elsewhere the
/// writer also holds the file's lock of the operating system.
class LOG4ZEB_EXPORT ZEBFileLockRW : public ZEBThreadRWLockableResource {
 public:
  ZEBFileLockRW() = default;
  ~ZEBFileLockRW() override;

  /// Binds the lock to `file`, which is not owned and must outlive the binding; null unbinds.
  /// REQUIRES: nobody holds the lock.
  void setFile(ZEBFmFile* file) noexcept { m_boundFile = file; }

  /// Both throw ZEBSystemError when the calling thread holds the lock for writing already.
  void lockForWriting() override;
  void lockForReading() override;
  void unlockAfterWriting() noexcept override;
  void unlockAfterReading() noexcept override;

 private:
  static constexpr std::uint64_t NOBODY = 0;

  void refuseTheWriter() const;

  std::shared_mutex m_threads;
  // The number of the thread that writes, which a thread sees as its own only when it is.
  std::atomic<std::uint64_t> m_writer{NOBODY};
  ZEBFmFile* m_boundFile = nullptr;
  bool m_fileLocked = false;  // guarded by m_threads
};

#endif
