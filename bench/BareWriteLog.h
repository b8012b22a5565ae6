#ifndef BENCH_BAREWRITELOG_H
#define BENCH_BAREWRITELOG_H

#include <filesystem>
#include <string>

#include "bench/LogUnderTest.h"

/// What the operating system alone takes for an event: one call that appends the bytes of a
/// finished line to a file. Nothing that delivers each line to the kernel can be faster.
class BareWriteLog : public LogUnderTest {
 public:
  /// The line is one that the library made. Throws std::system_error when there is no file.
  explicit BareWriteLog(const std::filesystem::path& directory);
  ~BareWriteLog() override;

  void log() override;
  void finish() override;

 private:
  void open(const std::filesystem::path& file);

  std::string m_line;
  int m_file = -1;
};

#endif
