#ifndef APPENDERS_LOGWRITERAPPENDER_H
#define APPENDERS_LOGWRITERAPPENDER_H

#include <atomic>
#include <memory>
#include <vector>

#include "appenders/LOGAppenderSkeleton.h"

class LOGQuietWriter;

/// The base of the appenders that produce text through a quiet writer. Once close() was called, or
/// the appender is stale, nothing opens it again but an explicit call that names the destination.
class LOG4ZEB_EXPORT LOGWriterAppender : public LOGAppenderSkeleton {
 public:
  LOGWriterAppender();
  LOGWriterAppender(const LOGWriterAppender& other);
  LOGWriterAppender& operator=(const LOGWriterAppender&) = delete;
  /// Leaves the writer alone: the class that made it frees it.
  ~LOGWriterAppender() override;

  void activateOptions() override {}
  /// Closes the destination; the second call does nothing. Takes the appender's lock.
  void close() override;
  /// Closes and deletes the writer before and takes `writer` into use. The concrete appender owns
  /// it from now on. Takes the appender's lock.
  void setWriter(LOGQuietWriter* writer);
  /// Takes ownership. A handler that is replaced lives on until the appender dies, because writers
  /// may still point at it. Null changes nothing. Takes the appender's lock.
  void setErrorHandler(LOGErrorHandler* eh) override;
  int requiresLayout() override { return 0; }

  /// 1 flushes after every event; 0, the default, leaves it to the destination.
  int getImmediateFlush() const { return immediateFlush; }
  void setImmediateFlush(int flush) { immediateFlush = flush; }
  /// Stored only: no conversion is chosen by it. Neither is for a time in which another thread
  /// calls setEncoding(), which takes no lock.
  const I18NString& getEncoding() const { return encoding; }
  void setEncoding(const I18NString& name) { encoding = name; }

  // All of these run under the appender's lock.
  void append(LOGLoggingEvent* event) override;
  /// Non-zero when an event can be written now.
  virtual int checkEntryConditions() = 0;
  virtual void closeWriter() {}
  virtual void subappend(LOGLoggingEvent* event) = 0;
  virtual void resetWriter() { closeWriter(); }

 protected:
  /// No header or footer of a layout is ever written by this family: both do nothing.
  void writeHeader() {}
  void writeFooter() {}

  /// Whether activateOptions() may open the appender: it was not opened before, nobody has closed
  /// it, and it is not stale.
  bool mayOpenByItself() const { return m_fileOpened != 1 && !m_closeRequested && m_stale != 1; }

  std::atomic<int> immediateFlush{0};
  I18NString encoding;
  LOGQuietWriter* m_qw = nullptr;  // owned by the concrete class; guarded by the appender's lock
  std::atomic<int> m_fileOpened{0};

 private:
  void takeIntoUse(LOGErrorHandler* handler);

  std::vector<std::unique_ptr<LOGErrorHandler>> m_replacedErrorHandlers;
};

#endif
