// Lives through round after round of logging under every disturbance that there is, accounts for
// every line, and compares what the process uses before and after.
//
//   soak SECONDS [SEED]
//
// Ends with 0 when nothing was lost, torn, left over or complained about.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>

#include "soak/SoakRound.h"
#include "support/Workplace.h"

namespace fs = std::filesystem;

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds LONGEST_ROUND{15000};
/// Rounds until the pools, tables and buffers that a process keeps have their size.
constexpr long WARM_UP_ROUNDS = 2;
constexpr long HEAP_TOLERANCE = 64 * 1024;
/// What a logger that a round created keeps, with its entry and those of its ancestors.
constexpr long HEAP_PER_LOGGER = 1536;
constexpr long RESIDENT_TOLERANCE = 16 * 1024 * 1024;
/// Files, sockets and what the program itself has open at any one moment.
constexpr long DESCRIPTORS_AT_WORK = 60;

/// Runs a round in a directory of its own, which is kept when something is wrong.
std::vector<std::string> runRound(unsigned seed, long index, milliseconds duration,
                                  SoakRound::Totals& totals) {
  const Workplace workplace;
  std::vector<std::string> complaints;
  {
    SoakRound round(seed + 1000 * static_cast<unsigned>(index), index, totals);
    complaints = round.run(duration);
  }
  if (totals.atWork.descriptors > DESCRIPTORS_AT_WORK) {
    complaints.push_back("too much is open at work: " + totals.atWork.text());
  }
  if (!complaints.empty()) {
    const fs::path kept = fs::temp_directory_path() / ("log4zeb-soak-" + std::to_string(seed));
    fs::remove_all(kept);
    fs::copy(fs::current_path(), kept, fs::copy_options::recursive);
    complaints.push_back("in round " + std::to_string(index) + "; its files are in " +
                         kept.string());
  }
  return complaints;
}

void compare(const SoakFigures& before, const SoakFigures& after, long loggers,
             std::vector<std::string>& complaints) {
  if (after.heapBytes > before.heapBytes + HEAP_TOLERANCE + HEAP_PER_LOGGER * loggers) {
    complaints.push_back("memory is not given back");
  }
  if (SOAK_UNDER_SANITIZER == 0 &&
      after.residentBytes > before.residentBytes + RESIDENT_TOLERANCE) {
    complaints.push_back("the process has grown");
  }
  if (after.descriptors != before.descriptors || after.threads != before.threads) {
    complaints.push_back("descriptors or threads are left over");
  }
}

void summarise(double minutes, long rounds, const SoakRound::Totals& totals,
               const SoakFigures& before, const SoakFigures& after) {
  std::printf("%.1f minutes, %ld rounds\n", minutes, rounds);
  for (const auto& [what, count] : totals.counts) {
    std::printf("%10ld %s\n", count, what.c_str());
  }
  std::printf("before: %s\nat work: %s\nafter: %s\n", before.text().c_str(),
              totals.atWork.text().c_str(), after.text().c_str());
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount < 2) {
    std::fprintf(stderr, "usage: soak SECONDS [SEED]\n");
    return 2;
  }
  const milliseconds whole(static_cast<long>(1000 * std::strtod(arguments[1], nullptr)));
  const unsigned seed = argumentCount > 2
                            ? static_cast<unsigned>(std::strtoul(arguments[2], nullptr, 10))
                            : std::random_device()() % 1000000;
  std::printf("seed %u\n", seed);
  std::fflush(stdout);
  const milliseconds length = std::min(LONGEST_ROUND, whole / (WARM_UP_ROUNDS + 2));
  const auto begin = Clock::now();
  const auto isOver = [&] { return Clock::now() - begin + length / 2 > whole; };
  SoakRound::Totals totals;
  SoakFigures before;
  long round = 0;
  long loggersBefore = 0;
  std::vector<std::string> complaints;
  for (; complaints.empty() && (round <= WARM_UP_ROUNDS || !isOver()); ++round) {
    if (round == WARM_UP_ROUNDS) {
      before = SoakFigures::now();
      loggersBefore = totals.counts["loggers created"];
    }
    complaints = runRound(seed, round, length, totals);
  }
  const SoakFigures after = SoakFigures::now();
  if (complaints.empty()) {
    compare(before, after, totals.counts["loggers created"] - loggersBefore, complaints);
  }
  summarise(std::chrono::duration<double>(Clock::now() - begin).count() / 60, round, totals, before,
            after);
  for (const std::string& complaint : complaints) {
    std::printf("BREACH %s\n", complaint.c_str());
  }
  return complaints.empty() ? 0 : 1;
}
