#include "platform/ZEBFileLockRW.h"

#include <system_error>

#include "platform/ZEBFmFile.h"
#include "platform/ZEBSystemError.h"

ZEBFileLockRW::ZEBFileLockRW() = default;

ZEBFileLockRW::~ZEBFileLockRW() = default;

LOG4ZEB_HOT void ZEBFileLockRW::lockForWriting() {
  if (m_writing.isHeldHere()) {
    throw ZEBSystemError("file lock",
                         std::make_error_code(std::errc::resource_deadlock_would_occur),
                         "ZEBFileLockRW::lockForWriting", __LINE__);
  }
  m_writing.enter();
  // A file system without locks still takes the record.
  m_fileLocked = m_boundFile != nullptr && !m_boundFile->appendIsAtomic() &&
                 m_boundFile->lockAcrossProcesses() != 0;
}

LOG4ZEB_HOT void ZEBFileLockRW::unlockAfterWriting() noexcept {
  if (m_fileLocked) {
    m_boundFile->unlockAcrossProcesses();
  }
  m_writing.leave();
}
