#ifndef PLATFORM_ZEBFMCHANNEL_H
#define PLATFORM_ZEBFMCHANNEL_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include "platform/I18NString.h"

/// The operating system's side of ZEBFmFile: one open file or standard stream, without a buffer.
/// Operations that fail return -1 or a number that is not 0, and leave the operating system's code
/// in getLastError(). An object is used by one thread at a time.
class ZEBFmChannel {
 public:
  /// What open() and attachStandard() return: no channel where `error` is not 0.
  struct Opened {
    std::unique_ptr<ZEBFmChannel> channel;
    int error = 0;
  };

  /// Opens the named file for appending, creating it if it is absent; `truncate` empties it. The
  /// file is not inherited by programs that the process starts, and others may rename and remove it
  /// while it is open. A pipe that nobody reads is waited for, or, unless `mayWait`, is an error.
  static Opened open(const I18NString& name, bool truncate, bool mayWait);
  /// Uses a standard stream, numbered as in ZEBFmFile, without owning it.
  static Opened attachStandard(int stream);
  /// How long the end of the process waits for locks. Those of a thread that is stuck in a write,
  /// or that the system has ended by then, are never left; that must not keep the process from
  /// ending.
  static std::chrono::seconds patienceAtEnd() noexcept;
  /// The error of an operation on a file that is not open.
  static int notOpenError() noexcept;

  ZEBFmChannel(std::int64_t handle, bool owned);
  ZEBFmChannel(const ZEBFmChannel&) = delete;
  ZEBFmChannel& operator=(const ZEBFmChannel&) = delete;
  /// Closes what is owned.
  ~ZEBFmChannel();

  /// Finds out what it leads to, because the program may lead a standard stream elsewhere at any
  /// time. Called before each record on one, but for a file, which notices by seek().
  void look() noexcept;
  /// Whether it was opened here, rather than given to the process.
  bool isOwned() const noexcept { return m_owned; }
  /// Whether it has positions and a size, as a terminal or a pipe has not.
  bool isRegular() const noexcept { return m_isRegular; }
  /// Whether every write goes to the end.
  bool appends() const noexcept { return m_appends; }
  /// Whether it does so atomically next to other processes. A standard stream counts as if it did:
  /// it is for the host program to choose what it is.
  bool appendIsAtomic() const noexcept { return m_appendIsAtomic; }

  /// Writes what the system takes in one call, at least one byte; waits for a stream that does not
  /// block. Returns the number of bytes or -1.
  std::int64_t write(const char* bytes, std::size_t size);
  /// Writes over what the file holds at that place, without moving position(). Returns 0 when all
  /// of it was written.
  int overwrite(std::int64_t position, const char* bytes, std::size_t size);
  /// The end of what was written last, or -1.
  std::int64_t position();
  /// Returns 0 on success. `origin` is one of ZEBFmFile.
  int seek(std::int64_t offset, int origin);
  /// The size in bytes, or -1.
  std::int64_t size();

  /// Takes the operating system's lock on the file, which it frees when the process dies; readers
  /// do not notice it. lock returns 0 on success.
  int lock();
  void unlock() noexcept;
  /// In the child of a fork, parts position() and lock() from those of the parent's channel, unless
  /// the system refuses. Does nothing where the system has no forks.
  void partFromParent() noexcept;
  /// Returns 0 on success. The channel is closed in any case.
  int close() noexcept;

  int getLastError() const noexcept { return m_lastError; }

 private:
  static constexpr std::int64_t CLOSED = -1;

  int failed() noexcept;

  std::int64_t m_handle;
  bool m_owned;
  bool m_isRegular = false;
  bool m_appends = false;
  bool m_appendIsAtomic = true;
  bool m_maySignal = false;                              // where the system has signals
  std::pair<std::uint64_t, std::uint64_t> m_file{0, 0};  // its identity, where look() compares it
  int m_lastError = 0;
};

#endif
