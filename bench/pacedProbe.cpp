// What a call costs a thread that logs an event every 20 microseconds, as servers do, with a
// processor for it and another for the thread behind the queue. One run is one block of events.
//
//   pacedProbe LOG EVENTS

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "bench/CpuPlacement.h"
#include "bench/LogCatalogue.h"
#include "bench/ScratchDirectory.h"

namespace {

using Clock = std::chrono::steady_clock;
using Nanoseconds = std::chrono::nanoseconds;

constexpr int WARM_UP = 1000;
constexpr int CLOCK_READINGS = 10000;
/// The pause differs at random, so that events keep no step with the kernel's clock, which counts
/// what else runs.
constexpr Nanoseconds SHORTEST_PAUSE{19000};
constexpr unsigned PAUSE_SPREAD = 2001;

std::int64_t since(Clock::time_point begin) {
  return std::chrono::duration_cast<Nanoseconds>(Clock::now() - begin).count();
}

/// The value below which so much of a share of them is.
std::int64_t percentile(std::vector<std::int64_t> times, double share) {
  const auto wanted =
      times.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(times.size() - 1));
  std::nth_element(times.begin(), wanted, times.end());
  return *wanted;
}

std::int64_t costOfClock() {
  std::vector<std::int64_t> times;
  times.reserve(CLOCK_READINGS);
  for (int i = 0; i < CLOCK_READINGS; ++i) {
    times.push_back(since(Clock::now()));
  }
  return percentile(std::move(times), 0.5);
}

/// An event that is late does not make the next ones come earlier.
std::vector<std::int64_t> logPaced(LogUnderTest& log, int events) {
  std::vector<std::int64_t> times(static_cast<std::size_t>(events));  // its memory is touched
  std::minstd_rand random(1);
  Clock::time_point due = Clock::now();
  for (std::int64_t& time : times) {
    due = std::max(due + SHORTEST_PAUSE + Nanoseconds(random() % PAUSE_SPREAD), Clock::now());
    while (Clock::now() < due) {
    }
    const Clock::time_point begin = Clock::now();
    log.log();
    time = since(begin);
  }
  return times;
}

int run(const std::string& name, int events) {
  const ScratchDirectory directory;
  const std::unique_ptr<LogUnderTest> log = LogCatalogue::make(name, directory.path());
  if (log == nullptr) {
    std::cerr << "pacedProbe: there is no log " << name << '\n';
    return 2;
  }
  log->log();  // the thread behind the queue is there afterwards
  log->drain();
  CpuPlacement::setCallerApart();
  const std::int64_t clock = costOfClock();
  logPaced(*log, WARM_UP);
  CpuPlacement::markForTracer();
  const std::vector<std::int64_t> times = logPaced(*log, events);
  CpuPlacement::markForTracer();
  log->finish();
  if (directory.lines() != 1L + WARM_UP + events) {
    std::cerr << "pacedProbe: lines are missing\n";
    return 1;
  }
  std::cout << "{\"log\": \"" << name << "\", \"events\": " << events << ", \"clock\": " << clock
            << ", \"median\": " << percentile(times, 0.5) - clock
            << ", \"percentile_99\": " << percentile(times, 0.99) - clock << "}\n";
  return 0;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const int events = argumentCount == 3 ? std::atoi(arguments[2]) : 0;
  if (events < 1) {
    std::cerr << "usage: pacedProbe LOG EVENTS\n";
    return 2;
  }
  std::thread([] {}).join();  // what is measured is a process with threads
  try {
    return run(arguments[1], events);
  } catch (const std::exception& failure) {
    std::cerr << "pacedProbe: " << failure.what() << '\n';
    return 1;
  }
}
