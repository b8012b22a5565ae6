#include "platform/ZEBFmChannel.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <limits>
#include <string>
#include <utility>

#include "platform/ZEBFmFile.h"
#include "platform/posix/BeyondStandardStreams.h"
#include "platform/posix/Uninterrupted.h"

namespace {

int descriptorOf(std::int64_t handle) { return static_cast<int>(handle); }

/// Opens the file of a descriptor, whatever its name is by now. Returns a new descriptor or -1.
int openAgain(std::int64_t handle, int flags) {
  char self[sizeof("/proc/self/fd/") + std::numeric_limits<int>::digits10 + 1];
  std::snprintf(self, sizeof(self), "/proc/self/fd/%d", descriptorOf(handle));
  return uninterrupted([&] { return ::open(self, O_WRONLY | O_CLOEXEC | flags); });
}

/// Keeps a signal from ending the process while it writes to a pipe that nobody reads any more, or
/// beyond the size that the process may give a file; the write then fails like any other.
class SignalShield {
 public:
  SignalShield() {
    sigset_t pending;
    sigpending(&pending);
    sigemptyset(&m_caught);
    for (const int signal : {SIGPIPE, SIGXFSZ}) {
      if (sigismember(&pending, signal) == 0) {
        sigaddset(&m_caught, signal);
      }
    }
    pthread_sigmask(SIG_BLOCK, &m_caught, &m_before);
  }
  SignalShield(const SignalShield&) = delete;
  SignalShield& operator=(const SignalShield&) = delete;
  ~SignalShield() {
    const int error = errno;
    const timespec noTime{};
    while (sigtimedwait(&m_caught, nullptr, &noTime) > 0) {
    }
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    errno = error;
  }

 private:
  sigset_t m_caught{};  // those that were not waiting before, which therefore come from the write
  sigset_t m_before{};
};

/// Whether a write to a file with this status may raise a signal.
bool maySignal(const struct stat& status) {
  rlimit limit{};
  return S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode) ||
         (getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY);
}

/// File systems of other machines append at the end that this machine last knew of.
bool appendsAtomically(int descriptor) {
  // NFS, SMB, SMB2, CIFS, 9P, FUSE, Ceph, AFS, Lustre
  constexpr long REMOTE_FILE_SYSTEMS[] = {0x6969,     0x517B,     0xFE534D42,
                                          0xFF534D42, 0x01021997, 0x65735546,
                                          0x00C36400, 0x5346414F, 0x0BD00BD0};
  struct statfs status {};
  if (uninterrupted([&] { return fstatfs(descriptor, &status); }) == 0) {
    for (const long remote : REMOTE_FILE_SYSTEMS) {
      if (static_cast<long>(status.f_type) == remote) {
        return false;
      }
    }
  }
  return true;
}

/// Writes what fits, after an interruption again and into a full pipe when it has room. Returns -1
/// after any other error.
ssize_t writeWhenPossible(int descriptor, const char* bytes, std::size_t size) {
  for (;;) {
    const ssize_t written = ::write(descriptor, bytes, size);
    if (written > 0 || size == 0) {
      return written;
    }
    if (written == 0) {
      errno = ENOSPC;  // a file system that takes nothing would else be asked for ever
      return -1;
    }
    if (errno == EAGAIN) {
      pollfd waiting{descriptor, POLLOUT, 0};
      poll(&waiting, 1, -1);
    } else if (errno != EINTR) {
      return -1;
    }
  }
}

[[gnu::noinline]] ssize_t writeShielded(int descriptor, const char* bytes, std::size_t size) {
  const SignalShield shield;
  return writeWhenPossible(descriptor, bytes, size);
}

}  // namespace

ZEBFmChannel::ZEBFmChannel(std::int64_t handle, bool owned) : m_handle(handle), m_owned(owned) {
  look();
  m_appendIsAtomic = !m_isRegular || !owned || appendsAtomically(descriptorOf(handle));
}

ZEBFmChannel::~ZEBFmChannel() { close(); }

void ZEBFmChannel::look() noexcept {
  const int descriptor = descriptorOf(m_handle);
  struct stat status {};
  const bool isKnown = uninterrupted([&] { return fstat(descriptor, &status); }) == 0;
  const std::pair<std::uint64_t, std::uint64_t> file{status.st_dev, status.st_ino};
  const bool isTheSame = file == std::exchange(m_file, file);
  if (isKnown && isTheSame) {
    return;  // the rest costs as much as a short write
  }
  // A file that was opened here gets the care of a log file also when its type cannot be told.
  m_isRegular = isKnown ? S_ISREG(status.st_mode) : m_owned;
  m_maySignal = !isKnown || maySignal(status);
  m_appends = m_owned || (fcntl(descriptor, F_GETFL) & O_APPEND) != 0;
}

