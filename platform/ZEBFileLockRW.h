#ifndef PLATFORM_ZEBFILELOCKRW_H
#define PLATFORM_ZEBFILELOCKRW_H

#include "platform/ZEBThreadCriticalSection.h"
#include "platform/ZEBThreadRWLockableResource.h"

class ZEBFmFile;

/// A lock that is bound to a file: a writer who holds it appends whole records, next to other
/// threads and other processes. Where one write to the file appends atomically, which is so on
/// local file systems, that needs no lock between processes and none is taken; elsewhere the writer
/// also holds the file's lock of the operating system.
class LOG4ZEB_EXPORT ZEBFileLockRW : public ZEBThreadRWLockableResource {
 public:
  ZEBFileLockRW();
  ~ZEBFileLockRW() override;

  /// Binds the lock to `file`, which is not owned and must outlive the binding; null unbinds.
  /// REQUIRES: nobody holds the lock.
  void setFile(ZEBFmFile* file) noexcept { m_boundFile = file; }

  void lockForWriting() override;
  void unlockAfterWriting() noexcept override;

 private:
  ZEBThreadCriticalSection m_writing;
  ZEBFmFile* m_boundFile = nullptr;
  bool m_fileLocked = false;  // guarded by m_writing
};

#endif
