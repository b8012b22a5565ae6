#include "bench/BenchmarkRun.h"

#include <benchmark/benchmark.h>

#include <exception>
#include <iostream>
#include <thread>

#include "core/LOG4ZEBVersion.h"

int runBenchmarks(int argumentCount, char** arguments) {
  // From its first thread on a process pays for locks and counters that threads share. Programs
  // that log have threads, and without this the repetitions before the first one would be faster.
  std::thread([] {}).join();
  benchmark::AddCustomContext("compiler", BENCH_COMPILER);
  benchmark::AddCustomContext("flags", BENCH_FLAGS);
  benchmark::AddCustomContext("LOG4ZEB", LOG4ZEB_VERSION);
  benchmark::AddCustomContext("spdlog", BENCH_SPDLOG_VERSION);
  if (*BENCH_QUILL_VERSION != '\0') {
    benchmark::AddCustomContext("quill", BENCH_QUILL_VERSION);
  }
  benchmark::AddCustomContext("glog", BENCH_GLOG_VERSION);
  benchmark::AddCustomContext("Boost.Log", BENCH_BOOST_VERSION);
  benchmark::AddCustomContext("Google Benchmark", BENCH_BENCHMARK_VERSION);
  benchmark::Initialize(&argumentCount, arguments);
  if (benchmark::ReportUnrecognizedArguments(argumentCount, arguments)) {
    return 2;
  }
  try {
    benchmark::RunSpecifiedBenchmarks();
  } catch (const std::exception& failure) {
    std::cerr << arguments[0] << ": " << failure.what() << '\n';
    return 1;
  }
  benchmark::Shutdown();
  return 0;
}