ZEBFmChannel::Opened ZEBFmChannel::open(const I18NString& name, bool truncate, bool mayWait) {
  // Writing waits all the same: see writeWhenPossible().
  const int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | (truncate ? O_TRUNC : 0) |
                    (mayWait ? 0 : O_NONBLOCK);
  const std::string path = name.toStdString();
  constexpr mode_t PERMISSIONS = 0666;
  const int descriptor = beyondStandardStreams(
      uninterrupted([&] { return ::open(path.c_str(), flags, PERMISSIONS); }));
  if (descriptor < 0) {
    return {nullptr, errno};
  }
  try {
    return {std::make_unique<ZEBFmChannel>(descriptor, true), 0};
  } catch (...) {
    ::close(descriptor);  // which nobody has, for want of memory
    throw;
  }
}

ZEBFmChannel::Opened ZEBFmChannel::attachStandard(int stream) {
  if (fcntl(stream, F_GETFD) < 0) {
    return {nullptr, errno};
  }
  return {std::make_unique<ZEBFmChannel>(stream, false), 0};
}

// The other threads still run, and leave what they hold, unless they are stuck in a write.
std::chrono::seconds ZEBFmChannel::patienceAtEnd() noexcept { return std::chrono::seconds(5); }

int ZEBFmChannel::notOpenError() noexcept { return EBADF; }

int ZEBFmChannel::failed() noexcept {
  m_lastError = errno;
  return -1;
}

LOG4ZEB_HOT std::int64_t ZEBFmChannel::write(const char* bytes, std::size_t size) {
  const int descriptor = descriptorOf(m_handle);
  if (m_maySignal) {
    const ssize_t written = writeShielded(descriptor, bytes, size);
    return written >= 0 ? written : failed();
  }
  ssize_t written = ::write(descriptor, bytes, size);
  if (written < 0 ? errno == EINTR || errno == EAGAIN : written == 0) {
    written = writeWhenPossible(descriptor, bytes, size);
  }
  return written >= 0 ? written : failed();
}

int ZEBFmChannel::overwrite(std::int64_t position, const char* bytes, std::size_t size) {
  // Writes through an appending descriptor go to the end, whatever their position.
  const int descriptor = openAgain(m_handle, 0);
  if (descriptor < 0) {
    return failed();
  }
  std::size_t written = 0;
  ssize_t once = 1;
  while (written < size && once > 0) {
    once = uninterrupted([&] {
      return pwrite(descriptor, bytes + written, size - written,
                    position + static_cast<off_t>(written));
    });
    written += once > 0 ? static_cast<std::size_t>(once) : 0;
  }
  const int result = written == size ? 0 : failed();
  ::close(descriptor);
  return result;
}

std::int64_t ZEBFmChannel::position() { return lseek(descriptorOf(m_handle), 0, SEEK_CUR); }

int ZEBFmChannel::seek(std::int64_t offset, int origin) {
  const int whence = origin == ZEBFmFile::ORIGIN_END ? SEEK_END : SEEK_SET;
  return lseek(descriptorOf(m_handle), offset, whence) < 0 ? failed() : 0;
}

std::int64_t ZEBFmChannel::size() {
  struct stat status {};
  const int descriptor = descriptorOf(m_handle);
  return uninterrupted([&] { return fstat(descriptor, &status); }) == 0 ? status.st_size : failed();
}

int ZEBFmChannel::lock() {
  const int descriptor = descriptorOf(m_handle);
  return uninterrupted([&] { return flock(descriptor, LOCK_EX); }) == 0 ? 0 : failed();
}

void ZEBFmChannel::unlock() noexcept { flock(descriptorOf(m_handle), LOCK_UN); }

void ZEBFmChannel::partFromParent() noexcept {
  if (!m_owned || !m_isRegular || m_handle == CLOSED) {
    return;
  }
  const int descriptor = openAgain(m_handle, O_APPEND);
  if (descriptor >= 0) {
    dup3(descriptor, descriptorOf(m_handle), O_CLOEXEC);
    ::close(descriptor);
  }
}

int ZEBFmChannel::close() noexcept {
  const int descriptor = descriptorOf(std::exchange(m_handle, CLOSED));
  if (descriptor != CLOSED && m_owned && ::close(descriptor) != 0 && errno != EINTR) {
    return failed();
  }
  return 0;
}
