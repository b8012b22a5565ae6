#ifndef CORE_LOGFAILURES_H
#define CORE_LOGFAILURES_H

// How the library reports what goes wrong while it works for an application: each pattern stands
// here once, the operations only supply their texts.

#include <exception>
#include <new>
#include <utility>

#include "core/LOGLogLog.h"
#include "platform/I18NRuntimeError.h"
#include "platform/ZEBOutOfMemoryError.h"
#include "platform/ZEBThrowable.h"

/// How often the calling thread has met a lack of memory that was reported and went no further. Who
/// needs a whole result compares it before and after.
inline unsigned& logMemoryFailures() noexcept {
  static thread_local unsigned t_failures = 0;
  return t_failures;
}

/// Counts the exception that is being handled if it is a lack of memory.
inline void logNoteFailure() noexcept {
  try {
    throw;
  } catch (const ZEBOutOfMemoryError&) {
    ++logMemoryFailures();
  } catch (const std::bad_alloc&) {
    ++logMemoryFailures();
  } catch (...) {
    // It is not.
  }
}

/// Throws std::bad_alloc if the calling thread has met a lack of memory since the count was
/// `before`.
inline void logRequireMemorySince(unsigned before) {
  if (logMemoryFailures() != before) {
    throw std::bad_alloc();
  }
}

/// Writes `text` to the diagnostics as an error, records that in `failure`, and returns: the
/// failure ends here. A failure of the diagnostics themselves ends here too.
template <typename Text>
void logReportSwallowed(const Text& text, ZEBThrowable& failure) noexcept {
  if (dynamic_cast<const ZEBOutOfMemoryError*>(&failure) != nullptr) {
    ++logMemoryFailures();
  }
  try {
    LOGLogLog::error(text, failure);
  } catch (...) {
    // What the report passes on is what the caller wants stopped. A class of the application may
    // have two bases that are std::exception, and so is caught as none.
  }
}

/// Writes `text` to the diagnostics as an error, whatever that may throw.
inline void logReport(const char* text) noexcept {
  try {
    LOGLogLog::error(text);
  } catch (const std::exception&) {
    // There is nowhere left to report to.
  }
}

/// The same for an allocation that failed without an exception of the library's family.
inline void logReportOutOfMemory(const char* text) noexcept {
  ++logMemoryFailures();
  logReport(text);
}

/// What an operation reports for a text that could not be converted, for another exception of the
/// library's family, and for anything else.
struct LOGFailureTexts {
  const char* stringError;
  const char* throwable;
  const char* other;

  /// The same text for everything.
  static constexpr LOGFailureTexts same(const char* text) { return {text, text, text}; }
};

/// Reports the exception that is being handled. Returns whether it is of the library's family, or a
/// failed allocation, which counts as one of them.
inline bool logReportHandled(const LOGFailureTexts& texts) noexcept {
  try {
    throw;
  } catch (I18NRuntimeError& failure) {
    logReportSwallowed(texts.stringError, failure);
  } catch (ZEBThrowable& failure) {
    logReportSwallowed(texts.throwable, failure);
  } catch (const std::bad_alloc&) {
    logReportOutOfMemory(texts.throwable);
  } catch (...) {
    logReport(texts.other);
    return false;
  }
  return true;
}

/// Runs `operation`. Exceptions of the library's family are reported and end here, and a failed
/// allocation counts as one of them; anything else is reported and goes on to the caller. Returns
/// whether the operation came to its end.
template <typename Operation>
LOG4ZEB_INLINE inline bool logReportingFailures(const LOGFailureTexts& texts,
                                                Operation&& operation) {
  try {
    std::forward<Operation>(operation)();
    return true;
  } catch (...) {
    if (!logReportHandled(texts)) {
      throw;
    }
    return false;
  }
}

/// The same, but nothing at all reaches the caller.
template <typename Operation>
LOG4ZEB_INLINE inline bool logContainingFailures(const LOGFailureTexts& texts,
                                                 Operation&& operation) noexcept {
  try {
    std::forward<Operation>(operation)();
    return true;
  } catch (...) {
    logReportHandled(texts);
    return false;
  }
}

/// Runs `operation`. A lack of memory is reported with `text` and ends here; anything else goes on
/// to the caller as it is.
template <typename Operation>
LOG4ZEB_INLINE inline void logContainingLackOfMemory(const char* text, Operation&& operation) {
  try {
    std::forward<Operation>(operation)();
  } catch (ZEBOutOfMemoryError& failure) {
    logReportSwallowed(text, failure);
  } catch (const std::bad_alloc&) {
    logReportOutOfMemory(text);
  }
}

/// Keeps the first exception of several operations, all of which are to be tried.
class LOGFirstFailure {
 public:
  template <typename Operation>
  void keepOf(Operation&& operation) noexcept {
    try {
      std::forward<Operation>(operation)();
    } catch (...) {
      if (m_first == nullptr) {
        m_first = std::current_exception();
      }
    }
  }
  /// Throws it, if there is one.
  void passOn() const {
    if (m_first != nullptr) {
      std::rethrow_exception(m_first);
    }
  }

 private:
  std::exception_ptr m_first;
};

/// Runs `operation` and returns its result. Every exception is reported with `text` and goes on to
/// the caller.
template <typename Operation>
LOG4ZEB_INLINE inline auto logReportingAndPassing(const char* text, Operation&& operation)
    -> decltype(operation()) {
  try {
    return std::forward<Operation>(operation)();
  } catch (ZEBThrowable& failure) {
    logReportSwallowed(text, failure);
    throw;
  } catch (...) {
    logReport(text);
    throw;
  }
}

#endif
