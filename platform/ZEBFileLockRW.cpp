#include "platform/ZEBFileLockRW.h"

#include <system_error>

#include "platform/ZEBFmFile.h"
#include "platform/ZEBSystemError.h"

ZEBFileLockRW::ZEBFileLockRW() = default;

ZEBFileLockRW::~ZEBFileLockRW() = default;

ZEBThreadCriticalSection& ZEBFileLockRW::section() noexcept {
  return m_boundFile == nullptr ? m_unbound : m_boundFile->getCriticalSection();
}

void ZEBFileLockRW::lockForWriting() {
  if (section().isHeldHere()) {
    throw ZEBSystemError("file lock",
                         std::make_error_code(std::errc::resource_deadlock_would_occur),
                         "ZEBFileLockRW::lockForWriting", __LINE__);
  }
  section().enter();
}

void ZEBFileLockRW::unlockAfterWriting() noexcept { section().leave(); }
