#ifndef PLATFORM_ZEBFMFILE_H
#define PLATFORM_ZEBFMFILE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/I18NString.h"

/// A file that is written record by record. Every write goes to the end of a file that was opened
/// here, whichever the mode, and unless buffering was asked for the whole record is with the
/// operating system when write() returns: it survives the death of the process, and records of
/// several processes stand in the file whole. The file is not inherited by programs that the
/// process starts, and may be renamed and removed while it is open.
///
/// An object is used by one thread at a time; the exception is what waits in memory, which the end
/// of the process or of a Batch may write out while another thread still logs.
class LOG4ZEB_EXPORT ZEBFmFile {
 public:
  /// Open modes. APPEND creates the file or keeps what it holds, TRUNCATE creates or empties it;
  /// WRITE creates it and never empties it.
  static constexpr int WRITE = 1;
  static constexpr int APPEND = 3;
  static constexpr int TRUNCATE = 5;

  static constexpr int STANDARD_OUTPUT = 1;
  static constexpr int STANDARD_ERROR = 2;

  static constexpr int ORIGIN_BEGIN = 0;
  static constexpr int ORIGIN_END = 2;

  ZEBFmFile();
  ZEBFmFile(const ZEBFmFile&) = delete;
  ZEBFmFile& operator=(const ZEBFmFile&) = delete;
  /// Closes the file.
  ~ZEBFmFile();

  /// Opens the named file; a file that was open is closed first. Returns 1, or 0 with the reason in
  /// getLastError(). A pipe that nobody reads is waited for, or, unless `mayWait`, is an error.
  int open(const I18NString& name, int mode, bool mayWait = true);
  /// Attaches to standard output or standard error, which closing this object leaves open. Returns
  /// 1, or 0 when that stream is not open in the process.
  int attachStandard(int stream);
  int isOpen() const noexcept;

  /// Lets up to `bytes` bytes wait in memory; they are cut only between records, and written by
  /// flush(), close() and the normal end of the process. 0, the state after open(), means none.
  void setBufferSize(std::size_t bytes);

  /// While one lives, what its thread writes to files without a buffer may wait in memory, so that
  /// many records go to the operating system in one call. It never waits for long enough to change
  /// places with what other threads write to the same object. Lives on the stack, one in a thread.
  class LOG4ZEB_EXPORT Batch;

  /// Appends `size` bytes as one record. Returns `size`, or -1 when not all could be written.
  std::int64_t write(const char* bytes, std::size_t size);
  /// Moves to `offset` bytes from the origin. Returns 0, also on a terminal or pipe, which have no
  /// positions, or -1. Seeking to the end costs nothing, because every write goes there anyway.
  int seek(std::int64_t offset, int origin);
  /// Hands what is buffered to the operating system. Returns 1, or 0 when that failed.
  int flush();
  /// Writes out what is buffered and closes. Returns 1, or 0 when that failed or nothing was open.
  int close();

  /// The size in bytes, or -1.
  std::int64_t size();
  /// The name given to open(), or the name of the standard stream.
  const I18NString& getName() const noexcept { return m_name; }
  /// The operating system's code of the last failure, 0 at first.
  int getLastError() const noexcept { return m_lastError; }

  /// Lets records of this file wait for the end of a Batch. The text, a literal, is what the Batch
  /// says of each that it could not hand over.
  void setLateFailureText(const char* text) noexcept { m_lateFailureText = text; }
  /// Writes what a Batch holds back of this file.
  void handOver();
  /// The bytes of records that could not be handed over, since the last call.
  std::size_t takeLostBytes() noexcept;

  /// Whether one write to this file appends atomically next to other processes.
  bool appendIsAtomic() const noexcept { return m_appendIsAtomic; }
  /// Takes and leaves the operating system's lock on the file, which it frees when the process dies
  /// and which readers do not notice. lock returns 1, or 0 when the file has no such lock.
  int lockAcrossProcesses();
  void unlockAcrossProcesses() noexcept;

 private:
  class Handle;  // the operating system's side

  int succeeded(int error) noexcept;

  std::shared_ptr<Handle> m_handle;  // with a Batch
  I18NString m_name;
  const char* m_lateFailureText = nullptr;
  int m_lastError = 0;
  bool m_appendIsAtomic = true;
  bool m_endsInHalf = false;  // the file that was closed last
};

class ZEBFmFile::Batch {
 public:
  /// Records of one file that could not be written.
  struct Failure {
    I18NString fileName;
    int error;
    const char* text;
    int records;
  };

  Batch() noexcept;
  Batch(const Batch&) = delete;
  Batch& operator=(const Batch&) = delete;
  /// Hands over; what fails then is lost without a word.
  ~Batch();

  /// While one lives, its thread writes without the batch.
  class LOG4ZEB_EXPORT Pause {
   public:
    Pause() noexcept;
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;
    ~Pause();

   private:
    Batch* m_paused;
  };

  /// Hands what waits to the operating system. A record that cannot be written is one that would
  /// have failed alone.
  std::vector<Failure> handOver();

 private:
  friend class ZEBFmFile;
  struct Member {
    std::shared_ptr<Handle> handle;
    I18NString fileName;
    const char* text;
  };

  void add(const ZEBFmFile& file);

  std::vector<Member> m_members;
};

#endif
