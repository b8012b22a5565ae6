#ifndef CORE_LOGFORMAT_H
#define CORE_LOGFORMAT_H

// How the macros for format strings format: with std::format where the standard library has it,
// otherwise, or when LOG4ZEB_USE_FMT is defined, with {fmt}. This header includes neither, so that
// only who uses these macros pays for one; the application includes <format> or <fmt/format.h>
// itself, in any order with the headers of the library.

#if __has_include(<version>)
#include <version>
#endif

#include <cstddef>
#include <tuple>
#include <utility>

#define LOG4ZEB_TEXT_OF(macro) LOG4ZEB_TEXT_OF_EXPANDED(macro)
#define LOG4ZEB_TEXT_OF_EXPANDED(tokens) #tokens

#if defined(__cpp_lib_format) && !defined(LOG4ZEB_USE_FMT)

#define LOG4ZEB_CHECK_FORMATTER static_assert(true)
#define LOG4ZEB_FORMATTED(...) std::format(__VA_ARGS__)

#else

// A macro that is not defined reads as its own name.
#define LOG4ZEB_CHECK_FORMATTER                         \
  static_assert(LOG4ZEB_TEXT_OF(FMT_VERSION)[0] != 'F', \
                "without std::format the macros for format strings need <fmt/format.h>")

#if __cplusplus >= 202002L

#define LOG4ZEB_FORMATTED(...) fmt::format(__VA_ARGS__)

#else

// Before C++20 only what FMT_STRING wraps is checked by the compiler. To take the format string off
// a list of arguments that may consist of it alone, the list gets one more, which is not formatted.
#define LOG4ZEB_FORMATTED(...) LOG4ZEB_FORMATTED_BUT_LAST(__VA_ARGS__, 0)
#define LOG4ZEB_FORMATTED_BUT_LAST(literal, ...)                                           \
  LOGFormat::withoutLast(                                                                  \
      [](const auto& log4zebFormat, auto&&... log4zebArguments) {                          \
        return fmt::format(log4zebFormat,                                                  \
                           std::forward<decltype(log4zebArguments)>(log4zebArguments)...); \
      },                                                                                   \
      FMT_STRING(literal), __VA_ARGS__)

#endif
#endif

/// What the macros above need of the language.
class LOGFormat {
 public:
  /// Calls `formatter` with the format string and all arguments but the last.
  template <typename Formatter, typename Format, typename... Arguments>
  static auto withoutLast(Formatter formatter, const Format& format, Arguments&&... arguments) {
    return apply(formatter, format, std::forward_as_tuple(std::forward<Arguments>(arguments)...),
                 std::make_index_sequence<sizeof...(Arguments) - 1>());
  }

 private:
  template <typename Formatter, typename Format, typename Arguments, std::size_t... Index>
  static auto apply(Formatter formatter, const Format& format, Arguments&& arguments,
                    std::index_sequence<Index...>) {
    return formatter(format, std::get<Index>(std::forward<Arguments>(arguments))...);
  }
};

#endif
