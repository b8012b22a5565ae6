#include "soak/SoakRound.h"

#include <filesystem>
#include <thread>

#include "config/LOG4ZEBConfigurator.h"
#include "config/LOGXMLWatchdog.h"
#include "core/LOGLogger.h"
#include "core/LOGManager.h"
#include "core/LOGNDC.h"
#include "soak/SoakDocument.h"
#include "soak/SoakLine.h"
#include "support/RedirectedStream.h"
#include "support/Workplace.h"
#include "tools/RecordDecoder.h"

namespace fs = std::filesystem;

namespace {

constexpr int SYSLOG_PORT = 514;
constexpr unsigned POOL = 32;          // loggers that every round has
constexpr unsigned FRESH_LOGGERS = 8;  // loggers that a round adds to each of the two trees
constexpr long MOST_BACKUPS_OF_FEW = 3;

/// Counts what it reads.
class CountingWatchdog : public LOGXMLWatchdog {
 public:
  using LOGXMLWatchdog::LOGXMLWatchdog;
  ~CountingWatchdog() override { stop(); }
  void doOnChange() override {
    LOGXMLWatchdog::doOnChange();
    ++readings;
  }
  std::atomic<long> readings{0};
};

}  // namespace

SoakRound::SoakRound(unsigned seed, long index, Totals& totals)
    : m_seed(seed),
      m_index(index),
      m_totals(totals),
      m_syslog(SoakDocument::syslogHost(), SYSLOG_PORT),
      m_records("127.0.0.1", 0),
      m_disturber(seed + 1, DISTURBER, m_syslog, m_records) {}

std::vector<std::string> SoakRound::run(std::chrono::milliseconds duration) {
  live(duration);
  judge();
  std::vector<std::string> complaints;
  for (const SoakLedger& ledger : m_ledgers) {
    complaints.insert(complaints.end(), ledger.complaints().begin(), ledger.complaints().end());
    m_totals.counts["lines found whole and once"] += ledger.count();
  }
  return complaints;
}

void SoakRound::live(std::chrono::milliseconds duration) {
  fs::create_directory("roll");
  fs::create_directory(SoakDisturber::LOST_DIRECTORY);
  fs::create_directory(SoakDisturber::MOVED_DIRECTORY);
  SoakDisturber::prime();
  SoakRandom random(m_seed + 2);
  SoakDocument::replace(SoakDocument::text(m_records.port(), random));
  const RedirectedStream console(1, "console.log");
  CountingWatchdog watchdog(SoakDocument::FILE);
  LOGXMLWatchdog::setDelay(20);
  watchdog.start();
  std::vector<std::thread> threads;
  for (int worker = 0; worker < WORKERS; ++worker) {
    threads.emplace_back([this, worker] { work(worker); });
  }
  threads.emplace_back([this] { reload(); });
  threads.emplace_back([this] {
    while (!m_stops) {
      m_disturber.disturb();
    }
  });
  std::this_thread::sleep_for(duration);
  m_stops = true;
  for (std::thread& thread : threads) {
    thread.join();
  }
  watchdog.stop();
  m_totals.counts["reloads by the watchdog"] += watchdog.readings;
  m_totals.atWork = SoakFigures::now();
  LOG4ZEBConfigurator::shutdown();
}

void SoakRound::work(int worker) {
  SoakRandom random(m_seed + 10 + static_cast<unsigned>(worker));
  while (!m_stops) {
    if (random.oneIn(8) && LOGNDC::getDepth() < 4) {
      LOGNDC::push("context " + std::to_string(random.below(100)));
    } else if (random.oneIn(8)) {
      LOGNDC::pop();
    }
    logOne(worker, random);
    if (random.oneIn(8)) {
      random.nap(4);
    }
  }
  LOGNDC::remove();
}

void SoakRound::logOne(int worker, SoakRandom& random) {
  LOGLogger* const logger = LOGManager::getLogger(anyLoggerName(random));
  const unsigned choice = random.below(6);
  // What is severe is never disabled; the rest is another source.
  const int source = choice < 3 ? worker : WORKERS + worker;
  const std::string text = SoakLine{source, m_sent[source]++}.text();
  switch (choice) {
    case 0:
      return logger->fatal(text);
    case 1:
    case 2:
      return logger->error(text);
    case 3:
      return logger->warn(text);
    case 4:
      return logger->info(text);
    default:
      return logger->debug(text);
  }
}

std::string SoakRound::anyLoggerName(SoakRandom& random) const {
  const std::string tree = random.oneIn(2) ? "soak.even" : "soak.odd";
  switch (random.below(4)) {
    case 0:
      return tree;
    case 1:
      return tree + ".round." + std::to_string(m_index) + "." +
             std::to_string(random.below(FRESH_LOGGERS));
    default:
      return tree + ".pool." + std::to_string(random.below(POOL));
  }
}

void SoakRound::reload() {
  SoakRandom random(m_seed + 3);
  while (!m_stops) {
    const std::string text = SoakDocument::text(m_records.port(), random);
    if (random.oneIn(8)) {
      SoakDocument::replace(text.substr(0, random.below(text.size())));
      random.nap(40);
    }
    SoakDocument::replace(text);
    if (random.oneIn(2)) {
      LOG4ZEBConfigurator::initialize(SoakDocument::FILE);
      ++m_directReloads;
    }
    random.nap(120);
  }
}

