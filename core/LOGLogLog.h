#ifndef CORE_LOGLOGLOG_H
#define CORE_LOGLOGLOG_H

#include <atomic>

#include "platform/I18NString.h"
#include "platform/ZEBThrowable.h"

class ZEBFmFile;

/// The library's own diagnostics: notes, warnings and errors about itself, one line each, in a file
/// of their own. They are written only when the settings file "../configuration/logdebug.ini",
/// sought from the working directory at the first message, is there. Its first word, "1" or
/// anything else, says whether debugging is on; its second word names the diagnostic file, by
/// default "log4zeb.log".
///
/// Any thread may call; lines are written whole, one after the other.
class LOG4ZEB_EXPORT LOGLogLog {
 public:
  virtual ~LOGLogLog();

  static void debug(const I18NString& msg);
  static void warn(const I18NString& msg);
  static void error(const I18NString& msg);
  static void error(const char* msg);
  /// These write the message, note in the back trace of `t` that they did, and throw `t` again:
  /// they never return. They serve to record an exception and pass it on: the one that is being
  /// handled goes on as it is, any other is thrown by its raise().
  [[noreturn]] static void debug(const I18NString& msg, ZEBThrowable& t);
  [[noreturn]] static void warn(const I18NString& msg, ZEBThrowable& t);
  [[noreturn]] static void error(const I18NString& msg, ZEBThrowable& t);

  /// False when a message would not be written: for those to whom finding out what to say costs
  /// something.
  static bool mayWrite() { return !m_isOff.load(std::memory_order_relaxed); }

  static void setInternalDebugging(int enabled) { m_debugEnabled = enabled; }
  static void setQuietMode(int quiet) { m_quietMode = quiet; }

  /// Reads the settings file, unless that was done since the last shutdown().
  static void init();
  /// Closes the diagnostic file, so that the next message reads the settings anew. Does nothing
  /// while no file is written.
  static void shutdown();

  static const I18NString m_PREFIX;
  static const I18NString m_ERR_PREFIX;
  static const I18NString m_WARN_PREFIX;
  static const I18NString m_DEBUG_KEY;
  static const I18NString m_CONFIG_DEBUG_KEY;

 private:
  static void writeMsg(const char* prefix, const I18NString& msg);
  static void initLocked();
  static void openDebugFile(const I18NString& name);

  static std::atomic<bool> m_isOff;  // for good: there was no settings file
  static std::atomic<int> m_initialized;
  static std::atomic<int> m_fileLogEnabled;
  static std::atomic<int> m_debugEnabled;
  static std::atomic<int> m_quietMode;
  static ZEBFmFile* m_debugFile;  // owned; guarded by the diagnostics' lock
};

#endif
