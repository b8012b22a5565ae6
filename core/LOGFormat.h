#ifndef CORE_LOGFORMAT_H
#define CORE_LOGFORMAT_H

// How the macros for format strings format: with std::format where the standard library has it,
// otherwise, or when LOG4ZEB_USE_FMT is defined, with {fmt}. This header includes neither, so that
// only who uses these macros pays for one; the application includes <format> or <fmt/format.h>
// itself, in any order with the headers of the library. With LOG4ZEB_COMPILE_FORMATS, and
// <fmt/compile.h>, {fmt} compiles the format strings; what it cannot compile it reads at run time,
// without having checked it. {fmt} has to be of version 8 or later.

#if __has_include(<version>)
#include <version>
#endif

#include <cstddef>
#include <iterator>
#include <string>
#include <tuple>
#include <utility>

#define LOG4ZEB_TEXT_OF(macro) LOG4ZEB_TEXT_OF_EXPANDED(macro)
#define LOG4ZEB_TEXT_OF_EXPANDED(tokens) #tokens

// LOG4ZEB_FORMAT_TO(text, ...) declares `text`, which has data() and size(), and formats the rest
// into it: on the stack, unless it is long.

#if defined(__cpp_lib_format) && !defined(LOG4ZEB_USE_FMT)

#define LOG4ZEB_CHECK_FORMATTER static_assert(true)
#define LOG4ZEB_FORMAT_TO(text, ...) \
  LOGFormat::Buffer text;            \
  std::format_to(std::back_inserter(text), __VA_ARGS__)

#else

// A macro that is not defined reads as its own name.
#define LOG4ZEB_CHECK_FORMATTER                         \
  static_assert(LOG4ZEB_TEXT_OF(FMT_VERSION)[0] != 'F', \
                "without std::format the macros for format strings need <fmt/format.h>")

#if defined(LOG4ZEB_COMPILE_FORMATS)
#define LOG4ZEB_FORMAT_STRING(literal) FMT_COMPILE(literal)
#else
#define LOG4ZEB_FORMAT_STRING(literal) FMT_STRING(literal)
#endif

#if __cplusplus >= 202002L && !defined(LOG4ZEB_COMPILE_FORMATS)

#define LOG4ZEB_FORMAT_TO(text, ...) \
  fmt::memory_buffer text;           \
  fmt::format_to(fmt::appender(text), __VA_ARGS__)

#else

// Only what is wrapped is compiled, and before C++20 checked by the compiler. To take the format
// string off a list of arguments that may consist of it alone, the list gets one more, which is not
// formatted.
#define LOG4ZEB_FORMAT_TO(text, ...) \
  fmt::memory_buffer text;           \
  LOG4ZEB_FORMAT_BUT_LAST(text, __VA_ARGS__, 0)
#define LOG4ZEB_FORMAT_BUT_LAST(text, literal, ...)                                    \
  LOGFormat::withoutLast(                                                              \
      [&text](const auto& log4zebFormat, auto&&... log4zebArguments) {                 \
        fmt::format_to(fmt::appender(text), log4zebFormat,                             \
                       std::forward<decltype(log4zebArguments)>(log4zebArguments)...); \
      },                                                                               \
      LOG4ZEB_FORMAT_STRING(literal), __VA_ARGS__)

#endif
#endif

/// What the macros above need of the language.
class LOGFormat {
 public:
  /// Characters that are appended one by one.
  class Buffer {
   public:
    using value_type = char;
    void push_back(char c) {
      if (m_size < sizeof m_room) {
        m_room[m_size++] = c;
        return;
      }
      if (m_long.empty()) {
        m_long.assign(m_room, m_size);
      }
      m_long.push_back(c);
    }
    const char* data() const { return m_long.empty() ? m_room : m_long.data(); }
    std::size_t size() const { return m_long.empty() ? m_size : m_long.size(); }

   private:
    std::size_t m_size = 0;
    char m_room[512];
    std::string m_long;  // all of a text that did not fit into the room
  };

  /// Calls `formatter` with the format string and all arguments but the last.
  template <typename Formatter, typename Format, typename... Arguments>
  static void withoutLast(Formatter formatter, const Format& format, Arguments&&... arguments) {
    apply(formatter, format, std::forward_as_tuple(std::forward<Arguments>(arguments)...),
          std::make_index_sequence<sizeof...(Arguments) - 1>());
  }

 private:
  template <typename Formatter, typename Format, typename Arguments, std::size_t... Index>
  static void apply(Formatter formatter, const Format& format, Arguments&& arguments,
                    std::index_sequence<Index...>) {
    formatter(format, std::get<Index>(std::forward<Arguments>(arguments))...);
  }
};

#endif
