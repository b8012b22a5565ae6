#include "platform/ZEBFmFile.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <new>
#include <optional>
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
  /// Whether the file was closed behind a half record that could not even be given a line end.
  bool endsInHalf() const { return m_hasLeft; }
  /// Has the next record begin on a line of its own.
  void beginLine() { putLeft({{-1, 1}}); }
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
  /// Holds the lock, if the file has any.
  class Turn {
   public:
    explicit Turn(Handle& handle) : m_handle(handle), m_isLocked(handle.lock() == 0) {}
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn() {
      if (m_isLocked) {
        m_handle.unlock();
      }
    }

   private:
    Handle& m_handle;
    const bool m_isLocked;
  };

  void renewInChild();
  int writeRecord(const char* bytes, std::size_t size, std::size_t& written);
  int writeRest(const char* bytes, std::size_t size, std::size_t& written);
  int completeRecord(const char* bytes, std::size_t size, std::size_t& written);
  int writeBuffer();
  void writeHeld();
  void writeHeldOneByOne(std::size_t done);
  /// A part of a record that is in the file already; `begin` is negative when it is not known.
  struct Piece {
    std::int64_t begin;
    std::size_t size;
  };
  Piece endingHere(std::size_t size) const;
  static bool isApart(const Piece& piece, const Piece& next);
  static void add(const Piece& next, std::vector<Piece>& pieces);
  std::size_t blankOut(std::vector<Piece>& pieces) const;
  std::size_t leaveBehind(std::vector<Piece> pieces);
  void putLeft(std::vector<Piece> pieces);
  std::vector<Piece> takeLeft();
  int endWhatWasLeft();

  const std::unique_ptr<ZEBFmChannel> m_channel;
  bool m_isOpen = true;
  std::mutex m_lockLock;
  int m_lockDepth = 0;  // guarded by m_lockLock
  std::size_t m_capacity = 0;
  bool m_isEntered = false;
  std::mutex m_bufferLock;
  // Guarded by m_bufferLock.
  std::string m_buffer;
  bool m_bufferGoesOn = false;            // with what m_left stands for
  std::string m_held;                     // whole records, for the end of a batch
  std::vector<std::size_t> m_endsOfHeld;  // of each record in m_held
  int m_lostRecords = 0;
  int m_lostError = 0;

  std::mutex m_leftLock;
  std::vector<Piece> m_left;  // of a lost record, and not blanked out; guarded by m_leftLock

  std::atomic<bool> m_hasLeft{false};
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
    const ZEBForkGate::LockScope scope;
    const std::lock_guard<std::mutex> guard(m_lock);
    m_files.insert({file, flush});
  }
  void remove(void* file) {
    const ZEBForkGate::LockScope scope;
    const std::lock_guard<std::mutex> guard(m_lock);
    const auto first = m_files.lower_bound({file, nullptr});
    if (first != m_files.end() && first->first == file) {
      m_files.erase(first);
    }
  }
  void endBuffering() {
    m_ended.store(true);
    writeAll(Clock::now() + ZEBFmChannel::patienceAtEnd());
  }
  bool hasEnded() const { return m_ended.load(std::memory_order_relaxed); }

  static BufferedFiles& instance() {
    static BufferedFiles* const files = new BufferedFiles;
    return *files;
  }

 private:
  void writeAll(Clock::time_point end) {
    if (lockUntil(m_lock, end)) {
      const std::lock_guard<std::mutex> guard(m_lock, std::adopt_lock);
      for (const auto& [file, flush] : m_files) {
        flush(file, end);
      }
    }
  }
  /// What is in memory is written before a fork: the child forgets it, and a parent that became a
  /// daemon ends at once.
  void writeBeforeFork() noexcept {
    try {
      writeAll(Clock::now() + std::chrono::milliseconds(100));
    } catch (const std::exception&) {
      // What could not be written stays in the parent's memory.
    }
  }

  std::mutex m_lock;
  std::set<std::pair<void*, Flush>> m_files;
  std::atomic<bool> m_ended{false};
  const ZEBForkHandler m_forkHandler{
      this, [](void*) {},
      [](void* files) noexcept { static_cast<BufferedFiles*>(files)->writeBeforeFork(); }};
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
  ZEBForkHandler::renew(m_leftLock);
  m_lockDepth = 0;
  m_buffer.clear();
  m_bufferGoesOn = false;
  m_left.clear();
  m_hasLeft = false;
  m_held.clear();
  m_endsOfHeld.clear();
  m_lostRecords = 0;
  m_lostBytes = 0;
  m_isHolding = false;
  m_channel->partFromParent();
}

