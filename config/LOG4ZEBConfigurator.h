#ifndef CONFIG_LOG4ZEBCONFIGURATOR_H
#define CONFIG_LOG4ZEBCONFIGURATOR_H

#include "platform/I18NString.h"

/// The library's entry for a host program: set up from a document at the start, shut down at the
/// end. Neither operation lets an exception out.
class LOG4ZEB_EXPORT LOG4ZEBConfigurator {
 public:
  virtual ~LOG4ZEBConfigurator();
  /// Reads the configuration document at `path` and applies it. Returns 1, or 0 when the document
  /// cannot be read; then nothing has changed, and the diagnostics say why. Also returns 0 when
  /// there was no memory for a part of it; the next call makes everything anew. Not to be called by
  /// an appender, a filter or a message while it is rendered: it would wait for a reading on
  /// another thread, which waits for the locks that are held there.
  static int initialize(const I18NString& path);
  /// Closes every appender and frees what the configuration made. Loggers stay valid; what is
  /// logged through them reaches nothing until the next initialize(). Not to be called by a message
  /// while it is rendered, nor by an appender: what they run in would be freed under them.
  static void shutdown();
};

#endif
