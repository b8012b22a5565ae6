// Events handed to a thread that writes them: what a call costs the thread that logs while the
// queue has room, and how long many events take to the last line in the file.

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench/BenchmarkRun.h"
#include "bench/Log4zebLog.h"
#include "bench/QuillLog.h"
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
constexpr int THREADS = 4;
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

void logPlain(LogUnderTest& log, long events) {
  for (long i = 0; i < events; ++i) {
    log.log();
  }
}

void logFormatted(LogUnderTest& log, long events) {
  for (long i = 0; i < events; ++i) {
    log.logNumber(workload::NUMBER);
  }
}

void rest(LogUnderTest& log) {
  log.drain();
  std::this_thread::sleep_for(REST);
}

/// The time of an iteration is that of one event of a burst.
void callerTime(benchmark::State& state, const Make& make,
                void (*logEvents)(LogUnderTest& log, long events)) {
  const ScratchDirectory directory;
  const std::unique_ptr<LogUnderTest> log = make(directory.path());
  logEvents(*log, workload::BURST_EVENTS);  // not counted: threads start, files are opened
  long bursts = 1;
  for ([[maybe_unused]] auto _ : state) {
    rest(*log);
    const Clock::time_point begin = Clock::now();
    logEvents(*log, workload::BURST_EVENTS);
    state.SetIterationTime(secondsSince(begin) / workload::BURST_EVENTS);
    ++bursts;
  }
  log->finish();
  checkLines(state, directory, bursts * workload::BURST_EVENTS);
}

/// Logs a million events in all from so many threads. Returns when all of them were there, which is
/// when they began.
Clock::time_point logFromThreads(LogUnderTest& log, int count) {
  Clock::time_point begin;
  std::atomic<int> missing{count};
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([&] {
      if (--missing == 0) {
        begin = Clock::now();
      }
      while (missing.load() > 0) {
        std::this_thread::yield();
      }
      logPlain(log, WHOLE_EVENTS / count);
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  return begin;
}

/// The time of an iteration is that of one event of a million.
void wholeTime(benchmark::State& state, const Make& make, int threads) {
  for ([[maybe_unused]] auto _ : state) {
    const ScratchDirectory directory;
    const std::unique_ptr<LogUnderTest> log = make(directory.path());
    logPlain(*log, workload::BURST_EVENTS);
    rest(*log);
    Clock::time_point begin = Clock::now();
    if (threads == 1) {
      logPlain(*log, WHOLE_EVENTS);
    } else {
      begin = logFromThreads(*log, threads);
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

void registerCaller(const std::string& library, const Make& make,
                    void (*logEvents)(LogUnderTest& log, long events) = logPlain) {
  const std::string row = logEvents == logPlain ? "async_caller/" : "async_caller_formatted/";
  benchmark::RegisterBenchmark((row + library).c_str(), callerTime, make, logEvents)
      ->Iterations(BURSTS)
      ->UseManualTime();
}

void registerWhole(const std::string& library, const Make& make, int threads = 1) {
  const std::string row = threads == 1 ? "async_whole/" : "async_whole_4_threads/";
  benchmark::RegisterBenchmark((row + library).c_str(), wholeTime, make, threads)
      ->Iterations(1)
      ->UseManualTime();
}

void registerAll(const std::string& library, const Make& make) {
  registerCaller(library, make);
  registerCaller(library, make, logFormatted);
  registerWhole(library, make);
  registerWhole(library, make, THREADS);
}

}  // namespace

int main(int argumentCount, char** arguments) {
  registerAll("log4zeb", makeLog4zeb(Delivery::Kernel));
  registerAll("spdlog", makeSpdlog(Delivery::Buffered));
  if (QuillLog::isThere()) {
    registerAll("quill", QuillLog::make);
  }
  const Make buffered = makeLog4zeb(Delivery::Buffered);
  registerCaller("log4zeb_buffered", buffered);
  registerWhole("log4zeb_buffered", buffered);
  const Make flushing = makeSpdlog(Delivery::Kernel);
  registerCaller("spdlog_flushing", flushing);
  registerWhole("spdlog_flushing", flushing);
  return runBenchmarks(argumentCount, arguments);
}
