#ifndef PLATFORM_ZEBFMFILE_H
#define PLATFORM_ZEBFMFILE_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/I18NString.h"
#include "platform/ZEBForkHandler.h"
#include "platform/ZEBThreadCriticalSection.h"

class ZEBFmHold;
class ZEBFmRecordWriter;

/// A file that is written record by record. Every write goes to the end of the file, whichever the
/// mode, and unless buffering was asked for or a ZEBFmHold lets it wait, the whole record is with
/// the operating system when write() returns: it survives the death of the process, and records of
/// several processes stand in the file whole. The file is not inherited by programs that the
/// process starts, and may be renamed and removed while it is open.
///
/// What changes the file takes its lock, so that several threads may write, and the end of the
/// process may write out what waits in memory. The name and the last error are for the thread that
/// uses the object.
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

  /// Records of one file that waited in memory and could not be written.
  struct Losses {
    I18NString fileName;
    int records = 0;
    int error = 0;               // of the last of them
    const char* text = nullptr;  // from setLateFailureText()
  };

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
  int isOpen() const noexcept { return m_writer != nullptr ? 1 : 0; }

  /// Lets up to `bytes` bytes wait in memory; they are cut only between records, and written by
  /// flush(), close() and the normal end of the process. 0, the state after open(), means none.
  void setBufferSize(std::size_t bytes);

  /// Appends `size` bytes as one record. Returns `size`, or -1 when not all could be written.
  std::int64_t write(const char* bytes, std::size_t size);
  /// Moves to `offset` bytes from the origin. Returns 0, also on a terminal or pipe, which have no
  /// positions, or -1. Every write goes to the end, whatever the position.
  int seek(std::int64_t offset, int origin);
  /// Hands what waits in memory to the operating system. Returns 1, or 0 when that failed.
  int flush();
  /// Writes out what waits in memory and closes. Returns 1, or 0 when that failed or nothing was
  /// open.
  int close();

  /// The size in bytes with what waits in memory, or -1.
  std::int64_t size();
  /// The name given to open(), or the name of the standard stream.
  const I18NString& getName() const noexcept { return m_name; }
  /// The operating system's code of the last failure, 0 at first.
  int getLastError() const noexcept { return m_lastError; }
  /// The lock of the file.
  ZEBThreadCriticalSection& getCriticalSection() const noexcept { return m_reference->section; }

  /// The text, a literal, is what a ZEBFmHold says of each record that it could not write.
  void setLateFailureText(const char* text) noexcept { m_lateFailureText = text; }
  /// From the next write on, has records go to the operating system at once again, behind those
  /// that wait.
  void endHold() noexcept { m_isHeld.store(false, std::memory_order_relaxed); }
  /// Writes what a ZEBFmHold lets wait, and ends that.
  Losses handOver();
  /// The bytes of records that waited and could not be written, since the last call.
  std::size_t takeLostBytes();

 private:
  friend class ZEBFmHold;

  /// Leads to the file as long as it exists.
  struct Reference {
    ZEBThreadCriticalSection section;
    ZEBFmFile* file;  // guarded by section
  };

  void beginHold();
  void enterForEndOfProcess();
  void forgetInChild();
  int use(std::unique_ptr<class ZEBFmChannel> channel, int error);
  int succeeded(int error) noexcept;
  std::size_t room() const noexcept;
  int append(const char* bytes, std::size_t size);
  int seekTo(std::int64_t offset, int origin);
  int writeBuffer();
  void writeHeld();

  const std::shared_ptr<Reference> m_reference;
  // Guarded by its section, but for name, error and text.
  std::unique_ptr<ZEBFmRecordWriter> m_writer;  // null while the file is closed
  std::size_t m_capacity = 0;                   // of the buffer that was asked for
  std::string m_buffer;
  std::vector<std::size_t> m_heldEnds;  // of each record in m_buffer, while the buffer is a hold's
  bool m_goesOn = false;                // the buffer, with a record whose beginning is in the file
  bool m_endsInHalf = false;            // the file that was closed last
  bool m_isEntered = false;             // for the end of the process; used by who opens and closes
  std::atomic<bool> m_isHeld{false};
  std::size_t m_lostBytes = 0;
  int m_lostRecords = 0;
  int m_lostError = 0;
  I18NString m_name;
  const char* m_lateFailureText = nullptr;
  std::atomic<int> m_lastError{0};
  const ZEBForkHandler m_forkHandler{
      this, [](void* file) { static_cast<ZEBFmFile*>(file)->forgetInChild(); }};
};

#endif
