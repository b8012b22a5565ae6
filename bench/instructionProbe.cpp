// Runs one operation many times, for a tool that counts the instructions of measuredPart().
//
//   instructionProbe OPERATION TIMES
//
// OPERATION is nothing, whose count is what the others have in common; disabled_log4zeb_method,
// disabled_log4zeb_macro, disabled_spdlog; lookup_log4zeb, lookup_log4zeb_literal, lookup_spdlog;
// or a log, such as log4zeb_kernel, whose messages are formatted where _formatted is behind it.

#include <spdlog/spdlog.h>

#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

#include "bench/LogCatalogue.h"
#include "bench/MeasuredPart.h"
#include "bench/QuietLoggers.h"
#include "bench/ScratchDirectory.h"
#include "bench/Workload.h"
#include "log4zeb.h"

namespace {

using Operation = std::function<void()>;

constexpr int LOGGERS = 1000;
constexpr int WARM_UP = 100;

/// A name that both libraries find among others.
std::string lookedUpName() {
  QuietLoggers::registerWithBoth(LOGGERS);
  return QuietLoggers::name(LOGGERS / 2);
}

/// The operations that write nothing, each made with all that it needs.
const std::map<std::string, std::function<Operation()>>& calls() {
  static const std::map<std::string, std::function<Operation()>> all{
      {"nothing", [] { return Operation([] {}); }},
      {"disabled_log4zeb_method",
       [] {
         return Operation([logger = QuietLoggers::log4zeb()] { logger->debug(workload::MESSAGE); });
       }},
      {"disabled_log4zeb_macro",
       [] {
         return Operation(
             [logger = QuietLoggers::log4zeb()] { LOG4ZEB_DEBUG(logger, workload::MESSAGE); });
       }},
      {"disabled_spdlog",
       [] {
         return Operation([logger = QuietLoggers::spdlog("app.db.tx.rollback")] {
           logger->debug(workload::MESSAGE);
         });
       }},
      {"lookup_log4zeb",
       [] {
         return Operation([name = I18NString(lookedUpName())] { LOGManager::getLogger(name); });
       }},
      {"lookup_log4zeb_literal",
       [] { return Operation([name = lookedUpName()] { LOGManager::getLogger(name.c_str()); }); }},
      {"lookup_spdlog", [] { return Operation([name = lookedUpName()] { spdlog::get(name); }); }},
  };
  return all;
}

void warmUpAndMeasure(const Operation& operation, int times) {
  for (int i = 0; i < WARM_UP; ++i) {
    operation();
  }
  measuredPart(operation, times);
}

int probeLog(std::string name, int times) {
  constexpr std::string_view FORMATTED = "_formatted";
  const std::size_t end = name.find(FORMATTED);
  const bool isFormatted = end != std::string::npos && end + FORMATTED.size() == name.size();
  name.resize(isFormatted ? end : name.size());
  const ScratchDirectory directory;
  const std::unique_ptr<LogUnderTest> log = LogCatalogue::make(name, directory.path());
  if (log == nullptr || times > workload::BURST_EVENTS) {
    std::cerr << "instructionProbe: no such operation, or more than " << workload::BURST_EVENTS
              << " times\n";
    return 2;
  }
  warmUpAndMeasure(isFormatted ? Operation([&log] { log->logNumber(workload::NUMBER); })
                               : Operation([&log] { log->log(); }),
                   times);
  log->finish();
  if (directory.lines() != times + WARM_UP) {
    std::cerr << "instructionProbe: lines are missing\n";
    return 1;
  }
  return 0;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const int times = argumentCount == 3 ? std::atoi(arguments[2]) : 0;
  if (times < 1) {
    std::cerr << "usage: instructionProbe OPERATION TIMES\n";
    return 2;
  }
  std::thread([] {}).join();  // what is counted is the work of a process with threads
  const auto call = calls().find(arguments[1]);
  if (call == calls().end()) {
    return probeLog(arguments[1], times);
  }
  warmUpAndMeasure(call->second(), times);
  return 0;
}
