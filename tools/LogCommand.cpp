#include <CLI/CLI.hpp>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <system_error>
#include <vector>

#include "config/LOGXMLWatchdog.h"
#include "log4zeb.h"
#include "platform/ZEBIDOM_DOMImplementation.h"
#include "platform/ZEBIDOM_Document.h"
#include "platform/ZEBIDOM_Element.h"
#include "platform/ZEBIDOM_Parser.h"
#include "tools/CommandSupport.h"
#include "tools/LineJob.h"
#include "tools/LineLevel.h"
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

LOGLogger* loggerNamed(const std::string& name) {
  return name.empty() ? LOGManager::getRootLogger() : LOGManager::getLogger(name);
}

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
  LOGLogger* const logger = loggerNamed(loggerName);
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
