#include "platform/ZEBFileLockRW.h"

#include <system_error>

#include "platform/ZEBFmFile.h"
#include "platform/ZEBSystemError.h"
#include "platform/ZEBThreadGuard.h"

ZEBFileLockRW::~ZEBFileLockRW() = default;

void ZEBFileLockRW::lockForWriting() {
  m_entry.enter();
  if (m_isWriting) {  // m_entry lets the same thread in again
    m_entry.leave();
    throw ZEBSystemError("file lock", static_cast<int>(std::errc::resource_deadlock_would_occur),
                         "ZEBFileLockRW::lockForWriting", __LINE__);
  }
  m_isWriting = true;
  if (m_readers.load(std::memory_order_acquire) > 0) {
    std::unique_lock<std::mutex> lock(m_readersLock);
    m_readersLeft.wait(lock, [this] { return m_readers == 0; });
  }
  if (m_boundFile == nullptr || m_boundFile->appendIsAtomic()) {
    return;
  }
  // A file system without locks still takes the record.
  m_fileLocked = m_boundFile->lockAcrossProcesses() != 0;
}

void ZEBFileLockRW::lockForReading() {
  const ZEBThreadGuard guard(m_entry);
  const std::lock_guard<std::mutex> lock(m_readersLock);
  ++m_readers;
}

void ZEBFileLockRW::unlockAfterWriting() noexcept {
  if (m_fileLocked) {
    m_boundFile->unlockAcrossProcesses();
    m_fileLocked = false;
  }
  m_isWriting = false;
  m_entry.leave();
}

void ZEBFileLockRW::unlockAfterReading() noexcept {
  const std::lock_guard<std::mutex> lock(m_readersLock);
  --m_readers;
  m_readersLeft.notify_all();
}
