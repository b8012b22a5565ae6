#ifndef BENCH_BOOSTLOG_H
#define BENCH_BOOSTLOG_H

#include <filesystem>
#include <memory>

#include "bench/LogUnderTest.h"

/// Boost.Log with a synchronous sink that writes to a stream.
class BoostLog : public LogUnderTest {
 public:
  BoostLog(const std::filesystem::path& directory, Delivery delivery);
  ~BoostLog() override;

  void log() override;
  void finish() override;

 private:
  struct Parts;
  std::unique_ptr<Parts> m_parts;
};

#endif
