// The macros of log4zeb.h, built once as C++17 and once as C++20.

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "log4zeb.h"
// What formats comes after the header of the library, which must not depend on the order.
#if defined(__cpp_lib_format)
#include <format>
#define HAS_FORMATTER
#elif __has_include(<fmt/format.h>)
#include <fmt/compile.h>
#include <fmt/format.h>
#define HAS_FORMATTER
#endif

#include "appenders/LOGAsyncAppender.h"
#include "core/LOGHierarchy.h"
#include "core/LOGRootLogger.h"
#include "platform/ZEBOutOfMemoryError.h"
#include "support/CapturingAppender.h"
#include "support/Workplace.h"

#if __cplusplus >= 202002L
#define Macros MacrosInCxx20
#endif

namespace {

class Macros : public testing::Test {
 protected:
  Macros() {
    logger.addAppender(&capture);
    capture.onAppend = [this](LOGLoggingEvent* event) {
      levels += event->getLevel()->toString()[0];
      throwable = event->getThrowableStrRep().toStdString();
    };
  }

  Workplace workplace;
  CapturingAppender capture;
  LOGRootLogger logger{LOGLevel::toLevel("WARN")};
  LOGHierarchy hierarchy{&logger};
  std::string levels;
  std::string throwable;
};

/// Throws `message`, nested in it a library exception, and in that what is no std::exception.
void throwNested(const char* message) {
  class Nesting : public ZEBThrowable, public std::nested_exception {
    using ZEBThrowable::ZEBThrowable;
  };
  try {
    try {
      throw 42;
    } catch (...) {
      Nesting middle("no room", "LOGPlace", 7);
      middle.addBackTrace("ZEB_RETHROW", "LOGOuter", 0);
      throw middle;
    }
  } catch (...) {
    std::throw_with_nested(std::runtime_error(message));
  }
}

}  // namespace

#ifdef HAS_FORMATTER
TEST_F(Macros, FormatOnlyWhatIsEnabled) {
  int evaluated = 0;
  const auto value = [&] { return ++evaluated; };
  LOG4ZEB_DEBUGF(&logger, "{}", value());
  LOG4ZEB_INFOF(&logger, "{}", value());
  EXPECT_EQ(evaluated, 0);
  if (evaluated == 0)
    LOG4ZEB_WARNF(&logger, "user {1:>4} in {0} ms", value(), "ann");
  else
    LOG4ZEB_FATALF(&logger, "an if without braces takes the macro as one statement");
  LOG4ZEB_ERRORF(&logger, "{{}} alone");
  LOG4ZEB_FATALF(&logger, "{:04x} {}", 255, std::string("\xC3\xA9"));
  logger.setLevel(LOGLevel::toLevel("DEBUG"));
  LOG4ZEB_DEBUGF(&logger, "{}", true);
  LOG4ZEB_INFOF(&logger, "{:.1f}", 2.25);
  EXPECT_EQ(capture.messages, (std::vector<std::string>{"user  ann in 1 ms", "{} alone",
                                                        "00ff \xC3\xA9", "true", "2.2"}));
  EXPECT_EQ(levels, "WEFDI");
  for (const std::size_t length : {499, 500, 501, 511, 512, 513, 5000}) {
    const std::string text(length, 'x');
    LOG4ZEB_WARNF(&logger, "{}.", text);
    EXPECT_EQ(capture.messages.back(), text + ".");
  }
}

TEST_F(Macros, LoseAnEventForWhichTextCannotBeFormattedAndSayIt) {
  const auto lackMemory = []() -> int { throw std::bad_alloc(); };
  EXPECT_NO_THROW(LOG4ZEB_WARNF(&logger, "{}", lackMemory()));
  EXPECT_TRUE(capture.messages.empty());
  EXPECT_EQ(Workplace::noted("no memory for an event, which is lost"), 1);
  const auto fail = []() -> int { throw std::runtime_error("of the application"); };
  EXPECT_THROW(LOG4ZEB_WARNF(&logger, "{}", fail()), std::runtime_error);
}
#endif

