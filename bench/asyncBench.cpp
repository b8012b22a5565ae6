// Events handed to a thread that writes them: what a call costs the thread that logs while the
// queue has room, and how long many events take to the last line in the file.

#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "bench/BenchmarkRun.h"
#include "bench/Log4zebLog.h"
#include "bench/ScratchDirectory.h"
#include "bench/SpdlogLog.h"
#include "bench/Workload.h"

namespace {

namespace fs = std::filesystem;

using Clock = std::chrono::steady_clock;
using Delivery = LogUnderTest::Delivery;
using Make = std::function<std::unique_ptr<LogUnderTest>(const fs::path&)>;

constexpr int BURSTS = 40;
constexpr long WHOLE_EVENTS = 1000000;
/// After the queue is drained the thread behind it writes its last event and goes to sleep, on both
/// sides alike.
constexpr std::chrono::milliseconds REST{2};

double secondsSince(Clock::time_point begin) {
  return std::chrono::duration<double>(Clock::now() - begin).count();
}

void checkLines(benchmark::State& state, const ScratchDirectory& directory, long expected) {
  const long found = directory.lines();
  if (found != expected) {
    state.SkipWithError(
        (std::to_string(found) + " lines in the file, not " + std::to_string(expected)).c_str());
  }
}

void logBurst(LogUnderTest& log) {
  for (int i = 0; i < workload::BURST_EVENTS; ++i) {
    log.log();
  }
}

void rest(LogUnderTest& log) {
  log.drain();
  std::this_thread::sleep_for(REST);
}

/// The time of an iteration is that of one event of a burst.
void callerTime(benchmark::State& state, const Make& make) {
  const ScratchDirectory directory;
  const std::unique_ptr<LogUnderTest> log = make(directory.path());
  logBurst(*log);  // not counted: threads start, files are opened
  long bursts = 1;
  for ([[maybe_unused]] auto _ : state) {
    rest(*log);
    const Clock::time_point begin = Clock::now();
    logBurst(*log);
    state.SetIterationTime(secondsSince(begin) / workload::BURST_EVENTS);
    ++bursts;
  }
  log->finish();
  checkLines(state, directory, bursts * workload::BURST_EVENTS);
}

/// The time of an iteration is that of one event of a million.
void wholeTime(benchmark::State& state, const Make& make) {
  for ([[maybe_unused]] auto _ : state) {
    const ScratchDirectory directory;
    const std::unique_ptr<LogUnderTest> log = make(directory.path());
    logBurst(*log);
    rest(*log);
    const Clock::time_point begin = Clock::now();
    for (long i = 0; i < WHOLE_EVENTS; ++i) {
      log->log();
    }
    log->finish();
    state.SetIterationTime(secondsSince(begin) / static_cast<double>(WHOLE_EVENTS));
    checkLines(state, directory, WHOLE_EVENTS + workload::BURST_EVENTS);
  }
}

Make makeLog4zeb(Delivery delivery) {
  return [=](const fs::path& directory) {
    Log4zebLog::Setup setup;
    setup.delivery = delivery;
    setup.isAsynchronous = true;
    return std::make_unique<Log4zebLog>(directory, setup);
  };
}

Make makeSpdlog(Delivery delivery) {
  return [=](const fs::path& directory) {
    return std::make_unique<SpdlogLog>(directory, SpdlogLog::Sink::MultiThreaded, delivery,
                                       SpdlogLog::Caller::Queues);
  };
}

void registerBoth(const std::string& library, const Make& make) {
  benchmark::RegisterBenchmark(("async_caller/" + library).c_str(), callerTime, make)
      ->Iterations(BURSTS)
      ->UseManualTime();
  benchmark::RegisterBenchmark(("async_whole/" + library).c_str(), wholeTime, make)
      ->Iterations(1)
      ->UseManualTime();
}

}  // namespace

int main(int argumentCount, char** arguments) {
  registerBoth("log4zeb", makeLog4zeb(Delivery::Kernel));
  registerBoth("log4zeb_buffered", makeLog4zeb(Delivery::Buffered));
  registerBoth("spdlog", makeSpdlog(Delivery::Buffered));
  registerBoth("spdlog_flushing", makeSpdlog(Delivery::Kernel));
  return runBenchmarks(argumentCount, arguments);
}
