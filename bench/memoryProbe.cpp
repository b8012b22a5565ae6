// What loggers and events take from the heap, measured in a fresh process and printed as JSON.
//
//   memoryProbe loggers log4zeb|spdlog COUNT    peak memory and allocations of so many loggers
//   memoryProbe events LOG                      allocations of an event in steady state

#include <spdlog/spdlog.h>

#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>

#include "bench/AllocationCounter.h"
#include "bench/LogCatalogue.h"
#include "bench/QuietLoggers.h"
#include "bench/ScratchDirectory.h"
#include "bench/Workload.h"
#include "core/LOGManager.h"

namespace {

constexpr int BURSTS = 10;

/// The most memory that the process ever had, in bytes; 0 where the system does not tell.
long peakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word == "VmHWM:") {
      long kibibytes = 0;
      status >> kibibytes;
      return kibibytes * 1024;
    }
  }
  return 0;
}

void makeLog4zebLoggers(int count) {
  for (int i = 0; i < count; ++i) {
    LOGManager::getLogger(QuietLoggers::name(i));
  }
}

void makeSpdlogLoggers(int count) {
  for (int i = 0; i < count; ++i) {
    spdlog::register_logger(QuietLoggers::spdlog(QuietLoggers::name(i)));
  }
}

int probeLoggers(const std::string& library, int count) {
  const long before = peakMemory();
  AllocationCounter::start();
  if (library == "log4zeb") {
    makeLog4zebLoggers(count);
  } else {
    makeSpdlogLoggers(count);
  }
  const AllocationCounter::Count taken = AllocationCounter::stop();
  std::cout << "{\"probe\": \"loggers\", \"library\": \"" << library << "\", \"loggers\": " << count
            << ", \"peak_bytes\": " << peakMemory() - before
            << ", \"allocations\": " << taken.allocations << ", \"bytes\": " << taken.bytes
            << "}\n";
  return 0;
}

void logBursts(LogUnderTest& log, int bursts) {
  for (int burst = 0; burst < bursts; ++burst) {
    for (int i = 0; i < workload::BURST_EVENTS; ++i) {
      log.log();
    }
    log.drain();
  }
}

int probeEvents(const std::string& name) {
  const ScratchDirectory directory;
  const std::unique_ptr<LogUnderTest> log = LogCatalogue::make(name, directory.path());
  if (log == nullptr) {
    std::cerr << "memoryProbe: there is no log " << name << '\n';
    return 2;
  }
  logBursts(*log, 2);  // until all that is made once is made
  AllocationCounter::start();
  logBursts(*log, BURSTS);
  const AllocationCounter::Count taken = AllocationCounter::stop();
  log->finish();
  const long events = static_cast<long>(BURSTS) * workload::BURST_EVENTS;
  if (directory.lines() != events + 2L * workload::BURST_EVENTS) {
    std::cerr << "memoryProbe: lines are missing\n";
    return 1;
  }
  std::cout << "{\"probe\": \"events\", \"log\": \"" << name << "\", \"events\": " << events
            << ", \"allocations\": " << taken.allocations << ", \"bytes\": " << taken.bytes
            << "}\n";
  return 0;
}

int run(int argumentCount, char** arguments) {
  const std::string what = argumentCount > 2 ? arguments[1] : "";
  const std::string which = argumentCount > 2 ? arguments[2] : "";
  const int count = argumentCount == 4 ? std::atoi(arguments[3]) : 0;
  AllocationCounter::requireThatLibraryIsCounted();
  if (what == "loggers" && (which == "log4zeb" || which == "spdlog") && count > 0) {
    return probeLoggers(which, count);
  }
  if (what == "events" && argumentCount == 3) {
    return probeEvents(which);
  }
  std::cerr << "usage: memoryProbe loggers log4zeb|spdlog COUNT, or memoryProbe events LOG\n";
  return 2;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  try {
    return run(argumentCount, arguments);
  } catch (const std::exception& failure) {
    std::cerr << "memoryProbe: " << failure.what() << '\n';
    return 1;
  }
}
