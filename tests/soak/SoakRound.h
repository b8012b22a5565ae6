#ifndef SOAK_SOAKROUND_H
#define SOAK_SOAKROUND_H

#include <atomic>
#include <chrono>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "soak/SoakDisturber.h"
#include "soak/SoakFigures.h"
#include "soak/SoakLedger.h"
#include "soak/SoakReceiver.h"

/// One life of the library: from a document to the shutdown, with threads that log through all
/// appenders while documents are read, things fail and settings change. Afterwards every line is
/// accounted for.
class SoakRound {
 public:
  /// What happened, counted over all rounds, and what the process used just before a shutdown.
  struct Totals {
    std::map<std::string, long> counts;
    SoakFigures atWork;
  };

  /// The working directory is empty, and diagnostics are written in it.
  SoakRound(unsigned seed, long index, Totals& totals);

  /// Returns what is wrong, nothing if all is well.
  std::vector<std::string> run(std::chrono::milliseconds duration);

 private:
  static constexpr int WORKERS = 4;
  static constexpr int DISTURBER = 2 * WORKERS;  // as a source; a worker is two

  void live(std::chrono::milliseconds duration);
  void work(int worker);
  void logOne(int worker, SoakRandom& random);
  std::string anyLoggerName(SoakRandom& random) const;
  void reload();

  void judge();
  SoakLedger& ledger(const std::string& name);
  SoakLedger& ledgerOfFile(const std::string& name, const std::string& begin = "",
                           const std::string& end = "\r\n");
  void judgeFiles();
  void judgeVanishing(const SoakLedger& steady);
  void judgeDatagrams();
  void judgeDiagnostics();

  const unsigned m_seed;
  const long m_index;
  Totals& m_totals;
  std::atomic<bool> m_stops{false};
  std::atomic<long> m_sent[2 * WORKERS] = {};
  long m_directReloads = 0;
  SoakReceiver m_syslog;
  SoakReceiver m_records;
  SoakDisturber m_disturber;
  std::deque<SoakLedger> m_ledgers;
};

#endif