SoakLedger& SoakRound::ledger(const std::string& name) {
  std::vector<long> sent(std::begin(m_sent), std::end(m_sent));
  sent.push_back(m_disturber.sent());
  return m_ledgers.emplace_back(name, sent);
}

SoakLedger& SoakRound::ledgerOfFile(const std::string& name, const std::string& begin,
                                    const std::string& end) {
  SoakLedger& made = ledger(name);
  made.addFile(name, begin, end);
  return made;
}

void SoakRound::judge() {
  for (const std::atomic<long>& sent : m_sent) {
    m_totals.counts["events"] += sent;
  }
  m_totals.counts["events"] += m_disturber.sent();
  m_totals.counts["times without a directory"] += m_disturber.vanishings();
  m_totals.counts["stops of a daemon"] += m_disturber.daemonStops();
  m_totals.counts["direct reloads"] += m_directReloads;
  m_totals.counts["loggers created"] += 2 * FRESH_LOGGERS;
  judgeFiles();
  judgeDatagrams();
  judgeDiagnostics();
}

void SoakRound::judgeFiles() {
  SoakLedger& steady = ledgerOfFile("steady.log");
  for (int worker = 0; worker < WORKERS; ++worker) {
    steady.requireAllOf(worker);
  }
  steady.requireOrder();
  // All of these get the same events. Behind a queue, those of an old and a new one may change
  // places; in rolling files, those of backups do.
  for (SoakLedger* const ordered :
       {&ledgerOfFile("console.log"),
        &ledgerOfFile("xml.log", "<log4j:event ", "</log4j:event>\r\n\r\n"),
        &ledgerOfFile("html.log", "\r\n<tr>\r\n", "</tr>\r\n")}) {
    ordered->requireOrder();
    ordered->requireSameAs(steady);
  }
  ledgerOfFile("async.log").requireSameAs(steady);
  SoakLedger& rolled = ledger("roll/all.log");
  m_totals.counts["rollovers"] += rolled.addFiles("roll", "all.log", "", "\r\n") - 1;
  rolled.requireSameAs(steady);
  SoakLedger& few = ledger("roll/few.log");
  if (few.addFiles("roll", "few.log", "", "\r\n") > MOST_BACKUPS_OF_FEW + 1) {
    few.complain("there are more backups than configured");
  }
  SoakLedger& added = ledgerOfFile("added.log");
  added.requireAllOf(DISTURBER);
  added.requireOrder();
  ledgerOfFile("guest.log");
  judgeVanishing(steady);
}

void SoakRound::judgeVanishing(const SoakLedger& steady) {
  for (const auto& [appender, file] :
       {std::pair{"MOVED", "plain.log"}, std::pair{"LOST", "rolled.log"}}) {
    SoakLedger& vanishing = ledger(appender);
    vanishing.addFiles(".", file, "", "\r\n");
    const long refused = Workplace::errors("Attempted to append to closed appender named [" +
                                           std::string(appender) + "].");
    m_totals.counts["lines refused with a report"] += refused;
    if (vanishing.count() + refused != steady.count()) {
      vanishing.complain(std::to_string(vanishing.count()) + " lines and " +
                         std::to_string(refused) + " refusals reported for " +
                         std::to_string(steady.count()) + " events");
    }
  }
}

void SoakRound::judgeDatagrams() {
  SoakLedger& syslog = ledger("syslog");
  for (const std::string& datagram : m_syslog.finish()) {
    syslog.add(datagram);
  }
  m_totals.counts["syslog datagrams received"] += syslog.count();
  SoakLedger& records = ledger("records");
  for (const std::string& datagram : m_records.finish()) {
    const auto record = RecordDecoder::decode(datagram);
    records.add(record && record->message ? *record->message : "no record");
  }
  m_totals.counts["records received"] += records.count();
}

void SoakRound::judgeDiagnostics() {
  static const char* const EXPECTED[] = {
      "ERROR Attempted to append to closed appender named [MOVED].",
      "ERROR Attempted to append to closed appender named [LOST].",
      "ERROR Could not parse the document",
      "ERROR soak.xml",
      "ERROR LOGRollingFileAppender::rollOver ---- Could not rename [lost/",
      "ERROR LOGRollingFileAppender::setFile -- LOGGING DISABLED -- UNABLE TO OPEN LOG FILE.",
      "WARN LOGTCPSocketAppender::activateOptions -- there is no connector",
  };
  SoakLedger& diagnostics = ledger("log4zeb.log");
  for (const std::string& line : Workplace::diagnostics()) {
    if (line.rfind("log4zeb: ", 0) == 0) {
      continue;
    }
    bool isExpected = false;
    for (const char* const expected : EXPECTED) {
      isExpected = isExpected || line.rfind(std::string("log4zeb:") + expected, 0) == 0;
    }
    if (!isExpected) {
      diagnostics.complain("unexpected: " + line);
    }
  }
}
