#ifndef BENCH_SPDLOGLOG_H
#define BENCH_SPDLOGLOG_H

#include <filesystem>
#include <memory>

#include "bench/LogUnderTest.h"

namespace spdlog {
class logger;
namespace details {
class thread_pool;
}
}  // namespace spdlog

/// spdlog with one of its file sinks, or its asynchronous logger in front of the sink that several
/// threads may share.
class SpdlogLog : public LogUnderTest {
 public:
  enum class Sink { SingleThreaded, MultiThreaded, Rotating };
  enum class Caller { WritesItself, Queues };

  SpdlogLog(const std::filesystem::path& directory, Sink sink, Delivery delivery,
            Caller caller = Caller::WritesItself);
  ~SpdlogLog() override;

  void log() override;
  void logNumber(int number) override;
  void drain() override;
  void finish() override;

 private:
  std::shared_ptr<spdlog::details::thread_pool> m_pool;
  std::shared_ptr<spdlog::logger> m_logger;
};

#endif
