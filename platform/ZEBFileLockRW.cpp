#include "platform/ZEBFileLockRW.h"

#include <system_error>

#include "platform/ZEBFmFile.h"
#include "platform/ZEBSystemError.h"

ZEBFileLockRW::ZEBFileLockRW() = default;

ZEBFileLockRW::~ZEBFileLockRW() = default;

void ZEBFileLockRW::renewInChild() noexcept {
  if (m_entry.isLeftByFork()) {
    m_isWriting = false;
    m_fileLocked = false;
  }
  m_readers = 0;  // threads that there are no more; the one that forked counts no longer either
  ZEBForkHandler::renew(m_readersLock);
  ZEBForkHandler::renew(m_readersLeft);
}

LOG4ZEB_HOT void ZEBFileLockRW::enter(const char* source) {
  m_entry.enter();
  if (m_isWriting) {  // m_entry lets the same thread in again
    m_entry.leave();
    throw ZEBSystemError("file lock",
                         std::make_error_code(std::errc::resource_deadlock_would_occur), source,
                         __LINE__);
  }
}

LOG4ZEB_HOT void ZEBFileLockRW::lockForWriting() {
  enter("ZEBFileLockRW::lockForWriting");
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
  enter("ZEBFileLockRW::lockForReading");
  {
    const std::lock_guard<std::mutex> lock(m_readersLock);
    ++m_readers;
  }
  m_entry.leave();
}

LOG4ZEB_HOT void ZEBFileLockRW::unlockAfterWriting() noexcept {
  if (m_fileLocked) {
    m_boundFile->unlockAcrossProcesses();
    m_fileLocked = false;
  }
  m_isWriting = false;
  m_entry.leave();
}

void ZEBFileLockRW::unlockAfterReading() noexcept {
  const std::lock_guard<std::mutex> lock(m_readersLock);
  m_readers -= m_readers > 0 ? 1 : 0;  // none in the child of a fork within the reading
  m_readersLeft.notify_all();
}
