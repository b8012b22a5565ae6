// Events written to a file by the threads that log: from one thread and from four, delivered to the
// kernel one by one and buffered, and into rolling files.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>

#include "bench/BareWriteLog.h"
#include "bench/BenchmarkRun.h"
#include "bench/BoostLog.h"
#include "bench/GlogLog.h"
#include "bench/Log4zebLog.h"
#include "bench/ScratchDirectory.h"
#include "bench/SpdlogLog.h"
#include "bench/Workload.h"

namespace {

namespace fs = std::filesystem;

using Delivery = LogUnderTest::Delivery;
using Make = std::function<std::unique_ptr<LogUnderTest>(const fs::path&)>;
/// How many of `events` lines the files must hold, given the bytes of one.
using Expect = std::function<long(long events, long bytesPerLine)>;

constexpr int EVENTS = 200000;
constexpr int THREADS = 4;
constexpr int WARM_UP = 1000;

long allOf(long events, long) { return events; }

/// What is left when the oldest backups are gone and every file that was full holds `linesPerFile`.
long keptOf(long events, long linesPerFile) {
  const long live = events % linesPerFile;
  return std::min(events / linesPerFile, static_cast<long>(workload::BACKUPS)) * linesPerFile +
         live;
}

/// The event that reaches the limit is the last in its file.
long keptByLog4zeb(long events, long bytesPerLine) {
  return keptOf(events, (workload::ROLL_AT_BYTES + bytesPerLine - 1) / bytesPerLine);
}

/// A file ends before the event that would exceed the limit.
long keptBySpdlog(long events, long bytesPerLine) {
  return keptOf(events, workload::ROLL_AT_BYTES / bytesPerLine);
}

/// What the threads of one run share: the first of them makes and ends it, while the others wait at
/// the two ends of the measured loop.
struct Run {
  ScratchDirectory directory;
  std::unique_ptr<LogUnderTest> log;
};

void checkLines(benchmark::State& state, const Run& run, long events, const Expect& expect) {
  const long found = run.directory.lines();
  const long bytes = run.directory.bytesPerLine();
  const long expected = bytes == 0 ? events : expect(events, bytes);
  if (found != expected) {
    state.SkipWithError(
        (std::to_string(found) + " lines in the files, not " + std::to_string(expected)).c_str());
  }
  state.counters["bytes_per_line"] = static_cast<double>(bytes);
}

void logEvents(benchmark::State& state, const Make& make, const Expect& expect) {
  static std::unique_ptr<Run> run;
  if (state.thread_index() == 0) {
    run = std::make_unique<Run>();
    run->log = make(run->directory.path());
    for (int i = 0; i < WARM_UP; ++i) {
      run->log->log();
    }
  }
  for ([[maybe_unused]] auto _ : state) {
    run->log->log();
  }
  if (state.thread_index() == 0) {
    run->log->finish();
    checkLines(state, *run, WARM_UP + state.max_iterations * state.threads(), expect);
    run.reset();
  }
}

Make makeLog4zeb(Delivery delivery, int rollAt = 0) {
  return [=](const fs::path& directory) {
    Log4zebLog::Setup setup;
    setup.delivery = delivery;
    setup.rollAt = rollAt;
    return std::make_unique<Log4zebLog>(directory, setup);
  };
}

Make makeSpdlog(SpdlogLog::Sink sink, Delivery delivery) {
  return [=](const fs::path& directory) {
    return std::make_unique<SpdlogLog>(directory, sink, delivery);
  };
}

template <typename Peer>
Make makePeer(Delivery delivery) {
  return [=](const fs::path& directory) { return std::make_unique<Peer>(directory, delivery); };
}

void registerRun(const std::string& name, int threads, const Make& make,
                 const Expect& expect = allOf) {
  benchmark::RegisterBenchmark(name.c_str(), logEvents, make, expect)
      ->Threads(threads)
      ->Iterations(EVENTS / threads)
      ->UseRealTime()
      ->Unit(benchmark::kNanosecond);
}

void registerMode(const std::string& row, Delivery delivery, int threads) {
  registerRun(row + "/log4zeb", threads, makeLog4zeb(delivery));
  registerRun(row + "/spdlog_mt", threads, makeSpdlog(SpdlogLog::Sink::MultiThreaded, delivery));
  if (threads == 1) {
    registerRun(row + "/spdlog_st", threads, makeSpdlog(SpdlogLog::Sink::SingleThreaded, delivery));
  }
  registerRun(row + "/boost_log", threads, makePeer<BoostLog>(delivery));
  registerRun(row + "/glog", threads, makePeer<GlogLog>(delivery));
  if (delivery == Delivery::Kernel) {
    registerRun(row + "/bare_write", threads, [](const fs::path& directory) {
      return std::make_unique<BareWriteLog>(directory);
    });
  }
}

void registerRolling() {
  constexpr int NEVER = 2000000000;  // bytes
  registerRun("rolling/log4zeb", 1, makeLog4zeb(Delivery::Kernel, workload::ROLL_AT_BYTES),
              keptByLog4zeb);
  registerRun("rolling/log4zeb_never_full", 1, makeLog4zeb(Delivery::Kernel, NEVER));
  registerRun("rolling/spdlog_rotating", 1, makeSpdlog(SpdlogLog::Sink::Rotating, Delivery::Kernel),
              keptBySpdlog);
}

}  // namespace

int main(int argumentCount, char** arguments) {
  registerMode("kernel", Delivery::Kernel, 1);
  registerMode("buffered", Delivery::Buffered, 1);
  registerMode("kernel_4_threads", Delivery::Kernel, THREADS);
  registerMode("buffered_4_threads", Delivery::Buffered, THREADS);
  registerRolling();
  return runBenchmarks(argumentCount, arguments);
}
