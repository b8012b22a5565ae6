#ifndef PLATFORM_ZEBFILELOCKRW_H
#define PLATFORM_ZEBFILELOCKRW_H

#include "platform/ZEBThreadCriticalSection.h"
#include "platform/ZEBThreadRWLockableResource.h"

class ZEBFmFile;

/// A lock that is bound to a file: the thread that holds it appends to the file, and others wait.
/// Processes need none: whole records are appended next to theirs, see ZEBFmRecordWriter.
class LOG4ZEB_EXPORT ZEBFileLockRW : public ZEBThreadRWLockableResource {
 public:
  ZEBFileLockRW();
  ~ZEBFileLockRW() override;

  /// Binds the lock to `file`, whose lock it then is; `file` is not owned and must outlive the
  /// binding; null unbinds. REQUIRES: nobody holds the lock.
  void setFile(ZEBFmFile* file) noexcept { m_boundFile = file; }

  void lockForWriting() override;
  void unlockAfterWriting() noexcept override;

 private:
  ZEBThreadCriticalSection& section() noexcept;

  ZEBThreadCriticalSection m_unbound;
  ZEBFmFile* m_boundFile = nullptr;
};

#endif
