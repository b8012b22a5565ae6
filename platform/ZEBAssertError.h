#ifndef PLATFORM_ZEBASSERTERROR_H
#define PLATFORM_ZEBASSERTERROR_H

#include "platform/ZEBThrowable.h"

/// A precondition does not hold. The description is the text of the assertion.
class LOG4ZEB_EXPORT ZEBAssertError : public ZEBThrowable {
 public:
  ZEBAssertError(const I18NString& description, const char* source, int line);
  ~ZEBAssertError() override;
  [[noreturn]] void raise() const override { throw *this; }

  /// Throws the error for a failed assertion, its back trace begun with the tag "ZEB_THROW".
  [[noreturn]] static void fail(const char* text, const char* source, int line);
};

/// Checks, in every build, a condition that the caller of `source` must meet.
#define ZEB_ASSERT(condition, source, line) ZEB_ASSERT_AS(condition, #condition, source, line)

/// The same, with a literal that stands for the condition in the error's text.
#define ZEB_ASSERT_AS(condition, text, source, line)                   \
  do {                                                                 \
    if (!(condition)) {                                                \
      ZEBAssertError::fail("ZEB_ASSERT(" text ");", (source), (line)); \
    }                                                                  \
  } while (false)

#endif
