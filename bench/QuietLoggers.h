#ifndef BENCH_QUIETLOGGERS_H
#define BENCH_QUIETLOGGERS_H

#include <spdlog/logger.h>

#include <memory>
#include <string>

class LOGLogger;

/// Loggers that write nothing, for measuring requests that are switched off and look-ups by name.
class QuietLoggers {
 public:
  /// A logger four levels below the root, whose level INFO it inherits from there.
  static LOGLogger* log4zeb();
  /// A logger of its own level INFO.
  static std::shared_ptr<spdlog::logger> spdlog(const std::string& name);
  /// Registers so many loggers with both libraries, named by name().
  static void registerWithBoth(int count);
  /// A name with two dots for each number.
  static std::string name(int number);
};

#endif
