#ifndef BENCH_QUILLLOG_H
#define BENCH_QUILLLOG_H

#include <filesystem>
#include <memory>

#include "bench/LogUnderTest.h"

/// quill, whose headers are taken from a folder that the build is told: its thread writes to its
/// file sink, everything else is as it comes.
class QuillLog {
 public:
  /// Null when the programs were built without quill.
  static std::unique_ptr<LogUnderTest> make(const std::filesystem::path& directory);
  static bool isThere();
};

#endif
