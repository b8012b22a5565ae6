#ifndef CORE_LOGTHROWABLETEXT_H
#define CORE_LOGTHROWABLETEXT_H

#include <exception>

#include "platform/I18NString.h"

/// What an event tells of an exception: its what() and, a line each, those of the exceptions nested
/// in it, outermost first. Under a ZEBThrowable stand the place of its origin and its back trace,
/// "  at source:line" each. Lines end with LF, all but the last. Throws ZEBOutOfMemoryError.
class LOG4ZEB_EXPORT LOGThrowableText {
 public:
  static I18NString of(const std::exception& thrown);
  /// For exceptions of any type, as in of(std::current_exception()); one that is no std::exception
  /// reads "unknown exception". The text of null is empty.
  static I18NString of(const std::exception_ptr& thrown);
};

#endif
