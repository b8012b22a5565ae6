#ifndef PLATFORM_ZEBTRANSLATE_H
#define PLATFORM_ZEBTRANSLATE_H

#include <exception>
#include <new>
#include <utility>

#include "platform/ZEBOutOfMemoryError.h"
#include "platform/ZEBStdExceptionError.h"
#include "platform/ZEBThrowable.h"

/// Runs `operation` and returns its result; what it throws leaves as one of the library's own
/// exceptions. A failed allocation becomes a ZEBOutOfMemoryError of `source` and `line`, another
/// standard exception is wrapped in a ZEBStdExceptionError, and a ZEBThrowable goes on with one
/// more back-trace entry. Whatever is none of these passes untouched.
template <typename Operation>
auto zebTranslate(const char* source, int line, Operation&& operation) -> decltype(operation()) {
  try {
    return std::forward<Operation>(operation)();
  } catch (ZEBThrowable& passing) {
    passing.addBackTrace("ZEB_RETHROW", source, line);
    throw;
  } catch (const std::bad_alloc&) {
    throw ZEBOutOfMemoryError(source, line);
  } catch (const std::exception& caught) {
    ZEBStdExceptionError wrapper(caught, source, line);
    wrapper.addBackTrace("ZEB_RETHROW", source, line);
    throw wrapper;
  }
}

#endif
