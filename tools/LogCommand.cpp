#include <CLI/CLI.hpp>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <iostream>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "config/LOGDOMConfigurator.h"
#include "config/LOGXMLWatchdog.h"
#include "log4zeb.h"
#include "platform/ZEBIDOM_DOMImplementation.h"
#include "platform/ZEBIDOM_Document.h"
#include "platform/ZEBIDOM_Element.h"
#include "platform/ZEBIDOM_Parser.h"
#include "platform/ZEBUtTerminal.h"
#include "tools/CommandSupport.h"
#include "tools/LineLevel.h"
#include "tools/LineReader.h"
#include "tools/LogDestinations.h"
#include "tools/StopSignal.h"
#include "tools/Subcommand.h"

namespace fs = std::filesystem;

/// Tells also whether the time of the document's file let it look at the document.
class DocumentWatchdog : public LOGXMLWatchdog {
 public:
  using LOGXMLWatchdog::LOGXMLWatchdog;
  ~DocumentWatchdog() override { stop(); }
  using LOGFileWatchdog::hasSeenChange;
};

namespace {

constexpr const char* STANDARD_INPUT = "-";

// Milliseconds; a day is longer than anybody waits for an edit.
constexpr unsigned int LONGEST_WATCH_DELAY = 24 * 60 * 60 * 1000;

constexpr const char* NOTES =
    R"(With --watch, an edit of the document takes effect while lines are logged. An edit that
cannot be applied changes nothing; what lets nothing be logged is only refused at the start.
Put a new document in place with mv: one that is missing at a look is not watched any longer.

The number of lines read, and of those whose level was enabled, is reported on standard
error at the end.

Exit codes:
  0        every line was read
  1        unexpected failure, such as no memory
  2        bad arguments
  3        the document cannot be read, or lets nothing be logged
  4        the input cannot be read
  5        the document has an appender for the console, and nobody reads standard output any
           more; the lines logged until then are where they belong. Or a line could not be
           written to it; with --watch, since the document was last applied
  128 + n  ended by signal n, such as 130 after an interrupt; the lines logged until then
           are where they belong)";

/// What ends a complaint of a document that was read.
std::string whereToLook(const std::string& document) {
  return "; 'log4zeb check " + document + "' tells more";
}

/// Why the library did not apply a document that is there.
std::string whyNotApplied(const I18NString& document, const DocumentWatchdog* watchdog) {
  ZEBIDOM_Document parsed = ZEBIDOM_DOMImplementation::getInstance().createDocument();
  ZEBIDOM_Parser parser(0);
  if (parser.parse(document, parsed) == 0) {
    const std::string line = std::to_string(parser.getErrorLine());
    return (line == "0" ? "" : "line " + line + ": ") + parser.getErrorReason().toStdString();
  }
  const std::string tag = parsed.getDocumentElement().getTagName().toStdString();
  if (tag != "log4j:configuration" && tag != "configuration") {
    return "its root element is not log4j:configuration";
  }
  return watchdog != nullptr && !watchdog->hasSeenChange()
             ? "--watch takes a document for unchanged whose time is not after 1970-01-01 00:00 UTC"
             : "the library's diagnostics say why";
}

void complainOfDocument(const std::string& document, const DocumentWatchdog* watchdog) {
  const I18NString name = I18NString::fromUtf8(document);
  std::string reason;
  if (name.toStdString() != document) {
    reason = "its name is not UTF-8";
  } else if (std::error_code unknown;
             fs::is_other(fs::u8path(document), unknown)) {  // it may have nothing more to read
    reason = watchdog != nullptr
                 ? "a pipe or a device is not watched"
                 : "it is not well-formed XML with the root element log4j:configuration";
  } else if (std::ifstream file;
             CommandSupport::openToRead(file, document, "configuration document")) {
    reason = whyNotApplied(name, watchdog);
  } else {
    return;
  }
  CommandSupport::say("cannot apply the configuration document '" + document + "': " + reason +
                      whereToLook(document));
}

/// Returns the logger, once the document was applied; complains and returns null when nothing that
/// is logged through it would arrive anywhere.
LOGLogger* usableLogger(const std::string& document, const std::string& loggerName) {
  if (!LogDestinations::hasAnyLoggerAppenders()) {
    CommandSupport::say("the configuration document '" + document +
                        "' configures nothing: no logger has an appender" + whereToLook(document));
    return nullptr;
  }
  LOGLogger* const logger =
      loggerName.empty() ? LOGManager::getRootLogger() : LOGManager::getLogger(loggerName);
  const bool hasAppenders = LogDestinations::hasAppenders(logger);
  if (!hasAppenders || !LogDestinations::canLog(logger)) {
    CommandSupport::say(
        "the configuration document '" + document + "' " +
        (hasAppenders ? "lets no line be written or sent by " : "has no appender for ") +
        (loggerName.empty() ? "the root logger" : "the logger '" + loggerName + "'") +
        (hasAppenders ? ": levels, filters, or appenders without what they need prevent it" : "") +
        whereToLook(document));
    return nullptr;
  }
  return logger;
}

