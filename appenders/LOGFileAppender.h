#ifndef APPENDERS_LOGFILEAPPENDER_H
#define APPENDERS_LOGFILEAPPENDER_H

#include <atomic>
#include <cstdint>
#include <optional>
#include <utility>

#include "appenders/LOGWriterAppender.h"
#include "platform/ZEBFmFile.h"
#include "platform/ZEBOwnedPointer.h"

/// Appends formatted events to a file, which other threads and processes may share: each event is
/// one record, whole in the file, and with the operating system when the log call returns. With
/// buffered output the last records wait in memory instead, and survive only a normal end of the
/// process.
///
/// A file that cannot be opened is tried again with every event, which is lost each time. A name
/// without directory is taken from the working directory of the moment of opening.
class LOG4ZEB_EXPORT LOGFileAppender : public LOGWriterAppender {
 public:
  static constexpr int DEFAULT_BUFFER_SIZE = 8192;

  /// Closed, until a name was set and options are activated.
  LOGFileAppender();
  /// Opens the file at once. The layout is not owned.
  LOGFileAppender(LOGLayout* layout, const I18NString& name, int append, int bufferedSwitch,
                  int size);
  LOGFileAppender(LOGLayout* layout, const I18NString& name, int append);
  LOGFileAppender(LOGLayout* layout, const I18NString& name);
  /// Copies the options; the copy is closed and has no file.
  LOGFileAppender(const LOGFileAppender& other);
  LOGFileAppender& operator=(const LOGFileAppender&) = delete;
  /// Closes the file.
  ~LOGFileAppender() override;

  /// Opens the file unless it is open, no name is set, or the appender was closed for good. Takes
  /// the appender's lock.
  void activateOptions() override;

  /// Stores the name; the file is opened later. Takes the appender's lock.
  void setFile(const I18NString& name);
  /// Opens the file, truncated unless `append` is 1, in buffered mode when `bufferedIO` is 1. On an
  /// open appender it does nothing. What goes wrong is reported; a missing directory only as a
  /// debug note. Takes the appender's lock.
  virtual void setFile(const I18NString& name, int append, int bufferedSwitch, int size);

  /// The name as given, resolved by the host's configuration; empty after closing. Only for the
  /// time in which no other thread logs, opens or closes: these change the text that it refers to.
  const I18NString& getFile() const { return fileName; }
  /// The same at any time. Takes the appender's lock.
  I18NString getFileCopy() const;

  // The setters of options may be called while events are logged; each takes the appender's lock.

  /// 1 when the file was last opened for appending, or will be.
  int getAppend() const { return fileAppend; }
  void setAppend(int append);
  int getBufferedIO() const { return bufferedIO; }
  /// 1 also switches flushing after every event off. Takes effect when the file is opened.
  void setBufferedIO(int value);
  /// Bytes. Takes effect when the file is opened.
  int getBufferSize() const { return bufferSize; }
  void setBufferSize(int size);

  /// Has the operating system get what a dispatcher has held back. Takes the appender's lock.
  void handOver();

  // All of these run under the appender's lock.
  int checkEntryConditions() override;
  void subappend(LOGLoggingEvent* event) override;
  void resetWriter() override;
  /// Puts a writer for m_file in place of the one there.
  virtual void setQWForFiles();
  /// Opens the file; acts only while the appender is closed.
  virtual void setFileOptions(const I18NString& name, int append, int bufferedSwitch, int size);

 protected:
  /// Closes the file and marks the appender closed; name and writer stay.
  void closeFile();

  /// Marks the time in which an appender is closed only to be opened. Used under its lock.
  class Reopening {
   public:
    explicit Reopening(LOGFileAppender& appender)
        : m_count(appender.m_reopenings), m_isOutermost(!appender.isReopening()) {
      if (m_isOutermost) {
        appender.m_reopener = &ZEBForkGate::self();
        m_count += m_count % 2 == 0 ? 1 : 2;
      }
    }
    Reopening(const Reopening&) = delete;
    Reopening& operator=(const Reopening&) = delete;
    ~Reopening() { m_count += m_isOutermost ? 1 : 0; }

   private:
    std::atomic<std::uint64_t>& m_count;
    const bool m_isOutermost;
  };
  /// Whether the holder of the lock is in such a time.
  bool isReopening() const { return LOGAppenderSkeleton::isReopening(m_reopenings); }

  enum class OpenResult { Opened, NoDirectory, NotOpened };
  /// The steps of setFileOptions() for an appender of the named class, once the name is resolved.
  /// When it throws, the appender is closed and left to the next event.
  OpenResult open(const char* className, I18NString path, int append, int bufferedSwitch, int size);
  /// Has the next event try to open that file, unless the appender is open.
  void leaveToNextEvent(const I18NString& name);
  /// The path that the name stands for. The name of the file that was opened is one already. When
  /// it throws, an appender that is closed is left to the next event. Runs code of the program.
  I18NString resolved(const I18NString& name);
  /// Resolves fileName, so that the next resolved() of it runs no code of the program: for callers
  /// that open the file under a lock where that is forbidden.
  void resolveAhead();
  /// The file that opening that path would open, from the root.
  I18NString absoluteNameOf(const I18NString& path) const;
  /// Has m_absoluteName be that of the name, as long as it is not changed.
  void remember(const I18NString& name);
  bool isRemembered(const I18NString& name) const;
  /// Replaces the writer and deletes the one before.
  void replaceWriter(LOGQuietWriter* writer);
  /// setFile() with four arguments; `texts` are what is reported of setFileOptions().
  void openReporting(const struct LOGFailureTexts& texts, const I18NString& name, int append,
                     int bufferedSwitch, int size);

  // All guarded by the appender's lock once the appender is in use; atomics are read without it.
  std::atomic<int> fileAppend{1};
  int m_configuredAppend = 1;  // how a file is opened by an event; a rollover changes fileAppend
  I18NString fileName;
  std::atomic<int> bufferedIO{0};
  std::atomic<int> bufferSize{DEFAULT_BUFFER_SIZE};
  ZEBOwnedPointer<ZEBFmFile> m_file;
  /// The file's name from the root, kept from the first opening to close(), so that the program may
  /// change its working directory meanwhile.
  I18NString m_absoluteName;

 private:
  void writeText(LOGLoggingEvent* event, I18NString& text);
  OpenResult openRemembered(const I18NString& path, int append, int bufferedSwitch, int size);

  // Room for the text of an event, used again and again; guarded by the appender's lock.
  I18NString m_text;
  bool m_isTextUsed = false;
  I18NString m_absoluteNameSource;  // the name that m_absoluteName was made from
  I18NString m_unresolvedName;      // what fileName was resolved from; empty while it was not
  std::optional<std::pair<I18NString, I18NString>> m_ahead;  // a name and its path, resolved ahead
};

#endif
