#ifndef APPENDERS_LOGROLLINGFILEAPPENDER_H
#define APPENDERS_LOGROLLINGFILEAPPENDER_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "appenders/LOGFileAppender.h"

class LOGCountingQuietWriter;
class LOGRolledFile;

/// A file appender whose file does not grow beyond a size: when the bytes in it reach the maximum,
/// the file is renamed to its name with ".1" behind it, older backups move up by one, the oldest is
/// dropped, and a new file is begun. The event that reaches the limit is still in the old file.
///
/// Appenders of one process that share a rolling file go on together in the new one. Processes that
/// share it each roll it over by themselves.
class LOG4ZEB_EXPORT LOGRollingFileAppender : public LOGFileAppender {
 public:
  static constexpr std::uint64_t DEFAULT_MAXIMUM_FILE_SIZE = 10485760;

  LOGRollingFileAppender();
  LOGRollingFileAppender(LOGLayout* layout, const I18NString& name);
  LOGRollingFileAppender(LOGLayout* layout, const I18NString& name, int append);
  LOGRollingFileAppender(const LOGRollingFileAppender& other);
  LOGRollingFileAppender& operator=(const LOGRollingFileAppender&) = delete;
  ~LOGRollingFileAppender() override;

  /// Bytes. A limit of 4 GiB or more is never reached, because bytes are counted modulo 2^32.
  std::uint64_t getMaximumFileSize() const { return maxFileSize; }
  void setMaximumFileSize(std::uint64_t bytes);
  /// Deliberate: does nothing. The size is set as a number.
  void setMaxFileSize(const I18NString&) {}
  /// How many backups are kept; below 1 none is, and a full file is truncated.
  int getMaxBackupIndex() const { return maxBackupIndex; }
  void setMaxBackupIndex(int index);
  /// Whether the configuration may put the process id into the file's name.
  int getAddProcID() const { return addProcID; }
  void setAddProcID(int add) { addProcID = add; }

  using LOGFileAppender::setFile;
  void setFile(const I18NString& name, int append, int bufferedSwitch, int size) override;

  /// Makes the file the first backup and begins a new one. No failure on the way stops it. Called
  /// under the appender's lock. Throws ZEBAssertError while the appender was never open.
  void rollOver();

  void subappend(LOGLoggingEvent* event) override;
  void setQWForFiles() override;
  void setFileOptions(const I18NString& name, int append, int bufferedSwitch, int size) override;

 protected:
  std::atomic<std::uint64_t> maxFileSize{DEFAULT_MAXIMUM_FILE_SIZE};
  std::atomic<int> maxBackupIndex{1};
  std::atomic<int> addProcID{1};

 private:
  /// Whether another appender of this process has, since this one has opened the file.
  bool hasBeenRolledOver() const;
  /// Opens the file that the other one has begun.
  void follow() { reopen(1); }
  /// Opens the file again. Where that fails the next event does, without emptying it.
  void reopen(int append);
  void takeName();
  bool mayRollOver();
  void rollOverUnlessDone();
  I18NString backupName(const I18NString& base, int index) const;
  std::vector<int> candidateBackups() const;
  void countExistingBytes(std::int64_t bytes);
  bool isFull() const;
  void removeOldestBackup() const;
  void shiftBackups() const;
  void renameReporting(int fromIndex, int toIndex) const;
  /// The writer in use, null when the program has set another one.
  LOGCountingQuietWriter* countingWriter() const;

  std::shared_ptr<LOGRolledFile> m_rolledFile;  // null until it is opened
  unsigned int m_rollovers = 0;                 // of that file, when it was opened
  bool m_isBeyondCounting = false;              // the file had 4 GiB or more when it was opened
};

#endif
