// Calls that write nothing: a request whose level is off, and the look-up of a logger by its name.

#include <benchmark/benchmark.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/BenchmarkRun.h"
#include "bench/QuietLoggers.h"
#include "bench/Workload.h"
#include "log4zeb.h"

namespace {

constexpr int LOGGERS = 1000;

void disabledMethod(benchmark::State& state) {
  LOGLogger* logger = QuietLoggers::log4zeb();
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(logger);
    logger->debug(workload::MESSAGE);
  }
}

void disabledMacro(benchmark::State& state) {
  LOGLogger* logger = QuietLoggers::log4zeb();
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(logger);
    LOG4ZEB_DEBUG(logger, workload::MESSAGE);
  }
}

void disabledSpdlog(benchmark::State& state) {
  const std::shared_ptr<spdlog::logger> owner = QuietLoggers::spdlog("app.db.tx.rollback");
  spdlog::logger* logger = owner.get();
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(logger);
    logger->debug(workload::MESSAGE);
  }
}

/// The names in an order that no cache guesses, or one of them over and over.
enum class Names { Shuffled, Same };

template <typename Name>
std::vector<Name> namesToLookUp(Names order) {
  std::vector<int> numbers(LOGGERS);
  for (int i = 0; i < LOGGERS; ++i) {
    numbers[static_cast<std::size_t>(i)] = order == Names::Shuffled ? i : LOGGERS / 2;
  }
  std::shuffle(numbers.begin(), numbers.end(), std::minstd_rand());
  std::vector<Name> names;
  names.reserve(numbers.size());
  for (const int number : numbers) {
    names.emplace_back(QuietLoggers::name(number));
  }
  return names;
}

/// Times `lookUp` with one name after the other, and checks that it finds a logger for each.
template <typename Name, typename LookUp>
void timeLookUps(benchmark::State& state, Names order, LookUp lookUp) {
  const std::vector<Name> names = namesToLookUp<Name>(order);
  for (const Name& name : names) {
    if (lookUp(name) == nullptr) {
      state.SkipWithError("a logger was not found");
      return;
    }
  }
  std::size_t next = 0;
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(lookUp(names[next]));
    next = next + 1 == names.size() ? 0 : next + 1;
  }
}

void lookUpText(benchmark::State& state, Names order) {
  timeLookUps<I18NString>(state, order,
                          [](const I18NString& name) { return LOGManager::getLogger(name); });
}

/// As code that calls getLogger() with a literal each time; the text is converted in every call.
void lookUpLiteral(benchmark::State& state, Names order) {
  timeLookUps<std::string>(
      state, order, [](const std::string& name) { return LOGManager::getLogger(name.c_str()); });
}

void lookUpSpdlog(benchmark::State& state, Names order) {
  timeLookUps<std::string>(state, order, [](const std::string& name) { return spdlog::get(name); });
}

void registerAll() {
  benchmark::RegisterBenchmark("disabled/log4zeb_method", disabledMethod);
  benchmark::RegisterBenchmark("disabled/log4zeb_macro", disabledMacro);
  benchmark::RegisterBenchmark("disabled/spdlog", disabledSpdlog);
  benchmark::RegisterBenchmark("lookup_shuffled/log4zeb", lookUpText, Names::Shuffled);
  benchmark::RegisterBenchmark("lookup_shuffled/log4zeb_literal", lookUpLiteral, Names::Shuffled);
  benchmark::RegisterBenchmark("lookup_shuffled/spdlog", lookUpSpdlog, Names::Shuffled);
  benchmark::RegisterBenchmark("lookup_same/log4zeb", lookUpText, Names::Same);
  benchmark::RegisterBenchmark("lookup_same/log4zeb_literal", lookUpLiteral, Names::Same);
  benchmark::RegisterBenchmark("lookup_same/spdlog", lookUpSpdlog, Names::Same);
}

}  // namespace

int main(int argumentCount, char** arguments) {
  QuietLoggers::registerWithBoth(LOGGERS);
  registerAll();
  return runBenchmarks(argumentCount, arguments);
}
