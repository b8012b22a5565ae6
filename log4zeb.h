#ifndef LOG4ZEB_H
#define LOG4ZEB_H

// What an application includes to log: the manager that hands out loggers, the loggers, the nested
// diagnostic context, the entry that sets everything up from a document, and macros that build a
// message only when it is wanted.

#include "config/LOG4ZEBConfigurator.h"
#include "core/LOG4ZEBVersion.h"
#include "core/LOGLevel.h"
#include "core/LOGLogger.h"
#include "core/LOGManager.h"
#include "core/LOGMessageStream.h"
#include "core/LOGNDC.h"

/// Logs what is streamed, as in LOG4ZEB_INFO(logger, "user " << id). The expression is evaluated
/// only when the level is enabled; `logger` is evaluated once.
#define LOG4ZEB_DEBUG(logger, expr) LOG4ZEB_LOG_IF_ENABLED(logger, debug, DEBUG_RANK, expr)
#define LOG4ZEB_INFO(logger, expr) LOG4ZEB_LOG_IF_ENABLED(logger, info, INFO_RANK, expr)
#define LOG4ZEB_WARN(logger, expr) LOG4ZEB_LOG_IF_ENABLED(logger, warn, WARN_RANK, expr)
#define LOG4ZEB_ERROR(logger, expr) LOG4ZEB_LOG_IF_ENABLED(logger, error, ERROR_RANK, expr)
#define LOG4ZEB_FATAL(logger, expr) LOG4ZEB_LOG_IF_ENABLED(logger, fatal, FATAL_RANK, expr)

/// What the macros above share.
#define LOG4ZEB_LOG_IF_ENABLED(logger, method, rank, expr)            \
  do {                                                                \
    LOGLogger* const log4zebLogger = (logger);                        \
    if (log4zebLogger->wouldLog(LOGLevel::rank)) {                    \
      LOGMessageStream log4zebMessage;                                \
      log4zebMessage.stream() << expr; /* NOLINT(bugprone-macro-*) */ \
      if (log4zebMessage.finish()) {                                  \
        log4zebLogger->method(log4zebMessage.text());                 \
      }                                                               \
    }                                                                 \
  } while (false)

#endif