// How soon a stop signal is answered.
constexpr std::chrono::milliseconds ATTENTION(50);
// A log call takes microseconds; one that takes this long waits for somebody who does not come.
constexpr std::chrono::seconds PATIENCE(2);

/// A line on standard error that counts on while a long job runs. It appears after one second, and
/// only on a terminal.
class ProgressLine {
 public:
  /// Shows the number if it changed, at most five times a second.
  void show(std::uint64_t lines) {
    if (m_isWanted && lines != m_shown && Clock::now() >= m_next) {
      const std::string text = "log4zeb: " + std::to_string(lines) + " lines read so far";
      std::cerr << '\r' + text;
      m_width = text.size();
      m_shown = lines;
      m_next = Clock::now() + std::chrono::milliseconds(200);
    }
  }
  /// Takes the line away, so that other text can begin in its place.
  void clear() const {
    if (m_width != 0) {
      std::cerr << '\r' + std::string(m_width, ' ') + '\r';
    }
  }

 private:
  using Clock = std::chrono::steady_clock;

  const bool m_isWanted = ZEBUtTerminal::isStandardError();
  Clock::time_point m_next = Clock::now() + std::chrono::seconds(1);
  std::uint64_t m_shown = 0;
  std::size_t m_width = 0;
};

/// Logs every line of a stream, each as one event. Lines are read and logged on a thread of their
/// own, so that the calling thread can show progress, answer a stop signal and see that nobody
/// reads the console any more while the input is silent.
class LineJob {
 public:
  enum class End {
    /// Every line that could be read was logged, and the thread has ended.
    COMPLETE,
    /// A stop signal came, or the reader of the console has gone; no line is half logged and none
    /// will be logged any more.
    STOPPED,
    /// The same, but a log call does not return: something below it is blocked.
    STUCK
  };

  /// Lines are logged at the level of `rank`, or, with `levelFromLine`, at that of the first level
  /// word in the line when there is one. Stream and logger are not owned.
  LineJob(std::istream& in, LOGLogger* logger, int rank, bool levelFromLine)
      : m_reader(in), m_logger(logger), m_rank(rank), m_levelFromLine(levelFromLine) {}

  /// Runs once. Throws what reading and logging throw. Unless it returns COMPLETE, the thread may
  /// go on waiting and still uses this object, the stream and the logger: the process must be ended
  /// while they live.
  End run() {
    ProgressLine progress;
    std::packaged_task<void()> logging([this] { logLines(); });
    std::future<void> ended = logging.get_future();
    std::thread thread(std::move(logging));
    while (ended.wait_for(ATTENTION) != std::future_status::ready) {
      if (StopSignal::received() != 0 || hasLostReader()) {
        progress.clear();
        const bool resting = comesToRest();
        thread.detach();
        return resting ? End::STOPPED : End::STUCK;
      }
      progress.show(m_read);
    }
    thread.join();
    progress.clear();
    ended.get();
    return End::COMPLETE;
  }
  /// How many lines were read, and of how many the level was enabled. Any thread may ask.
  std::uint64_t read() const noexcept { return m_read; }
  std::uint64_t logged() const noexcept { return m_logged; }
  /// After the end: whether reading failed.
  bool hasFailed() const { return m_reader.failed(); }

 private:
  void logLines() {
    while (m_reader.next()) {
      m_logging = true;
      if (m_stopping) {
        m_logging = false;
        return;
      }
      logLine();
      m_logging = false;
    }
  }

  void logLine() {
    ++m_read;
    const std::string_view line = m_reader.line();
    const int rank = m_levelFromLine ? LineLevel::firstIn(line).value_or(m_rank) : m_rank;
    LOGLevel* const level = LOGLevel::toLevel(rank);
    if (m_logger->isEnabledFor(level) != 0) {
      m_logger->log(level, I18NString::fromUtf8(line));
      ++m_logged;
    }
  }

  /// Whether lines go to the console, and nobody reads it any more.
  bool hasLostReader() const {
    bool isConsole = false;
    if (ZEBUtTerminal::hasLostReader()) {
      // A watchdog may be about to give the logger other appenders.
      LOGDOMConfigurator::runExclusively(
          [&] { isConsole = LogDestinations::includeConsole(m_logger); });
    }
    return isConsole;
  }