LOG4ZEB_HOT int ZEBFmFile::Handle::write(const char* bytes, std::size_t size) {
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
  // What an attempt had to leave in the file is the beginning of what the buffer holds now.
  std::vector<Piece> beginning = m_bufferGoesOn ? takeLeft() : std::vector<Piece>();
  std::size_t written = 0;
  const int error = writeRecord(m_buffer.data(), m_buffer.size(), written);
  m_buffer.erase(0, written);
  m_bufferGoesOn = error != 0 && (written != 0 || !beginning.empty());
  if (error != 0 && !beginning.empty()) {
    for (const Piece& piece : takeLeft()) {
      add(piece, beginning);
    }
    putLeft(std::move(beginning));
  }
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
  const bool mayWrite = !m_hasLeft || endWhatWasLeft() == 0;
  const std::int64_t once = mayWrite ? m_channel->write(m_held.data(), m_held.size()) : -1;
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

LOG4ZEB_HOT int ZEBFmFile::Handle::writeRecord(const char* bytes, std::size_t size,
                                               std::size_t& written) {
  if (!m_channel->isRegular()) {
    return writeRest(bytes, size, written);
  }
  // A file system without locks still takes the record.
  std::optional<Turn> turn;
  if (!m_channel->appendIsAtomic()) {
    turn.emplace(*this);
  }
  int error = m_hasLeft ? endWhatWasLeft() : 0;
  const std::int64_t once = size == 0 || error != 0 ? 0 : m_channel->write(bytes, size);
  if (once < 0) {
    error = m_channel->getLastError();
  } else if (error == 0) {
    written = static_cast<std::size_t>(once);
    if (written < size) {
      error = completeRecord(bytes, size, written);
    }
  }
  return error;
}

/// Goes on after the first part of a record: the disk is full, or the file has reached a limit.
int ZEBFmFile::Handle::completeRecord(const char* bytes, std::size_t size, std::size_t& written) {
  const Turn turn(*this);
  Piece piece = endingHere(written);
  int error = 0;
  while (error == 0 && written < size) {
    const std::int64_t more = m_channel->write(bytes + written, size - written);
    if (more < 0) {
      error = m_channel->getLastError();
      break;
    }
    const Piece next = endingHere(static_cast<std::size_t>(more));
    if (m_channel->isOwned() && isApart(piece, next)) {
      // Other processes take the lock only when they get here themselves: one has appended between
      // the halves, so the record begins anew behind that.
      leaveBehind({piece, next});
      piece = {next.begin + more, 0};
      written = 0;
      error = m_hasLeft ? endWhatWasLeft() : 0;
    } else {
      piece = {written == 0 ? next.begin : piece.begin, piece.size + next.size};
      written += next.size;
    }
  }
  if (error != 0) {
    written = piece.size == 0 ? 0 : leaveBehind({piece});
  }
  return error;
}

ZEBFmFile::Handle::Piece ZEBFmFile::Handle::endingHere(std::size_t size) const {
  const std::int64_t end = m_channel->position();
  return {end < 0 ? -1 : end - static_cast<std::int64_t>(size), size};
}

/// Whether something else stands between the pieces.
bool ZEBFmFile::Handle::isApart(const Piece& piece, const Piece& next) {
  const bool areKnown = piece.begin >= 0 && next.begin >= 0 && piece.size != 0;
  return areKnown && next.begin != piece.begin + static_cast<std::int64_t>(piece.size);
}

/// Adds to the pieces one that was written after them.
void ZEBFmFile::Handle::add(const Piece& next, std::vector<Piece>& pieces) {
  if (pieces.empty() || isApart(pieces.back(), next)) {
    pieces.push_back(next);
  } else {
    pieces.back().size += next.size;
  }
}

/// Blanks the pieces out from the last to the first and takes them out. Returns how many bytes it
/// could not.
std::size_t ZEBFmFile::Handle::blankOut(std::vector<Piece>& pieces) const {
  // Half a record is worse than none. It cannot be cut off, because another process may have
  // appended meanwhile, so a blank line takes its place. A stream of the host program's is left
  // alone: it may not be appending.
  while (!pieces.empty() && m_channel->isOwned()) {
    const Piece& piece = pieces.back();
    std::string blanks(piece.size, ' ');
    blanks.replace(piece.size - std::min<std::size_t>(piece.size, 2), 2,
                   piece.size == 1 ? "\n" : "\r\n");
    if (piece.begin < 0 || m_channel->overwrite(piece.begin, blanks.data(), blanks.size()) != 0) {
      break;
    }
    pieces.pop_back();
  }
  std::size_t left = 0;
  for (const Piece& piece : pieces) {
    left += piece.size;
  }
  return left;
}

/// Blanks the beginning of a lost record out. Returns how many bytes of it have to be left; the
/// next record sees to them.
std::size_t ZEBFmFile::Handle::leaveBehind(std::vector<Piece> pieces) {
  const std::size_t left = blankOut(pieces);
  if (left != 0) {
    putLeft(std::move(pieces));
  }
  return left;
}

void ZEBFmFile::Handle::putLeft(std::vector<Piece> pieces) {
  const std::lock_guard<std::mutex> guard(m_leftLock);
  m_left = std::move(pieces);
  m_hasLeft = true;
}

std::vector<ZEBFmFile::Handle::Piece> ZEBFmFile::Handle::takeLeft() {
  const std::lock_guard<std::mutex> guard(m_leftLock);
  m_hasLeft = false;
  return std::exchange(m_left, {});
}

/// Blanks out what was left of a lost record, or at least ends its line. Returns the error when
/// neither could be done.
int ZEBFmFile::Handle::endWhatWasLeft() {
  std::vector<Piece> pieces = takeLeft();
  std::size_t ended = 0;
  const int error = blankOut(pieces) == 0 ? 0 : writeRest("\r\n", 2, ended);
  if (error != 0) {
    if (ended != 0) {
      add(endingHere(ended), pieces);
    }
    putLeft(std::move(pieces));
  }
  return error;
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
  if (m_hasLeft) {
    endWhatWasLeft();
  }
  if (m_isEntered) {
    BufferedFiles::instance().remove(this);
  }
  return m_channel->close() != 0 ? m_channel->getLastError() : error;
}

LOG4ZEB_HOT int ZEBFmFile::Handle::seek(std::int64_t offset, int origin) {
  const bool mayChange = !m_channel->isOwned();
  if (mayChange && !m_channel->isRegular()) {
    m_channel->look();
  }
  const bool isAtEnd = !mayChange && m_channel->appends() && origin == ORIGIN_END && offset == 0;
  if (!m_channel->isRegular() || isAtEnd) {
    return 0;
  }
  flush();
  if (m_channel->seek(offset, origin) == 0) {
    return 0;
  }
  const int error = m_channel->getLastError();
  if (mayChange) {
    m_channel->look();
  }
  return m_channel->isRegular() ? error : 0;
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

int ZEBFmFile::open(const I18NString& name, int mode, bool mayWait) {
  close();
  const bool goesOn = m_endsInHalf && m_name == name && mode != TRUNCATE;
  m_name = name;
  ZEBFmChannel::Opened opened = ZEBFmChannel::open(name, mode == TRUNCATE, mayWait);
  if (opened.error != 0) {
    return succeeded(opened.error);
  }
  m_handle = std::make_shared<Handle>(std::move(opened.channel));
  m_endsInHalf = false;
  if (goesOn) {
    m_handle->beginLine();
  }
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

LOG4ZEB_HOT std::int64_t ZEBFmFile::write(const char* bytes, std::size_t size) {
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

LOG4ZEB_HOT int ZEBFmFile::seek(std::int64_t offset, int origin) {
  const int error =
      m_handle == nullptr ? ZEBFmChannel::notOpenError() : m_handle->seek(offset, origin);
  return succeeded(error) != 0 ? 0 : -1;
}

int ZEBFmFile::flush() {
  return succeeded(m_handle == nullptr ? ZEBFmChannel::notOpenError() : m_handle->flush());
}

int ZEBFmFile::close() {
  const std::shared_ptr<Handle> closing = std::move(m_handle);
  if (closing == nullptr) {
    return 0;
  }
  const int result = succeeded(closing->close());
  m_endsInHalf = closing->endsInHalf();
  return result;
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
