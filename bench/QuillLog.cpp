#include "bench/QuillLog.h"

#include <quill/Backend.h>
#include <quill/Frontend.h>
#include <quill/LogMacros.h>
#include <quill/Logger.h>
#include <quill/sinks/FileSink.h>

#include <string>

#include "bench/Workload.h"

namespace {

/// Its queue is the default one: each thread has its own, which starts with 128 KiB and grows
/// before it blocks.
class QuillFile : public LogUnderTest {
 public:
  explicit QuillFile(const std::filesystem::path& directory) {
    quill::BackendOptions options;
    options.error_notifier = {};  // what it would tell is that a queue grows
    options.check_backend_singleton_instance = false;
    quill::Backend::start(options);
    auto sink = quill::Frontend::create_or_get_sink<quill::FileSink>(
        (directory / "quill.log").string(), quill::FileSinkConfig());
    m_logger = quill::Frontend::create_or_get_logger(
        workload::LOGGER, std::move(sink),
        quill::PatternFormatterOptions("%(time) [%(thread_id)] %(log_level) %(logger) - %(message)",
                                       "%Y-%m-%d %H:%M:%S,%Qms"));
  }

  void log() override { LOG_INFO(m_logger, WORKLOAD_MESSAGE); }
  void logNumber(int number) override { LOG_INFO(m_logger, WORKLOAD_FORMAT, number); }
  void drain() override { m_logger->flush_log(); }

  // Without its thread, so that it takes nothing from those that are measured after it.
  void finish() override {
    m_logger->flush_log();
    quill::Frontend::remove_logger_blocking(m_logger);
    quill::Backend::stop();
  }

 private:
  quill::Logger* m_logger;
};

}  // namespace

std::unique_ptr<LogUnderTest> QuillLog::make(const std::filesystem::path& directory) {
  return std::make_unique<QuillFile>(directory);
}

bool QuillLog::isThere() { return true; }
