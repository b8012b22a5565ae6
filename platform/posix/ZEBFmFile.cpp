#include "platform/ZEBFmFile.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <ctime>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

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
  if (fstatfs(descriptor, &status) == 0) {
    for (const long remote : REMOTE_FILE_SYSTEMS) {
      if (static_cast<long>(status.f_type) == remote) {
        return false;
      }
    }
  }
  return true;
}

/// Writes once, again only after an interruption or when a stream that does not block is ready.
ssize_t writeOnce(int descriptor, const char* bytes, std::size_t size) {
  for (;;) {
    const ssize_t written = ::write(descriptor, bytes, size);
    if (written >= 0) {
      return written;
    }
    if (errno == EAGAIN) {
      pollfd waiting{descriptor, POLLOUT, 0};
      poll(&waiting, 1, -1);
    } else if (errno != EINTR) {
      return -1;
    }
  }
}

}  // namespace

class ZEBFmFile::Handle {
 public:
  Handle(int descriptor, bool owned);
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle();

  /// Each returns 0 or the error of the operating system.
  int write(const char* bytes, std::size_t size);
  int flush();
  int close();
  int seek(std::int64_t offset, int origin);
  int lock();
  void unlock() noexcept;

  void setBufferSize(std::size_t bytes);
  /// The size with what is buffered, or -1.
  std::int64_t size();
  bool appendIsAtomic() const { return m_appendIsAtomic; }

 private:
  int writeRecord(const char* bytes, std::size_t size, std::size_t& written);
  int writeRest(const char* bytes, std::size_t size, std::size_t& written);
  int writeBuffer();
  /// A part of a record that is in the file already.
  struct Piece {
    off_t begin;
    std::size_t size;
  };
  Piece endingHere(std::size_t size) const;
  bool blankOut(const std::vector<Piece>& pieces) const;

  int m_descriptor;
  bool m_owned;
  bool m_isRegular = false;
  bool m_appends = false;
  bool m_maySignal = false;
  bool m_appendIsAtomic = true;
  int m_lockDepth = 0;
  std::size_t m_capacity = 0;
  std::mutex m_bufferLock;
  std::string m_buffer;  // guarded by m_bufferLock
};

namespace {

/// The files that hold bytes back, so that the normal end of the process can write them out. Never
/// destroyed: files are still used by what ends after it.
class BufferedFiles {
 public:
  template <typename Handle>
  void add(Handle* handle) {
    const std::lock_guard<std::mutex> guard(m_lock);
    m_files.insert({handle, [](void* file) { static_cast<Handle*>(file)->flush(); }});
  }
  void remove(void* handle) {
    const std::lock_guard<std::mutex> guard(m_lock);
    const auto first = m_files.lower_bound({handle, nullptr});
    if (first != m_files.end() && first->first == handle) {
      m_files.erase(first);
    }
  }
  void endBuffering() {
    m_ended.store(true);
    const std::lock_guard<std::mutex> guard(m_lock);
    for (const auto& [file, flush] : m_files) {
      flush(file);
    }
  }
  bool hasEnded() const { return m_ended.load(std::memory_order_relaxed); }

  static BufferedFiles& instance() {
    static BufferedFiles* const files = new BufferedFiles;
    return *files;
  }

 private:
  std::mutex m_lock;
  std::set<std::pair<void*, void (*)(void*)>> m_files;
  std::atomic<bool> m_ended{false};
};

/// Made when the library is loaded and so destroyed after what the program made.
struct EndOfProcess {
  ~EndOfProcess() { BufferedFiles::instance().endBuffering(); }
};
const EndOfProcess END_OF_PROCESS;

}  // namespace

ZEBFmFile::Handle::Handle(int descriptor, bool owned) : m_descriptor(descriptor), m_owned(owned) {
  struct stat status {};
  if (fstat(descriptor, &status) == 0) {
    m_isRegular = S_ISREG(status.st_mode);
    m_maySignal = maySignal(status);
  }
  m_appends = (fcntl(descriptor, F_GETFL) & O_APPEND) != 0;
  m_appendIsAtomic = !m_isRegular || appendsAtomically(descriptor);
}

ZEBFmFile::Handle::~Handle() { close(); }

