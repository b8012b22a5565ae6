#include "platform/ZEBFmFile.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <new>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "platform/ZEBFmChannel.h"
#include "platform/ZEBForkGate.h"
#include "platform/ZEBForkHandler.h"

/// The channel of an open file, with its buffer and with the care for whole records.
class ZEBFmFile::Handle {
 public:
  explicit Handle(std::unique_ptr<ZEBFmChannel> channel) : m_channel(std::move(channel)) {}
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() { close(); }

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
  bool appendIsAtomic() const { return m_channel->appendIsAtomic(); }
  /// Whether records may wait for the end of a batch.
  bool mayHold() const {
    return m_capacity == 0 && m_channel->isOwned() && m_channel->isRegular() &&
           m_channel->appends() && m_channel->appendIsAtomic();
  }
  /// Has the end of the process write out what waits.
  void enterForEndOfProcess();
  /// As write(), for the end of a batch.
  int hold(const char* bytes, std::size_t size);
  /// Writes what was held. Returns how many records could not be written since the last call, and
  /// why the last of them could not.
  std::pair<int, int> handOver();
  void writeWhatIsHeld();
  std::size_t takeLostBytes() noexcept { return m_lostBytes.exchange(0); }
  /// Writes the buffer out unless another thread keeps it locked until the time is over.
  void flushUntil(std::chrono::steady_clock::time_point end);

 private:
  void renewInChild();
  int writeRecord(const char* bytes, std::size_t size, std::size_t& written);
  int writeRest(const char* bytes, std::size_t size, std::size_t& written);
  int completeRecord(const char* bytes, std::size_t size, std::size_t& written);
  int writeBuffer();
  void writeHeld();
  void writeHeldOneByOne(std::size_t done);
  /// A part of a record that is in the file already.
  struct Piece {
    std::int64_t begin;
    std::size_t size;
  };
  Piece endingHere(std::size_t size) const;
  bool blankOut(const std::vector<Piece>& pieces) const;

  const std::unique_ptr<ZEBFmChannel> m_channel;
  bool m_isOpen = true;
  std::mutex m_lockLock;
  int m_lockDepth = 0;  // guarded by m_lockLock
  std::size_t m_capacity = 0;
  bool m_isEntered = false;
  std::mutex m_bufferLock;
  // Guarded by m_bufferLock.
  std::string m_buffer;
  std::string m_held;                     // whole records, for the end of a batch
  std::vector<std::size_t> m_endsOfHeld;  // of each record in m_held
  int m_lostRecords = 0;
  int m_lostError = 0;

  std::atomic<bool> m_isHolding{false};
  std::atomic<std::size_t> m_lostBytes{0};
  const ZEBForkHandler m_forkHandler{
      this, [](void* file) { static_cast<Handle*>(file)->renewInChild(); }};
};

