#ifndef APPENDERS_LOGCONSOLEAPPENDER_H
#define APPENDERS_LOGCONSOLEAPPENDER_H

#include "appenders/LOGWriterAppender.h"
#include "platform/ZEBFmFile.h"
#include "platform/ZEBOwnedPointer.h"

/// Writes formatted events to standard output or standard error, each at once. The program's own
/// use of the streams is not affected, and closing the appender leaves them open. Two console
/// appenders on one stream may mix their lines' order, as any two writers.
class LOG4ZEB_EXPORT LOGConsoleAppender : public LOGWriterAppender {
 public:
  /// For standard output, opened when options are activated.
  LOGConsoleAppender();
  /// The layout is not owned. The appender counts as closed until options are activated.
  explicit LOGConsoleAppender(LOGLayout* layout);
  /// Opens the stream at once.
  LOGConsoleAppender(LOGLayout* layout, const I18NString& name);
  /// Copies layout and target; the copy is closed.
  LOGConsoleAppender(const LOGConsoleAppender& other);
  LOGConsoleAppender& operator=(const LOGConsoleAppender&) = delete;
  ~LOGConsoleAppender() override;

  /// Opens the target unless that was done, or the appender was closed for good. Takes the
  /// appender's lock.
  void activateOptions() override;

  /// "out" or "err", as it was set. Only for the time in which no other thread sets it: that
  /// changes the text that it refers to.
  const I18NString& getTarget() const { return target; }
  /// Opens "out" or "err", whatever the case. Takes the appender's lock.
  /// Deliberate: any other value is reported and leaves the appender without a stream, its target
  /// unchanged, although the report says that "out" is used.
  void setTarget(const I18NString& value);
  /// Reports that a target is not known; the value does not show.
  void targetWarn(const I18NString& value);

  // All of these run under the appender's lock.
  int checkEntryConditions() override;
  void closeWriter() override;
  void subappend(LOGLoggingEvent* event) override;
  /// Puts a writer for m_outFile in place of the one there.
  virtual void setQWForFiles();

 protected:
  I18NString target;                     // guarded by the appender's lock
  ZEBOwnedPointer<ZEBFmFile> m_outFile;  // guarded by the appender's lock

 private:
  void openTarget(const I18NString& value);
};

#endif
