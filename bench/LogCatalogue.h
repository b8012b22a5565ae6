#ifndef BENCH_LOGCATALOGUE_H
#define BENCH_LOGCATALOGUE_H

#include <filesystem>
#include <memory>
#include <string>

#include "bench/LogUnderTest.h"

/// The logs that the probes, which take one name on the command line, can measure.
class LogCatalogue {
 public:
  /// The log of that name, or null when there is none: log4zeb, spdlog, glog or boost_log with
  /// _kernel or _buffered behind it, and for the first two also _async; quill_async where the
  /// programs were built with quill; bare_write.
  static std::unique_ptr<LogUnderTest> make(const std::string& name,
                                            const std::filesystem::path& directory);
};

#endif
