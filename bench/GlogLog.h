#ifndef BENCH_GLOGLOG_H
#define BENCH_GLOGLOG_H

#include <filesystem>

#include "bench/LogUnderTest.h"

/// glog with its file for INFO. Its lines name the place in the source; the logger's name goes
/// before the message.
class GlogLog : public LogUnderTest {
 public:
  GlogLog(const std::filesystem::path& directory, Delivery delivery);

  void log() override;
  void finish() override;
};

#endif
