#include "platform/ZEBFmBufferedFiles.h"

#include <exception>
#include <memory>
#include <thread>

#include "platform/ZEBFmChannel.h"
#include "platform/ZEBFmFile.h"
#include "platform/ZEBThreadGuard.h"

namespace {

/// Calls `operation` under the lock, unless that cannot be had until `end`.
template <typename Operation>
void underLockUntil(std::chrono::steady_clock::time_point end, ZEBThreadCriticalSection& lock,
                    Operation operation) {
  while (!lock.tryEnter()) {
    if (std::chrono::steady_clock::now() >= end) {
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  const std::unique_ptr<ZEBThreadCriticalSection, void (*)(ZEBThreadCriticalSection*)> held(
      &lock, [](ZEBThreadCriticalSection* section) { section->leave(); });
  operation();
}

}  // namespace

/// Made when the library is loaded and so destroyed after what the program made.
struct ZEBFmBufferedFiles::EndOfProcess {
  ~EndOfProcess() {
    s_hasProcessEnded = true;
    instance().writeAll(ZEBFmChannel::patienceAtEnd());
  }
};
const ZEBFmBufferedFiles::EndOfProcess ZEBFmBufferedFiles::s_endOfProcess;

ZEBFmBufferedFiles& ZEBFmBufferedFiles::instance() {
  static auto* const files = new ZEBFmBufferedFiles;  // static destructors log, too
  return *files;
}

void ZEBFmBufferedFiles::add(ZEBFmFile& file) {
  const ZEBThreadGuard guard(instance().m_lock);
  instance().m_files.insert(&file);
}

void ZEBFmBufferedFiles::remove(ZEBFmFile& file) {
  const ZEBThreadGuard guard(instance().m_lock);
  instance().m_files.erase(&file);
}

void ZEBFmBufferedFiles::writeAll(Clock::duration patience) noexcept {
  try {
    const Clock::time_point end = Clock::now() + patience;
    underLockUntil(end, m_lock, [&] {
      for (ZEBFmFile* const file : m_files) {
        underLockUntil(end, file->getCriticalSection(), [file] { file->flush(); });
      }
    });
  } catch (const std::exception&) {
    // Without memory, what was not written stays where it is.
  }
}
