#ifndef LOG4ZEB_H
#define LOG4ZEB_H

// What an application includes to log: the manager that hands out loggers, the loggers, the nested
// diagnostic context, the entry that sets everything up from a document, macros that build a
// message only when it is wanted, and what makes text from outside safe in a message.
//
// Each macro evaluates `logger` once and everything else only when the level is enabled. What these
// expressions throw goes on to the caller; only a lack of memory in what is formatted ends with the
// event, which is lost and reported.

#include <new>

#include "config/LOG4ZEBConfigurator.h"
#include "core/LOG4ZEBVersion.h"
#include "core/LOGFormat.h"
#include "core/LOGLevel.h"
#include "core/LOGLogger.h"
#include "core/LOGManager.h"
#include "core/LOGMessageStream.h"
#include "core/LOGNDC.h"
#include "core/LOGNDCScope.h"
#include "core/LOGThrowableText.h"
#include "core/LOGUntrustedText.h"

/// Logs what is streamed, as in LOG4ZEB_INFO(logger, "user " << id). A text alone costs less as
/// logger->info("text"). Text is written as it is, line breaks included: stream what comes from
/// outside as LOGUntrustedText::escaped(name).
#define LOG4ZEB_DEBUG(logger, expr) LOG4ZEB_LOG_IF_ENABLED(logger, DEBUG_RANK, expr)
#define LOG4ZEB_INFO(logger, expr) LOG4ZEB_LOG_IF_ENABLED(logger, INFO_RANK, expr)
#define LOG4ZEB_WARN(logger, expr) LOG4ZEB_LOG_IF_ENABLED(logger, WARN_RANK, expr)
#define LOG4ZEB_ERROR(logger, expr) LOG4ZEB_LOG_IF_ENABLED(logger, ERROR_RANK, expr)
#define LOG4ZEB_FATAL(logger, expr) LOG4ZEB_LOG_IF_ENABLED(logger, FATAL_RANK, expr)

/// Logs what is formatted, as in LOG4ZEB_INFOF(logger, "user {} in {} ms", id, ms), with
/// std::format where the standard library has it and `<format>` is included, else with {fmt}: see
/// LOGFormat.h. The format string is a literal; one that does not suit the arguments does not
/// compile. An I18NString is given as text.toStdString().
#define LOG4ZEB_DEBUGF(logger, ...) LOG4ZEB_FORMAT_IF_ENABLED(logger, DEBUG_RANK, __VA_ARGS__)
#define LOG4ZEB_INFOF(logger, ...) LOG4ZEB_FORMAT_IF_ENABLED(logger, INFO_RANK, __VA_ARGS__)
#define LOG4ZEB_WARNF(logger, ...) LOG4ZEB_FORMAT_IF_ENABLED(logger, WARN_RANK, __VA_ARGS__)
#define LOG4ZEB_ERRORF(logger, ...) LOG4ZEB_FORMAT_IF_ENABLED(logger, ERROR_RANK, __VA_ARGS__)
#define LOG4ZEB_FATALF(logger, ...) LOG4ZEB_FORMAT_IF_ENABLED(logger, FATAL_RANK, __VA_ARGS__)

/// Logs what is streamed together with a caught exception, as in
/// LOG4ZEB_ERROR_EX(logger, "order " << id << " is lost", failure), where `thrown` is a
/// std::exception or, for exceptions of any other type, std::current_exception(). The exception's
/// text, that of LOGThrowableText, is shown by the XML and the HTML layout and sent as a datagram
/// of its own by the syslog appender. Other layouts leave it out, and so does everything behind an
/// asynchronous appender: what has to be read there belongs into the message.
#define LOG4ZEB_DEBUG_EX(logger, expr, thrown) LOG4ZEB_LOG_THROWN(logger, DEBUG_RANK, expr, thrown)
#define LOG4ZEB_INFO_EX(logger, expr, thrown) LOG4ZEB_LOG_THROWN(logger, INFO_RANK, expr, thrown)
#define LOG4ZEB_WARN_EX(logger, expr, thrown) LOG4ZEB_LOG_THROWN(logger, WARN_RANK, expr, thrown)
#define LOG4ZEB_ERROR_EX(logger, expr, thrown) LOG4ZEB_LOG_THROWN(logger, ERROR_RANK, expr, thrown)
#define LOG4ZEB_FATAL_EX(logger, expr, thrown) LOG4ZEB_LOG_THROWN(logger, FATAL_RANK, expr, thrown)

/// Pushes a text on the nested diagnostic context until the end of the enclosing scope, as in
/// LOG4ZEB_NDC_SCOPE("request 42").
#define LOG4ZEB_NDC_SCOPE(message) \
  const LOGNDCScope LOG4ZEB_JOINED(log4zebScope, __COUNTER__) { message }

// What the macros above are made of.

#define LOG4ZEB_LOG_IF_ENABLED(logger, rank, expr) \
  LOG4ZEB_STREAM_IF_ENABLED(logger, rank, expr,    \
                            log4zebLogger->logUtf8(LOGLevel::rank, log4zebMessage.utf8()))

#define LOG4ZEB_LOG_THROWN(logger, rank, expr, thrown) \
  LOG4ZEB_STREAM_IF_ENABLED(                           \
      logger, rank, expr, log4zebLogger->logThrown(LOGLevel::rank, log4zebMessage.utf8(), thrown))

#define LOG4ZEB_STREAM_IF_ENABLED(logger, rank, expr, logging)        \
  do {                                                                \
    LOGLogger* const log4zebLogger = (logger);                        \
    if (log4zebLogger->wouldLog(LOGLevel::rank)) {                    \
      LOGMessageStream log4zebMessage;                                \
      log4zebMessage.stream() << expr; /* NOLINT(bugprone-macro-*) */ \
      if (log4zebMessage.isWhole()) {                                 \
        logging;                                                      \
      }                                                               \
    }                                                                 \
  } while (false)

#define LOG4ZEB_FORMAT_IF_ENABLED(logger, rank, ...)                                      \
  do {                                                                                    \
    LOG4ZEB_CHECK_FORMATTER;                                                              \
    LOGLogger* const log4zebLogger = (logger);                                            \
    if (log4zebLogger->wouldLog(LOGLevel::rank)) {                                        \
      try {                                                                               \
        LOG4ZEB_FORMAT_TO(log4zebText, __VA_ARGS__);                                      \
        log4zebLogger->logUtf8(LOGLevel::rank, {log4zebText.data(), log4zebText.size()}); \
      } catch (const std::bad_alloc&) {                                                   \
        LOGLogger::reportLostEvent();                                                     \
      }                                                                                   \
    }                                                                                     \
  } while (false)

#define LOG4ZEB_JOINED(a, b) LOG4ZEB_JOINED_EXPANDED(a, b)
#define LOG4ZEB_JOINED_EXPANDED(a, b) a##b

#endif