namespace {

using Clock = std::chrono::steady_clock;

/// Waits for the lock until the time is over. Returns whether it was obtained.
bool lockUntil(std::mutex& lock, Clock::time_point end) {
  while (!lock.try_lock()) {
    if (Clock::now() >= end) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

/// The files that hold bytes back, so that the normal end of the process can write them out. Never
/// destroyed: files are still used by what ends after it.
class BufferedFiles {
 public:
  using Flush = void (*)(void* file, Clock::time_point end);

  void add(void* file, Flush flush) {
    const ZEBForkGate::Stay stay;
    const std::lock_guard<std::mutex> guard(m_lock);
    m_files.insert({file, flush});
  }
  void remove(void* file) {
    const ZEBForkGate::Stay stay;
    const std::lock_guard<std::mutex> guard(m_lock);
    const auto first = m_files.lower_bound({file, nullptr});
    if (first != m_files.end() && first->first == file) {
      m_files.erase(first);
    }
  }
  void endBuffering() {
    m_ended.store(true);
    const auto end = Clock::now() + ZEBFmChannel::patienceAtEnd();
    if (lockUntil(m_lock, end)) {
      const std::lock_guard<std::mutex> guard(m_lock, std::adopt_lock);
      for (const auto& [file, flush] : m_files) {
        flush(file, end);
      }
    }
  }
  bool hasEnded() const { return m_ended.load(std::memory_order_relaxed); }

  static BufferedFiles& instance() {
    static BufferedFiles* const files = new BufferedFiles;
    return *files;
  }

 private:
  std::mutex m_lock;
  std::set<std::pair<void*, Flush>> m_files;
  std::atomic<bool> m_ended{false};
};

/// Made when the library is loaded and so destroyed after what the program made.
struct EndOfProcess {
  ~EndOfProcess() { BufferedFiles::instance().endBuffering(); }
};
const EndOfProcess END_OF_PROCESS;

/// How many bytes a batch holds back at most for one file.
constexpr std::size_t MOST_HELD = std::size_t{64} * 1024;

thread_local ZEBFmFile::Batch* t_batch = nullptr;

}  // namespace

/// What waits in memory is the parent's to write.
void ZEBFmFile::Handle::renewInChild() {
  ZEBForkHandler::renew(m_lockLock);
  ZEBForkHandler::renew(m_bufferLock);
  m_lockDepth = 0;
  m_buffer.clear();
  m_held.clear();
  m_endsOfHeld.clear();
  m_lostRecords = 0;
  m_lostBytes = 0;
  m_isHolding = false;
  m_channel->partFromParent();
}

int ZEBFmFile::Handle::write(const char* bytes, std::size_t size) {
  std::size_t written = 0;
  if (m_capacity == 0) {
    if (m_isHolding.load(std::memory_order_acquire)) {
      flush();  // those came first
    }
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
  const int error = writeRecord(m_buffer.data(), m_buffer.size(), written);
  m_buffer.erase(0, written);
  return error;
}

int ZEBFmFile::Handle::hold(const char* bytes, std::size_t size) {
  const std::lock_guard<std::mutex> guard(m_bufferLock);
  if (m_held.size() + size > MOST_HELD) {
    writeHeld();
  }
  if (size > MOST_HELD || BufferedFiles::instance().hasEnded()) {
    writeHeld();
    std::size_t written = 0;
    return writeRecord(bytes, size, written);
  }
  if (m_held.empty()) {
    m_held.reserve(MOST_HELD);
  }
  m_endsOfHeld.push_back(m_held.size() + size);
  m_held.append(bytes, size);
  m_isHolding.store(true, std::memory_order_release);
  return 0;
}

void ZEBFmFile::Handle::writeHeld() {
  if (m_held.empty()) {
    return;
  }
  const std::int64_t once = m_channel->write(m_held.data(), m_held.size());
  if (once < static_cast<std::int64_t>(m_held.size())) {
    writeHeldOneByOne(once < 0 ? 0 : static_cast<std::size_t>(once));
  }
  m_held.clear();
  m_endsOfHeld.clear();
  m_isHolding.store(false, std::memory_order_release);
}

/// Goes on after the first `done` bytes. The records among them stay, and so does each other one
/// that can be written.
void ZEBFmFile::Handle::writeHeldOneByOne(std::size_t done) {
  std::size_t begin = 0;
  for (const std::size_t end : m_endsOfHeld) {
    const char* const record = m_held.data() + begin;
    std::size_t written = std::min(std::max(done, begin) - begin, end - begin);
    int error = 0;
    try {
      if (written == 0) {
        error = writeRecord(record, end - begin, written);
      } else if (written < end - begin) {
        error = completeRecord(record, end - begin, written);
      }
    } catch (const std::bad_alloc&) {
      error = static_cast<int>(std::errc::not_enough_memory);
    }
    if (error != 0) {
      ++m_lostRecords;
      m_lostError = error;
      m_lostBytes += end - begin;
    }
    begin = end;
  }
}

std::pair<int, int> ZEBFmFile::Handle::handOver() {
  const std::lock_guard<std::mutex> guard(m_bufferLock);
  writeHeld();
  return {std::exchange(m_lostRecords, 0), m_lostError};
}

void ZEBFmFile::Handle::writeWhatIsHeld() {
  if (m_isHolding.load(std::memory_order_acquire)) {
    const std::lock_guard<std::mutex> guard(m_bufferLock);
    writeHeld();
  }
}

int ZEBFmFile::Handle::writeRecord(const char* bytes, std::size_t size, std::size_t& written) {
  if (!m_channel->isRegular()) {
    return writeRest(bytes, size, written);
  }
  // A file system without locks still takes the record.
  const bool locked = !m_channel->appendIsAtomic() && lock() == 0;
  int error = 0;
  const std::int64_t once = size == 0 ? 0 : m_channel->write(bytes, size);
  if (once < 0) {
    error = m_channel->getLastError();
  } else {
    written = static_cast<std::size_t>(once);
    if (written < size) {
      error = completeRecord(bytes, size, written);
    }
  }
  if (locked) {
    unlock();
  }
  return error;
}

/// Goes on after the first part of a record: the disk is full, or the file has reached a limit.
int ZEBFmFile::Handle::completeRecord(const char* bytes, std::size_t size, std::size_t& written) {
  // Other processes may take the lock only when they get here themselves, so it keeps second halves
  // apart, not whole records.
  const bool locked = lock() == 0;
  std::vector<Piece> pieces = {endingHere(written)};
  int error = 0;
  while (error == 0 && written < size) {
    const std::int64_t more = m_channel->write(bytes + written, size - written);
    if (more < 0) {
      error = m_channel->getLastError();
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
  return {m_channel->position() - static_cast<std::int64_t>(size), size};
}

bool ZEBFmFile::Handle::blankOut(const std::vector<Piece>& pieces) const {
  // Half a record is worse than none. It cannot be cut off, because another process may have
  // appended meanwhile, so a blank line takes its place. A stream of the host program's is left
  // alone: it may not be appending.
  bool blanked = m_channel->isOwned();
  for (const Piece& piece : pieces) {
    std::string blanks(piece.size, ' ');
    blanks.replace(piece.size - std::min<std::size_t>(piece.size, 2), 2,
                   piece.size == 1 ? "\n" : "\r\n");
    blanked = blanked && m_channel->overwrite(piece.begin, blanks.data(), blanks.size()) == 0;
  }
  return blanked;
}

int ZEBFmFile::Handle::writeRest(const char* bytes, std::size_t size, std::size_t& written) {
  while (written < size) {
    const std::int64_t more = m_channel->write(bytes + written, size - written);
    if (more < 0) {
      return m_channel->getLastError();
    }
    written += static_cast<std::size_t>(more);
  }
  return 0;
}

int ZEBFmFile::Handle::flush() {
  const std::lock_guard<std::mutex> guard(m_bufferLock);
  writeHeld();
  return writeBuffer();
}

void ZEBFmFile::Handle::flushUntil(Clock::time_point end) {
  if (lockUntil(m_bufferLock, end)) {
    const std::lock_guard<std::mutex> guard(m_bufferLock, std::adopt_lock);
    writeHeld();
    writeBuffer();
  }
}

int ZEBFmFile::Handle::close() {
  if (!std::exchange(m_isOpen, false)) {
    return ZEBFmChannel::notOpenError();
  }
  const int error = flush();
  setBufferSize(0);
  if (m_isEntered) {
    BufferedFiles::instance().remove(this);
  }
  return m_channel->close() != 0 ? m_channel->getLastError() : error;
}

int ZEBFmFile::Handle::seek(std::int64_t offset, int origin) {
  if (!m_channel->isRegular() || (m_channel->appends() && origin == ORIGIN_END && offset == 0)) {
    return 0;
  }
  flush();
  return m_channel->seek(offset, origin) != 0 ? m_channel->getLastError() : 0;
}

int ZEBFmFile::Handle::lock() {
  // Only the end of the process ever meets another thread here.
  if (!lockUntil(m_lockLock, Clock::now() + ZEBFmChannel::patienceAtEnd())) {
    return static_cast<int>(std::errc::device_or_resource_busy);
  }
  const std::lock_guard<std::mutex> guard(m_lockLock, std::adopt_lock);
  if (m_lockDepth == 0 && m_channel->lock() != 0) {
    return m_channel->getLastError();
  }
  ++m_lockDepth;
  return 0;
}

void ZEBFmFile::Handle::unlock() noexcept {
  const std::lock_guard<std::mutex> guard(m_lockLock);
  if (m_lockDepth > 0 && --m_lockDepth == 0) {
    m_channel->unlock();
  }
}

void ZEBFmFile::Handle::enterForEndOfProcess() {
  if (!std::exchange(m_isEntered, true)) {
    BufferedFiles::instance().add(this, [](void* file, Clock::time_point end) {
      static_cast<Handle*>(file)->flushUntil(end);
    });
  }
}

void ZEBFmFile::Handle::setBufferSize(std::size_t bytes) {
  if (bytes == 0) {
    flush();
  }
  if (bytes != 0) {
    enterForEndOfProcess();
  }
  const std::lock_guard<std::mutex> guard(m_bufferLock);
  m_capacity = bytes;
}

std::int64_t ZEBFmFile::Handle::size() {
  const std::lock_guard<std::mutex> guard(m_bufferLock);
  const std::int64_t written = m_channel->size();
  if (written < 0) {
    return -1;
  }
  return written + static_cast<std::int64_t>(m_buffer.size() + m_held.size());
}

ZEBFmFile::ZEBFmFile() = default;

ZEBFmFile::~ZEBFmFile() { close(); }

int ZEBFmFile::succeeded(int error) noexcept {
  if (error != 0) {
    m_lastError = error;
  }
  return error == 0 ? 1 : 0;
}

int ZEBFmFile::open(const I18NString& name, int mode) {
  close();
  m_name = name;
  ZEBFmChannel::Opened opened = ZEBFmChannel::open(name, mode == TRUNCATE);
  if (opened.error != 0) {
    return succeeded(opened.error);
  }
  m_handle = std::make_shared<Handle>(std::move(opened.channel));
  m_appendIsAtomic = m_handle->appendIsAtomic();
  return 1;
}

int ZEBFmFile::attachStandard(int stream) {
  close();
  m_name = stream == STANDARD_ERROR ? "standard error" : "standard output";
  ZEBFmChannel::Opened opened = ZEBFmChannel::attachStandard(stream);
  if (opened.error != 0) {
    return succeeded(opened.error);
  }
  m_handle = std::make_shared<Handle>(std::move(opened.channel));
  m_appendIsAtomic = m_handle->appendIsAtomic();
  return 1;
}

int ZEBFmFile::isOpen() const noexcept { return m_handle != nullptr ? 1 : 0; }

void ZEBFmFile::setBufferSize(std::size_t bytes) {
  if (m_handle != nullptr) {
    m_handle->setBufferSize(bytes);
  }
}

std::int64_t ZEBFmFile::write(const char* bytes, std::size_t size) {
  int error = ZEBFmChannel::notOpenError();
  if (m_handle != nullptr && t_batch != nullptr && m_lateFailureText != nullptr &&
      m_handle->mayHold()) {
    t_batch->add(*this);
    error = m_handle->hold(bytes, size);
  } else if (m_handle != nullptr) {
    error = m_handle->write(bytes, size);
  }
  return succeeded(error) != 0 ? static_cast<std::int64_t>(size) : -1;
}

int ZEBFmFile::seek(std::int64_t offset, int origin) {
  const int error =
      m_handle == nullptr ? ZEBFmChannel::notOpenError() : m_handle->seek(offset, origin);
  return succeeded(error) != 0 ? 0 : -1;
}

int ZEBFmFile::flush() {
  return succeeded(m_handle == nullptr ? ZEBFmChannel::notOpenError() : m_handle->flush());
}

int ZEBFmFile::close() {
  const std::shared_ptr<Handle> closing = std::move(m_handle);
  return closing == nullptr ? 0 : succeeded(closing->close());
}

void ZEBFmFile::handOver() {
  if (m_handle != nullptr) {
    m_handle->writeWhatIsHeld();
  }
}

std::size_t ZEBFmFile::takeLostBytes() noexcept {
  return m_handle == nullptr ? 0 : m_handle->takeLostBytes();
}

std::int64_t ZEBFmFile::size() { return m_handle == nullptr ? -1 : m_handle->size(); }

int ZEBFmFile::lockAcrossProcesses() {
  return succeeded(m_handle == nullptr ? ZEBFmChannel::notOpenError() : m_handle->lock());
}

void ZEBFmFile::unlockAcrossProcesses() noexcept {
  if (m_handle != nullptr) {
    m_handle->unlock();
  }
}

ZEBFmFile::Batch::Batch() noexcept { t_batch = this; }

ZEBFmFile::Batch::~Batch() {
  t_batch = nullptr;
  for (const Member& member : m_members) {
    member.handle->handOver();
  }
}

ZEBFmFile::Batch::Pause::Pause() noexcept : m_paused(t_batch) {
  if (m_paused != nullptr) {
    t_batch = nullptr;
  }
}

ZEBFmFile::Batch::Pause::~Pause() {
  if (m_paused != nullptr) {
    t_batch = m_paused;
  }
}

void ZEBFmFile::Batch::add(const ZEBFmFile& file) {
  for (const Member& member : m_members) {
    if (member.handle == file.m_handle) {
      return;
    }
  }
  file.m_handle->enterForEndOfProcess();
  m_members.push_back({file.m_handle, file.m_name, file.m_lateFailureText});
}

std::vector<ZEBFmFile::Batch::Failure> ZEBFmFile::Batch::handOver() {
  std::vector<Failure> failures;
  for (const Member& member : m_members) {
    const auto [records, error] = member.handle->handOver();
    if (records > 0) {
      failures.push_back({member.fileName, error, member.text, records});
    }
  }
  m_members.clear();
  return failures;
}
