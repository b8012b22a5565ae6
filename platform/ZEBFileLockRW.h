#ifndef PLATFORM_ZEBFILELOCKRW_H
#define PLATFORM_ZEBFILELOCKRW_H

#include <condition_variable>
#include <mutex>

#include "platform/ZEBForkHandler.h"
#include "platform/ZEBThreadCriticalSection.h"
#include "platform/ZEBThreadRWLockableResource.h"

class ZEBFmFile;

/// A reader-writer lock that is bound to a file: a writer who holds it appends whole records, next
/// to other threads and other processes. Where one write to the file appends atomically, which is
/// so on local file systems, that needs no lock between processes and none is taken; elsewhere the
/// writer also holds the file's lock of the operating system.
class LOG4ZEB_EXPORT ZEBFileLockRW : public ZEBThreadRWLockableResource {
 public:
  ZEBFileLockRW();
  ~ZEBFileLockRW() override;

  /// Binds the lock to `file`, which is not owned and must outlive the binding; null unbinds.
  /// REQUIRES: nobody holds the lock.
  void setFile(ZEBFmFile* file) noexcept { m_boundFile = file; }

  void lockForWriting() override;
  void lockForReading() override;
  void unlockAfterWriting() noexcept override;
  void unlockAfterReading() noexcept override;

 private:
  void enter(const char* source);
  void renewInChild() noexcept;

  // Held by the writer, and by each reader while it comes in: a writer without readers, which is
  // all that appenders know, needs nothing else.
  ZEBThreadCriticalSection m_entry;
  // Changed under m_readersLock; does not grow while m_entry is held.
  std::atomic<int> m_readers{0};
  std::mutex m_readersLock;
  std::condition_variable m_readersLeft;
  ZEBFmFile* m_boundFile = nullptr;
  bool m_isWriting = false;   // guarded by m_entry
  bool m_fileLocked = false;  // guarded by m_entry
  const ZEBForkHandler m_forkHandler{
      this, [](void* lock) { static_cast<ZEBFileLockRW*>(lock)->renewInChild(); }};
};

#endif