int ZEBFmFile::Handle::write(const char* bytes, std::size_t size) {
  std::size_t written = 0;
  if (m_capacity == 0) {
    return writeRecord(bytes, size, written);
  }
  const std::lock_guard<std::mutex> guard(m_bufferLock);
  if (m_buffer.size() + size > m_capacity || BufferedFiles::instance().hasEnded()) {
    const int error = writeBuffer();
    if (error != 0) {
      return error;
    }
    if (size > m_capacity || BufferedFiles::instance().hasEnded()) {
      return writeRecord(bytes, size, written);
    }
  }
  m_buffer.append(bytes, size);
  return 0;
}

int ZEBFmFile::Handle::writeBuffer() {
  if (m_buffer.empty()) {
    return 0;
  }
  std::size_t written = 0;
  const bool locked = !m_appendIsAtomic && lock() == 0;
  const int error = writeRecord(m_buffer.data(), m_buffer.size(), written);
  if (locked) {
    unlock();
  }
  m_buffer.erase(0, written);
  return error;
}

int ZEBFmFile::Handle::writeRecord(const char* bytes, std::size_t size, std::size_t& written) {
  std::optional<SignalShield> shield;
  if (m_maySignal) {
    shield.emplace();
  }
  if (!m_isRegular) {
    return writeRest(bytes, size, written);
  }
  const ssize_t once = writeOnce(m_descriptor, bytes, size);
  if (once < 0) {
    return errno;
  }
  written = static_cast<std::size_t>(once);
  if (written == size) {
    return 0;
  }
  // The disk is full, or the file has reached a limit. Other processes take the lock only when they
  // get here themselves, so it keeps second halves apart, not whole records.
  const bool locked = lock() == 0;
  std::vector<Piece> pieces = {endingHere(written)};
  int error = 0;
  while (error == 0 && written < size) {
    const ssize_t more = writeOnce(m_descriptor, bytes + written, size - written);
    if (more < 0) {
      error = errno;
    } else {
      written += static_cast<std::size_t>(more);
      pieces.push_back(endingHere(static_cast<std::size_t>(more)));
    }
  }
  if (error != 0 && blankOut(pieces)) {
    written = 0;
  }
  if (locked) {
    unlock();
  }
  return error;
}

ZEBFmFile::Handle::Piece ZEBFmFile::Handle::endingHere(std::size_t size) const {
  return {lseek(m_descriptor, 0, SEEK_CUR) - static_cast<off_t>(size), size};
}

bool ZEBFmFile::Handle::blankOut(const std::vector<Piece>& pieces) const {
  // Half a record is worse than none. It cannot be cut off, because another process may have
  // appended meanwhile, so a blank line takes its place. A stream of the host program's is left
  // alone: it may not be appending.
  const std::string self = "/proc/self/fd/" + std::to_string(m_descriptor);
  const int descriptor = m_owned ? ::open(self.c_str(), O_WRONLY | O_CLOEXEC) : -1;
  bool blanked = descriptor >= 0;
  for (const Piece& piece : pieces) {
    std::string blanks(piece.size, ' ');
    blanks.replace(piece.size - std::min<std::size_t>(piece.size, 2), 2,
                   piece.size == 1 ? "\n" : "\r\n");
    blanked = blanked && pwrite(descriptor, blanks.data(), blanks.size(), piece.begin) ==
                             static_cast<ssize_t>(blanks.size());
  }
  if (descriptor >= 0) {
    ::close(descriptor);
  }
  return blanked;
}

int ZEBFmFile::Handle::writeRest(const char* bytes, std::size_t size, std::size_t& written) {
  while (written < size) {
    const ssize_t more = writeOnce(m_descriptor, bytes + written, size - written);
    if (more < 0) {
      return errno;
    }
    written += static_cast<std::size_t>(more);
  }
  return 0;
}

int ZEBFmFile::Handle::flush() {
  const std::lock_guard<std::mutex> guard(m_bufferLock);
  return writeBuffer();
}

int ZEBFmFile::Handle::close() {
  if (m_descriptor < 0) {
    return EBADF;
  }
  const int error = flush();
  setBufferSize(0);
  const int descriptor = std::exchange(m_descriptor, -1);
  if (m_owned && ::close(descriptor) != 0 && errno != EINTR) {
    return errno;
  }
  return error;
}

int ZEBFmFile::Handle::seek(std::int64_t offset, int origin) {
  if (!m_isRegular || (m_appends && origin == ORIGIN_END && offset == 0)) {
    return 0;
  }
  flush();
  const int whence = origin == ORIGIN_END ? SEEK_END : SEEK_SET;
  return lseek(m_descriptor, offset, whence) < 0 ? errno : 0;
}

