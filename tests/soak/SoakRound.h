#ifndef SOAK_SOAKROUND_H
#define SOAK_SOAKROUND_H

#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
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
  /// What happened, to be added up over rounds.
  struct Totals {
    long events = 0;
    long watchedReloads = 0;
    long directReloads = 0;
    long rollovers = 0;
    long refused = 0;
    long found = 0;  // whole lines in all destinations together
    long syslogDatagrams = 0;
    long records = 0;
    long vanishings = 0;
    long daemonStops = 0;
    long loggers = 0;
    SoakFigures atWork;  // just before the last shutdown
  };

  /// The working directory is empty, and diagnostics are written in it.
  SoakRound(unsigned seed, long index);

  /// Returns what is wrong, nothing if all is well.
  std::vector<std::string> run(std::chrono::milliseconds duration, Totals& totals);

 private:
  static constexpr int WORKERS = 4;
  static constexpr int DISTURBER = 2 * WORKERS;  // as a source; a worker is two

  void live(std::chrono::milliseconds duration, Totals& totals);
  void work(int worker);
  void logOne(int worker, SoakRandom& random);
  std::string anyLoggerName(SoakRandom& random) const;
  void reload(long& direct);

  void judge(Totals& totals);
  SoakLedger& ledger(const std::string& name);
  SoakLedger& ledgerOfFile(const std::string& name, const std::string& begin = "",
                           const std::string& end = "\r\n");
  void judgeFiles(Totals& totals);
  void judgeVanishing(const SoakLedger& steady, Totals& totals);
  void judgeDatagrams(Totals& totals);
  void judgeDiagnostics();

  const unsigned m_seed;
  const long m_index;
  std::atomic<bool> m_stops{false};
  std::atomic<long> m_sent[2 * WORKERS] = {};
  SoakReceiver m_syslog;
  SoakReceiver m_records;
  SoakDisturber m_disturber;
  std::deque<SoakLedger> m_ledgers;
};

#endif
