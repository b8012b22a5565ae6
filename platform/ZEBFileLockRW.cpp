#include "platform/ZEBFileLockRW.h"

#include <system_error>

#include "platform/ZEBFmFile.h"
#include "platform/ZEBSystemError.h"
#include "platform/ZEBThread.h"

namespace {

/// Runs `lock`, which throws what the standard library throws when the lock is refused.
template <typename Lock>
void lockThreads(const char* source, Lock lock) {
  try {
    lock();
  } catch (const std::system_error& refused) {
    throw ZEBSystemError("file lock", refused.code(), source, __LINE__);
  }
}

}  // namespace

ZEBFileLockRW::~ZEBFileLockRW() = default;

void ZEBFileLockRW::refuseTheWriter() const {
  // Not every system's lock notices that its owner waits for itself.
  if (m_writer.load(std::memory_order_relaxed) == ZEBThread::currentThreadId()) {
    throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
  }
}

void ZEBFileLockRW::lockForWriting() {
  lockThreads("ZEBFileLockRW::lockForWriting", [this] {
    refuseTheWriter();
    m_threads.lock();
  });
  m_writer.store(ZEBThread::currentThreadId(), std::memory_order_relaxed);
  if (m_boundFile == nullptr || m_boundFile->appendIsAtomic()) {
    return;
  }
  // A file system without locks still takes the record.
  m_fileLocked = m_boundFile->lockAcrossProcesses() != 0;
}

void ZEBFileLockRW::lockForReading() {
  lockThreads("ZEBFileLockRW::lockForReading", [this] {
    refuseTheWriter();
    m_threads.lock_shared();
  });
}

void ZEBFileLockRW::unlockAfterWriting() noexcept {
  if (m_fileLocked) {
    m_boundFile->unlockAcrossProcesses();
    m_fileLocked = false;
  }
  m_writer.store(NOBODY, std::memory_order_relaxed);
  m_threads.unlock();
}

void ZEBFileLockRW::unlockAfterReading() noexcept { m_threads.unlock_shared(); }