  bool comesToRest() {
    m_stopping = true;
    const auto deadline = std::chrono::steady_clock::now() + PATIENCE;
    while (m_logging) {
      if (std::chrono::steady_clock::now() >= deadline) {
        return false;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
  }

  LineReader m_reader;
  LOGLogger* const m_logger;
  const int m_rank;
  const bool m_levelFromLine;
  std::atomic<std::uint64_t> m_read{0};
  std::atomic<std::uint64_t> m_logged{0};
  // The logging thread sets m_logging and then reads m_stopping, the calling thread the other way
  // round, both in the one order that all threads agree on: so one of them sees the other.
  std::atomic<bool> m_logging{false};
  std::atomic<bool> m_stopping{false};
};

void report(const LineJob& job) {
  CommandSupport::say(std::to_string(job.read()) + " lines read, " + std::to_string(job.logged()) +
                      " logged");
}

/// The watchdog, which may be null, comes first: it must not apply the document again afterwards.
void shutDown(DocumentWatchdog* watchdog) {
  if (watchdog != nullptr) {
    watchdog->stop();
  }
  LOG4ZEBConfigurator::shutdown();
}

/// Ends the process without waiting for the thread that may still wait for input.
[[noreturn]] void endEarly(LineJob::End end, const LineJob& job, DocumentWatchdog* watchdog) {
  const int signal = StopSignal::received();
  CommandSupport::say(signal != 0 ? "stopped by signal " + std::to_string(signal)
                                  : "nobody reads standard output any more");
  report(job);
  // Where a log call does not return, the watchdog may wait for the same thing.
  if (end == LineJob::End::STOPPED) {
    shutDown(watchdog);
  }
  std::_Exit(signal != 0 ? 128 + signal : Subcommand::BAD_OUTPUT);
}

std::string levelComplaint(const std::string& name) {
  return LineLevel::rankOf(name) ? ""
                                 : "'" + name +
                                       "' is not a level; the levels are DEBUG, INFO, WARN, "
                                       "ERROR and FATAL";
}

class LogCommand : public Subcommand {
 public:
  explicit LogCommand(CLI::App& app) {
    CLI::App* const command = app.add_subcommand("log", "Log lines of text, each as one event");
    command->add_option("--config", m_document, "The configuration document")
        ->required()
        ->type_name("DOCUMENT");
    command->add_option("--logger", m_logger, "The name of the logger; without it, the root logger")
        ->type_name("NAME");
    command
        ->add_option("--level", m_level,
                     "The level: DEBUG, INFO, WARN, ERROR or FATAL; without it, INFO")
        ->check(&levelComplaint)
        ->type_name("LEVEL");
    command->add_flag("--level-from-line", m_levelFromLine,
                      "Take the first level word in a line as its level, where it has one");
    CLI::Option* const watch =
        command->add_flag("--watch", m_watch, "Apply the document again whenever it has changed");
    command
        ->add_option("--watch-delay", m_watchDelay,
                     "Milliseconds between two looks at the document; without it, 6000")
        ->check(CLI::Range(1U, LONGEST_WATCH_DELAY))
        ->needs(watch)
        ->type_name("MS");
    command->add_option("FILE", m_input, "The file to read; without it, or with -, standard input")
        ->type_name("");
    command->footer(NOTES);
  }

  int run() const override {
    if (m_input == STANDARD_INPUT) {
      return logLinesOf(std::cin);
    }
    std::vector<char> buffer(64 * 1024);
    std::ifstream file;
    file.rdbuf()->pubsetbuf(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    return CommandSupport::openToRead(file, m_input, "input file") ? logLinesOf(file) : BAD_INPUT;
  }

 private:
  int logLinesOf(std::istream& in) const {
    // Constructing it applies the document.
    const std::unique_ptr<DocumentWatchdog> watchdog =
        m_watch ? std::make_unique<DocumentWatchdog>(m_document) : nullptr;
    LOGLogger* const logger = configure(watchdog.get());
    if (logger == nullptr) {
      shutDown(watchdog.get());
      return BAD_DOCUMENT;
    }
    StopSignal::watch();
    LineJob job(in, logger, LineLevel::rankOf(m_level).value_or(LOGLevel::INFO_RANK),
                m_levelFromLine);
    const LineJob::End end = job.run();
    if (end != LineJob::End::COMPLETE) {
      endEarly(end, job, watchdog.get());
    }
    if (watchdog != nullptr) {
      watchdog->stop();
    }
    const bool hasConsoleFailed = LogDestinations::hasConsoleFailed(logger);
    shutDown(watchdog.get());
    if (job.hasFailed()) {
      CommandSupport::say("cannot read on in the input");
    }
    if (hasConsoleFailed) {
      CommandSupport::say("cannot write to standard output");
    }
    report(job);
    return job.hasFailed() ? BAD_INPUT : hasConsoleFailed ? BAD_OUTPUT : 0;
  }

  /// Applies the document; with a watchdog, which has done so, starts that. Returns the logger, or
  /// null after complaining.
  LOGLogger* configure(DocumentWatchdog* watchdog) const {
    const int applied =
        watchdog != nullptr ? watchdog->wasApplied() : LOG4ZEBConfigurator::initialize(m_document);
    if (applied == 0) {
      complainOfDocument(m_document, watchdog);
      return nullptr;
    }
    LOGLogger* const logger = usableLogger(m_document, m_logger);
    if (logger != nullptr && watchdog != nullptr) {
      LOGXMLWatchdog::setDelay(m_watchDelay);
      watchdog->start();
    }
    return logger;
  }

  std::string m_document;
  std::string m_logger;
  std::string m_level = "INFO";
  std::string m_input = "-";
  bool m_levelFromLine = false;
  bool m_watch = false;
  unsigned int m_watchDelay = LOGFileWatchdog::DEFAULT_DELAY;
};

}  // namespace

std::unique_ptr<Subcommand> Subcommand::log(CLI::App& app) {
  return std::make_unique<LogCommand>(app);
}
