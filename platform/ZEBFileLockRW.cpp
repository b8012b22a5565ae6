#include "platform/ZEBFileLockRW.h"

#include <system_error>

#include "platform/ZEBFmFile.h"
#include "platform/ZEBSystemError.h"

namespace {

/// Runs `lock`, which throws what the standard library throws when the operating system refuses.
template <typename Lock>
void lockThreads(const char* source, Lock lock) {
  try {
    lock();
  } catch (const std::system_error& refused) {
    throw ZEBSystemError("file lock", refused.code().value(), source, __LINE__);
  }
}

}  // namespace

ZEBFileLockRW::~ZEBFileLockRW() = default;

void ZEBFileLockRW::lockForWriting() {
  lockThreads("ZEBFileLockRW::lockForWriting", [this] { m_threads.lock(); });
  if (m_boundFile == nullptr || m_boundFile->appendIsAtomic()) {
    return;
  }
  // A file system without locks still takes the record.
  m_fileLocked = m_boundFile->lockAcrossProcesses() != 0;
}

void ZEBFileLockRW::lockForReading() {
  lockThreads("ZEBFileLockRW::lockForReading", [this] { m_threads.lock_shared(); });
}

void ZEBFileLockRW::unlockAfterWriting() noexcept {
  if (m_fileLocked) {
    m_boundFile->unlockAcrossProcesses();
    m_fileLocked = false;
  }
  m_threads.unlock();
}

void ZEBFileLockRW::unlockAfterReading() noexcept { m_threads.unlock_shared(); }
