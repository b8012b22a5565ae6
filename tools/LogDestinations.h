#ifndef TOOLS_LOGDESTINATIONS_H
#define TOOLS_LOGDESTINATIONS_H

class LOGLogger;

/// Where the lines go that are logged through a logger, as the document that was applied has it.
/// REQUIRES: no document is applied during a call.
class LogDestinations {
 public:
  static bool hasAnyLoggerAppenders();
  /// Whether the logger or one above it that its events go to has an appender.
  static bool hasAppenders(LOGLogger* logger);
  /// Whether there is a level at which a line may be written or sent: one that is enabled, and an
  /// appender that filters let it come to and that has what it needs.
  static bool canLog(LOGLogger* logger);
  /// Whether one of the appenders writes to the console.
  static bool includeConsole(LOGLogger* logger);
  /// Whether one of the appenders could not write a line to the console. Waits, for up to two
  /// seconds each, until queues have passed on what they hold; what is behind one that does not get
  /// that far is not known to have failed. REQUIRES: no thread logs.
  static bool hasConsoleFailed(LOGLogger* logger);
};

#endif