TEST_F(Macros, StreamAsAStringStreamDoesWhateverTheLength) {
  for (const int length : {0, 1, 255, 256, 257, 511, 512, 513, 5000}) {
    const std::string text(static_cast<std::size_t>(length), 'x');
    std::ostringstream expected;
    expected << text << std::hex << std::setw(6) << std::setfill('.') << 255 << 'y' << text;
    LOG4ZEB_WARN(&logger,
                 text << std::hex << std::setw(6) << std::setfill('.') << 255 << 'y' << text);
    EXPECT_EQ(capture.messages.back(), expected.str());
  }
  LOG4ZEB_INFO(&logger, (ADD_FAILURE(), "not enabled"));
  LOG4ZEB_ERROR(&logger, I18NString("\xC3\xA9"));
  EXPECT_EQ(capture.messages.back(), "\xC3\xA9");
}

TEST_F(Macros, TellOfACaughtExceptionAndOfThoseNestedInIt) {
  const auto tell = [this](auto thrower) {
    try {
      thrower();
    } catch (const std::exception& failure) {
      LOG4ZEB_ERROR_EX(&logger, "order " << 42, failure);
    } catch (...) {
      LOG4ZEB_ERROR_EX(&logger, "order " << 42, std::current_exception());
    }
    return throwable;
  };
  EXPECT_EQ(tell([] { throw std::out_of_range("too far"); }), "too far");
  EXPECT_EQ(tell([] { throw ZEBOutOfMemoryError("LOGPlace", 3); }),
            ZEBOutOfMemoryError("", 0).what() + std::string("\n  at LOGPlace:3"));
  const std::string nested = "outer\nno room\n  at LOGPlace:7\n  at LOGOuter\nunknown exception";
  EXPECT_EQ(tell([] { throwNested("outer"); }), nested);
  EXPECT_EQ(tell([] { throw "text"; }), "unknown exception");
  EXPECT_EQ(capture.messages, std::vector<std::string>(4, "order 42"));

  const std::runtime_error failure("broken");
  levels.clear();
  LOG4ZEB_INFO_EX(&logger, (ADD_FAILURE(), "not enabled"), failure);
  logger.setLevel(LOGLevel::toLevel("DEBUG"));
  LOG4ZEB_DEBUG_EX(&logger, 1, failure);
  LOG4ZEB_INFO_EX(&logger, 2, failure);
  LOG4ZEB_WARN_EX(&logger, 3, failure);
  LOG4ZEB_FATAL_EX(&logger, 4, failure);
  EXPECT_EQ(levels, "DIWF");
}

TEST_F(Macros, ShowNoExceptionBehindAnAsynchronousAppender) {
  CapturingAppender behind("behind");
  std::string late = "none came";
  behind.onAppend = [&](LOGLoggingEvent* event) {
    late = event->getThrowableStrRep().toStdString();
  };
  LOGAsyncAppender async;
  async.addAppender(&behind);
  logger.addAppender(&async);
  try {
    throwNested("<outer>");
  } catch (const std::exception& failure) {
    LOG4ZEB_FATAL_EX(&logger, "lost", failure);
  }
  EXPECT_TRUE(async.flush(10000));
  async.close();
  EXPECT_EQ(late, "");
  EXPECT_NE(throwable, "");
}

TEST_F(Macros, KeepAContextForAScopeHoweverItEnds) {
  LOGNDC::push("base");
  try {
    LOG4ZEB_NDC_SCOPE("request");
    const std::string number = "42";
    LOG4ZEB_NDC_SCOPE(std::string(number));
    EXPECT_EQ(LOGNDC::get(), "base request 42");
    LOGNDC::push("forgotten");
    throw std::runtime_error("broken");
  } catch (const std::exception&) {
    EXPECT_EQ(LOGNDC::get(), "base");
  }
  {
    LOG4ZEB_NDC_SCOPE("inner");
    LOGNDC::pop();
  }
  EXPECT_EQ(LOGNDC::get(), "base") << "only what the scope pushed is taken away";
  LOGNDC::pop();
}
