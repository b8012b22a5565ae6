#include "bench/SpdlogLog.h"

#include <spdlog/async.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/spdlog.h>

#include <chrono>
#include <thread>

#include "bench/Workload.h"

namespace {

constexpr const char* PATTERN = "%Y-%m-%d %H:%M:%S,%e [%t] %l %n - %v";

spdlog::sink_ptr makeSink(SpdlogLog::Sink kind, const std::string& file) {
  switch (kind) {
    case SpdlogLog::Sink::SingleThreaded:
      return std::make_shared<spdlog::sinks::basic_file_sink_st>(file);
    case SpdlogLog::Sink::Rotating:
      return std::make_shared<spdlog::sinks::rotating_file_sink_mt>(
          file, static_cast<std::size_t>(workload::ROLL_AT_BYTES),
          static_cast<std::size_t>(workload::BACKUPS));
    default:
      return std::make_shared<spdlog::sinks::basic_file_sink_mt>(file);
  }
}

}  // namespace

SpdlogLog::SpdlogLog(const std::filesystem::path& directory, Sink sink, Delivery delivery,
                     Caller caller) {
  const spdlog::sink_ptr target = makeSink(sink, (directory / "spdlog.log").string());
  if (caller == Caller::Queues) {
    m_pool = std::make_shared<spdlog::details::thread_pool>(workload::QUEUE_EVENTS, 1);
    m_logger = std::make_shared<spdlog::async_logger>(workload::LOGGER, target, m_pool,
                                                      spdlog::async_overflow_policy::block);
  } else {
    m_logger = std::make_shared<spdlog::logger>(workload::LOGGER, target);
  }
  m_logger->set_pattern(PATTERN);
  if (delivery == Delivery::Kernel) {
    m_logger->flush_on(spdlog::level::trace);
  }
}

SpdlogLog::~SpdlogLog() = default;

void SpdlogLog::log() { m_logger->info(workload::MESSAGE); }

void SpdlogLog::logNumber(int number) { m_logger->info(WORKLOAD_FORMAT, number); }

void SpdlogLog::drain() {
  while (m_pool != nullptr && m_pool->queue_size() != 0) {
    std::this_thread::sleep_for(std::chrono::microseconds(100));
  }
}

void SpdlogLog::finish() {
  m_pool.reset();  // queued events hold the logger; this waits until they are written
  m_logger.reset();
}
