#ifndef BENCH_SCRATCHDIRECTORY_H
#define BENCH_SCRATCHDIRECTORY_H

#include <filesystem>

/// An empty directory for the files of one run of a benchmark, removed with all that is in it. It
/// is made in the directory that the environment variable LOG4ZEB_BENCH_DIRECTORY names, else in
/// the working directory, so that all runs use the same file system.
class ScratchDirectory {
 public:
  ScratchDirectory();
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;
  ~ScratchDirectory();

  const std::filesystem::path& path() const { return m_path; }
  /// How many lines in its files end with the message of the workload.
  long lines() const;
  /// The length, in bytes, of the first such line that is found, its end included; 0 without any.
  long bytesPerLine() const;

 private:
  std::filesystem::path m_path;
};

#endif