int ZEBFmFile::Handle::lock() {
  if (m_lockDepth == 0) {
    while (flock(m_descriptor, LOCK_EX) != 0) {
      if (errno != EINTR) {
        return errno;
      }
    }
  }
  ++m_lockDepth;
  return 0;
}

void ZEBFmFile::Handle::unlock() noexcept {
  if (m_lockDepth > 0 && --m_lockDepth == 0) {
    flock(m_descriptor, LOCK_UN);
  }
}

void ZEBFmFile::Handle::setBufferSize(std::size_t bytes) {
  if (bytes == 0) {
    flush();
  }
  if ((bytes != 0) != (m_capacity != 0)) {
    if (bytes != 0) {
      BufferedFiles::instance().add(this);
    } else {
      BufferedFiles::instance().remove(this);
    }
  }
  const std::lock_guard<std::mutex> guard(m_bufferLock);
  m_capacity = bytes;
}

std::int64_t ZEBFmFile::Handle::size() {
  struct stat status {};
  if (fstat(m_descriptor, &status) != 0) {
    return -1;
  }
  const std::lock_guard<std::mutex> guard(m_bufferLock);
  return status.st_size + static_cast<std::int64_t>(m_buffer.size());
}

ZEBFmFile::ZEBFmFile() = default;

ZEBFmFile::~ZEBFmFile() = default;

int ZEBFmFile::succeeded(int error) noexcept {
  if (error != 0) {
    m_lastError = error;
  }
  return error == 0 ? 1 : 0;
}

int ZEBFmFile::open(const I18NString& name, int mode) {
  close();
  m_name = name;
  const int truncating = mode == TRUNCATE ? O_TRUNC : 0;
  const std::string path = name.toStdString();
  constexpr mode_t PERMISSIONS = 0666;
  int descriptor = -1;
  do {
    descriptor =
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | truncating, PERMISSIONS);
  } while (descriptor < 0 && errno == EINTR);
  if (descriptor < 0) {
    return succeeded(errno);
  }
  if (descriptor <= STDERR_FILENO) {
    // The program runs without some standard stream; its output must not end up in this file.
    const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int error = errno;
    ::close(descriptor);
    if (moved < 0) {
      return succeeded(error);
    }
    descriptor = moved;
  }
  m_handle = std::make_unique<Handle>(descriptor, true);
  m_appendIsAtomic = m_handle->appendIsAtomic();
  return 1;
}

int ZEBFmFile::attachStandard(int stream) {
  close();
  m_name = stream == STANDARD_ERROR ? "standard error" : "standard output";
  if (fcntl(stream, F_GETFD) < 0) {
    return succeeded(errno);
  }
  m_handle = std::make_unique<Handle>(stream, false);
  m_appendIsAtomic = true;
  return 1;
}

int ZEBFmFile::isOpen() const noexcept { return m_handle != nullptr ? 1 : 0; }

void ZEBFmFile::setBufferSize(std::size_t bytes) {
  if (m_handle != nullptr) {
    m_handle->setBufferSize(bytes);
  }
}

std::int64_t ZEBFmFile::write(const char* bytes, std::size_t size) {
  const int error = m_handle == nullptr ? EBADF : m_handle->write(bytes, size);
  return succeeded(error) != 0 ? static_cast<std::int64_t>(size) : -1;
}

int ZEBFmFile::seek(std::int64_t offset, int origin) {
  return succeeded(m_handle == nullptr ? EBADF : m_handle->seek(offset, origin)) != 0 ? 0 : -1;
}

int ZEBFmFile::flush() { return succeeded(m_handle == nullptr ? EBADF : m_handle->flush()); }

int ZEBFmFile::close() {
  const std::unique_ptr<Handle> closing = std::move(m_handle);
  return closing == nullptr ? 0 : succeeded(closing->close());
}

std::int64_t ZEBFmFile::size() { return m_handle == nullptr ? -1 : m_handle->size(); }

int ZEBFmFile::lockAcrossProcesses() {
  return succeeded(m_handle == nullptr ? EBADF : m_handle->lock());
}

void ZEBFmFile::unlockAcrossProcesses() noexcept {
  if (m_handle != nullptr) {
    m_handle->unlock();
  }
}
