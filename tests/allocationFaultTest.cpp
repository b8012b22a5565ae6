// What the library does when there is no memory: each allocation that an operation makes fails once
// alone, and once together with all that follow.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "appenders/LOGRollingFileAppender.h"
#include "core/LOGDefaultRepositorySelector.h"
#include "core/LOGHierarchy.h"
#include "core/LOGRootLogger.h"
#include "core/LOGStack.h"
#include "layouts/LOGLayout.h"
#include "layouts/LOGPatternLayout.h"
#include "log4zeb.h"
#include "net/LOGSyslogAppender.h"
#include "platform/ZEBConfigurationFactory.h"
#include "platform/ZEBOutOfMemoryError.h"
#include "support/DatagramReceiver.h"
#include "support/Documents.h"
#include "support/FailingHeap.h"
#include "support/OpenSockets.h"
#include "support/RedirectedStream.h"
#include "support/TestEvent.h"
#include "support/Workplace.h"

namespace fs = std::filesystem;

namespace {

using Mode = FailingHeap::Mode;
using Lines = std::vector<std::string>;

constexpr const char* LONG_TEXT = "a message that is longer than what a text holds without memory";
constexpr int PATIENCE = 60000;  // milliseconds
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr long CONFIGURATION_STEP = 7;
#else
constexpr long CONFIGURATION_STEP = 1;
#endif

/// One run of an operation: what it needs is made by the constructor and gone with the destructor.
class Round {
 public:
  virtual ~Round() = default;
  /// Runs while memory fails.
  virtual void call() = 0;
  /// Does the same again with enough memory, on another thread, and expects that it is right.
  virtual void again() = 0;
  /// Whether there was memory to report what was lost.
  bool isReported = false;
};

enum class Throws { Never, OutOfMemory };

/// Whether the operation threw what it may.
template <typename Operation>
bool keepsToItsWord(Operation operation, Throws throws) {
  try {
    operation();
    return true;
  } catch (const std::bad_alloc&) {
    return throws == Throws::OutOfMemory;
  } catch (const ZEBOutOfMemoryError&) {
    return throws == Throws::OutOfMemory;
  } catch (...) {
    return false;
  }
}

bool callKeepsToItsWord(Round& round, Throws throws) {
  return keepsToItsWord([&] { round.call(); }, throws);
}

/// Runs the operation while the nth allocation fails. Returns whether it made so many.
template <typename Operation>
bool failsWithout(long nth, Operation operation) {
  FailingHeap::fail(nth, Mode::One);
  const bool isRight = keepsToItsWord(operation, Throws::OutOfMemory);
  const bool hasFailed = FailingHeap::end();
  EXPECT_TRUE(isRight) << "threw something else";
  return hasFailed;
}

/// A lock that the call has left held would stop another thread for ever.
void againOnAnotherThread(Round& round) {
  auto done = std::async(std::launch::async, [&] { round.again(); });
  if (done.wait_for(std::chrono::milliseconds(PATIENCE)) != std::future_status::ready) {
    ADD_FAILURE() << "another thread waits for ever";
    std::cout.flush();
    std::_Exit(EXIT_FAILURE);
  }
  done.get();
}

long openDescriptors() {
  const fs::directory_iterator descriptors("/proc/self/fd");
  return std::distance(begin(descriptors), end(descriptors));
}

/// Runs a round for the first, the second, ... allocation of its call that fails, `step` apart, and
/// expects that nothing is left of any.
template <typename Make>
void sweep(const std::string& name, Throws throws, Make make, long step = 1) {
  for (int i = 0; i < 2; ++i) {  // fills what is kept for good
    const auto round = make();
    ASSERT_TRUE(callKeepsToItsWord(*round, Throws::Never)) << name;
    againOnAnotherThread(*round);
  }
  const long descriptors = openDescriptors();
  for (const Mode mode : {Mode::One, Mode::AllFrom}) {
    bool hasFailed = true;
    for (long n = 1; hasFailed; n += step) {
      SCOPED_TRACE(name + (mode == Mode::One ? ", one: " : ", all from: ") + std::to_string(n));
      if (fs::exists("log4zeb.log")) {
        Workplace::clearDiagnostics();
      }
      const long live = FailingHeap::live();
      auto round = make();
      round->isReported = mode == Mode::One;
      FailingHeap::fail(n, mode);
      const bool isRight = callKeepsToItsWord(*round, throws);
      hasFailed = FailingHeap::end();
      EXPECT_TRUE(isRight) << "threw";
      againOnAnotherThread(*round);
      round.reset();
      EXPECT_EQ(FailingHeap::live() - live, 0);
      EXPECT_LE(openDescriptors(), descriptors);
      if (testing::Test::HasFailure()) {
        return;
      }
    }
  }
}

/// A fresh hierarchy that the manager hands out.
class OwnHierarchy : public Round {
 protected:
  OwnHierarchy() { LOGManager::setRepositorySelector(&m_selector, &m_root); }
  ~OwnHierarchy() override {
    LOG4ZEBConfigurator::shutdown();
    static LOGRootLogger root(nullptr);
    static LOGHierarchy lasting(&root);
    static LOGDefaultRepositorySelector selector(&lasting);
    LOGManager::setRepositorySelector(&selector, &root);
  }

  LOGRootLogger m_root{nullptr};
  LOGHierarchy m_hierarchy{&m_root};

 private:
  LOGDefaultRepositorySelector m_selector{&m_hierarchy};
};

/// The lines are some of the expected ones in their order, and the last `required` of them.
void expectLines(const Lines& lines, const Lines& expected, std::size_t required) {
  auto next = expected.begin();
  for (const std::string& line : lines) {
    next = std::find(next, expected.end(), line);
    ASSERT_TRUE(next != expected.end()) << "unexpected or twice: " << line;
    ++next;
  }
  ASSERT_GE(lines.size(), required);
  EXPECT_TRUE(std::equal(expected.end() - static_cast<std::ptrdiff_t>(required), expected.end(),
                         lines.end() - static_cast<std::ptrdiff_t>(required)));
}

// ---- loggers

const Lines NAMES = {"application.subsystem.component.part", "application.subsystem",
                     "application.subsystem.component.other", "application", "application.x"};

class LoggersRound : public OwnHierarchy {
 public:
  explicit LoggersRound(int others) {
    for (int i = 0; i < others; ++i) {
      m_hierarchy.getLogger("other" + std::to_string(i));
    }
    m_before = m_hierarchy.getAllLoggers().size();
  }
  ~LoggersRound() override { LOGNDC::remove(); }
  void call() override {
    LOGNDC::push(LONG_TEXT);
    LOGNDC::push(LONG_TEXT);
    askForAll(m_hierarchy);
  }
  void again() override {
    LOGNDC::push(LONG_TEXT);
    EXPECT_EQ(LOGNDC::get(), LONG_TEXT);
    askForAll(m_hierarchy);
    m_hierarchy.getLogger("application")->setLevel(LOGLevel::toLevel("WARN"));
    EXPECT_STREQ(m_hierarchy.getLogger(NAMES[0])->getChainedLevel()->toString(), "WARN");
    EXPECT_EQ(m_hierarchy.getAllLoggers().size(), m_before + NAMES.size());
    LOGRootLogger root(nullptr);
    LOGHierarchy fresh(&root);
    askForAll(fresh);
    for (const std::string& name : NAMES) {
      ASSERT_NE(m_hierarchy.exists(name), nullptr) << name;
      EXPECT_EQ(m_hierarchy.exists(name)->getParent()->getName(),
                fresh.exists(name)->getParent()->getName())
          << name;
    }
  }

 private:
  static void askForAll(LOGHierarchy& hierarchy) {
    for (const std::string& name : NAMES) {
      hierarchy.getLogger(name);
    }
  }

  std::size_t m_before = 0;
};

// ---- documents and events

const std::string PATTERN =
    documents::pattern("%d{ISO8601} %d{HH:mm:ss,SSS} %-20.30c{2} %p %t %x %m %l %F %L %M %C %r%n");
const std::string PLAIN = documents::pattern("%m%n");

using documents::appender;
using documents::layout;
using documents::param;

std::string file(const std::string& name, const std::string& layoutElement) {
  return documents::file(name, name + "-with-a-name-that-needs-memory.out", layoutElement);
}

std::string root(const Lines& references) { return documents::root(references, "info"); }

/// What a document's appenders have put out, by name of the file.
using Outputs = std::map<std::string, std::string>;

Outputs readOutputs(bool andRemoves) {
  Outputs outputs;
  for (const auto& entry : fs::directory_iterator(".")) {
    const std::string name = entry.path().filename().string();
    if (name.find(".out") != std::string::npos) {
      outputs[name] = Workplace::read(name);
      if (andRemoves) {
        fs::remove(entry.path());
      }
    }
  }
  return outputs;
}

Outputs takeOutputs() { return readOutputs(true); }

/// The lines of all files, of backups first, from the highest number.
Lines linesOf(Outputs outputs) {
  outputs.erase("console.out");
  Lines lines;
  for (auto output = outputs.rbegin(); output != outputs.rend(); ++output) {
    Workplace::write("lines", output->second);
    for (const std::string& line : Workplace::lines("lines")) {
      lines.push_back(line);
    }
  }
  return lines;
}

Outputs shapesOf(Outputs outputs) {
  for (auto& [name, text] : outputs) {
    for (const char inSomeNumbers : {',', '-'}) {
      text.erase(std::remove(text.begin(), text.end(), inSomeNumbers), text.end());
    }
    text = shapeOf(text);
  }
  return outputs;
}

/// Logs through a configured hierarchy; standard output is captured.
class DocumentRound : public OwnHierarchy {
 public:
  void again() override {
    runAgain();
    LOG4ZEBConfigurator::shutdown();
    m_standardOutput.reset();
    expect(takeOutputs());
  }

 protected:
  virtual void runAgain() = 0;
  virtual void expect(Outputs outputs) = 0;

  static void configure(const std::string& children) {
    EXPECT_EQ(Workplace::configure(children), 1);
  }
  static void logLine(int number) {
    LOGManager::getLogger(NAMES[0])->info(std::to_string(number) + LONG_TEXT);
  }

 private:
  std::optional<RedirectedStream> m_standardOutput{std::in_place, 1, "console.out"};
};

/// One event fails, the next does not.
class EventRound : public DocumentRound {
 public:
  /// What comes of both events and of the second alone.
  struct Allowed {
    Outputs both;
    Outputs second;
  };

  EventRound(const std::string& document, const Allowed& allowed, DatagramReceiver* receiver)
      : m_allowed(allowed), m_receiver(receiver) {
    configure(document);
    m_logger = LOGManager::getLogger(NAMES[0]);
    LOGNDC::push(LONG_TEXT);
  }
  ~EventRound() override { LOGNDC::remove(); }
  void call() override { m_logger->info(m_text); }
  Outputs shapes;

 protected:
  void runAgain() override { m_logger->info(m_text); }
  void expect(Outputs outputs) override {
    while (m_receiver != nullptr) {
      const auto datagram = m_receiver->next(0);
      if (!datagram) {
        break;
      }
      outputs["datagrams"] += *datagram;
    }
    shapes = shapesOf(std::move(outputs));
    if (!m_allowed.both.empty()) {
      EXPECT_TRUE(shapes == m_allowed.both || shapes == m_allowed.second)
          << testing::PrintToString(shapes);
      if (isReported && shapes != m_allowed.both) {
        EXPECT_GT(Workplace::noted("ERROR"), 0) << "lost without a word";
      }
    }
  }

 private:
  const Allowed& m_allowed;
  DatagramReceiver* const m_receiver;
  LOGLogger* m_logger = nullptr;
  const I18NString m_text = LONG_TEXT;
};

void sweepEvent(const std::string& name, const std::string& document,
                DatagramReceiver* receiver = nullptr) {
  EventRound::Allowed allowed;
  Outputs seen[2];
  for (const bool callsBoth : {false, true}) {
    EventRound round(document, allowed, receiver);
    if (callsBoth) {
      round.call();
    }
    againOnAnotherThread(round);
    seen[callsBoth ? 1 : 0] = round.shapes;
  }
  ASSERT_NE(seen[0], seen[1]) << testing::PrintToString(seen[0]);
  allowed = {seen[1], seen[0]};
  sweep(name, Throws::Never,
        [&] { return std::make_unique<EventRound>(document, allowed, receiver); });
}

/// Several events are logged while memory fails, and more after that; each line is there once at
/// most, whole, and none of the later ones is missing.
class LinesRound : public DocumentRound {
 public:
  enum class Way { Method, Stream, StreamWithException };
  LinesRound(const std::string& document, Way way) : m_way(way) {
    configure(document);
    m_logger = LOGManager::getLogger(NAMES[0]);
  }
  void call() override { log(0, 3); }

 protected:
  void runAgain() override {
    m_written = linesOf(readOutputs(false));
    log(3, 5);
  }
  void expect(Outputs outputs) override {
    const Lines lines = linesOf(std::move(outputs));
    EXPECT_TRUE(std::equal(
        m_written.begin(), m_written.end(), lines.begin(),
        lines.begin() + static_cast<std::ptrdiff_t>(std::min(lines.size(), m_written.size()))))
        << "what was in the files is not";
    Lines expected;
    for (const I18NString& text : m_texts) {
      expected.push_back(text.toStdString());
    }
    expectLines(lines, expected, 2);
    if (isReported && lines.size() < expected.size()) {
      EXPECT_GT(Workplace::noted("ERROR"), 0) << "lost without a word";
    }
  }

 private:
  void log(std::size_t begin, std::size_t end) {
    for (std::size_t i = begin; i < end; ++i) {
      const char first = static_cast<char>('0' + i);
      if (m_way == Way::Stream) {
        LOG4ZEB_INFO(m_logger, first << BEGINNING << END);
      } else if (m_way == Way::StreamWithException) {
        LOG4ZEB_INFO_EX(m_logger, first << BEGINNING << END, m_failure);
      } else {
        m_logger->info(m_texts[i]);
      }
    }
  }

  static constexpr const char* BEGINNING = "a message longer than what ";
  static constexpr const char* END = "a stream holds without memory";
  const std::runtime_error m_failure{LONG_TEXT};
  const Way m_way;
  LOGLogger* m_logger = nullptr;
  Lines m_written;  // while memory failed
  std::vector<I18NString> m_texts = [] {
    std::vector<I18NString> texts;
    for (char c = '0'; c < '5'; ++c) {
      texts.emplace_back(std::string(1, c) + BEGINNING + END);
    }
    return texts;
  }();
};

const std::string EVERYTHING =
    file("simple", layout("LOGSimpleLayout")) +
    file("ttcc", layout("LOGTTCCLayout", param("DateFormat", "ISO8601"))) +
    file("xml", layout("LOGXMLLayout")) + file("html", layout("LOGHTMLLayout")) +
    appender("rolling", "LOGRollingFileAppender",
             param("File", "rolling-with-a-name-that-needs-memory.out") +
                 param("MaxBackupIndex", "3") + param("MaximumFileSize", "100000") + PATTERN) +
    appender("console", "LOGConsoleAppender",
             layout("LOGSimpleLayout") + "<filter class=\"LOGLevelRangeFilter\">" +
                 param("LevelMin", "INFO") + param("LevelMax", "FATAL") +
                 "</filter><filter class=\"LOGStringMatchFilter\">" +
                 param("StringToMatch", LONG_TEXT) +
                 "</filter><errorHandler class=\"LOGOnlyOnceErrorHandler\"><root-ref/>"
                 "<logger-ref ref=\"application.subsystem.handler\"/>"
                 "<appender-ref ref=\"backup\"/></errorHandler>") +
    file("backup", PLAIN) + file("queued", PATTERN) + documents::async("async", {"queued"}) +
    appender("udp", "LOGLocalUDPAppender", param("Port", "9")) +
    "<logger name=\"application.subsystem\" additivity=\"true\"><level value=\"info\"/>" +
    documents::references({"simple", "async"}) + "</logger>" +
    root({"ttcc", "xml", "html", "rolling", "console", "udp"});

enum class Fails { Configuring, Reloading, ShuttingDown };

/// Configures or shuts down everything while memory fails.
class ConfigureRound : public DocumentRound {
 public:
  ConfigureRound(Fails fails, const Outputs& allowed) : m_fails(fails), m_allowed(allowed) {
    if (m_fails == Fails::Reloading) {
      configure(file("simple", PATTERN) + file("old", PLAIN) +
                appender("sender", "LOGLocalUDPAppender", param("Port", "9")) +
                documents::logger("application.subsystem", {"simple", "sender"}) + root({"old"}));
      logLine(1);
      m_sockets = OpenSockets::count().open;
    } else if (m_fails == Fails::ShuttingDown) {
      configure(EVERYTHING);
      logLine(1);
    }
    Workplace::write(Workplace::DOCUMENT, documents::whole(EVERYTHING));
  }
  void call() override {
    if (m_fails == Fails::ShuttingDown) {
      LOG4ZEBConfigurator::shutdown();
    } else {
      LOG4ZEBConfigurator::initialize(m_document);
    }
  }
  Outputs shapes;

 protected:
  void runAgain() override {
    if (m_fails == Fails::ShuttingDown) {
      logLine(2);  // reaches nobody
      EXPECT_TRUE(m_root.snapshotOfAppenders().empty());
      LOG4ZEBConfigurator::shutdown();
    } else {
      EXPECT_EQ(LOG4ZEBConfigurator::initialize(m_document), 1);
      logLine(1);
      if (m_fails == Fails::Reloading) {
        EXPECT_EQ(OpenSockets::count().open, m_sockets);
      }
    }
  }
  void expect(Outputs outputs) override {
    shapes = shapesOf(std::move(outputs));
    if (m_allowed.empty()) {
      return;
    }
    Outputs allowed = m_allowed;
    const std::string queued = "queued-with-a-name-that-needs-memory.out";
    if (m_fails == Fails::ShuttingDown && shapes[queued].empty()) {
      allowed[queued].clear();  // the dispatcher may have met the lack of memory with the event
    }
    EXPECT_EQ(shapes, allowed);
  }

 private:
  const Fails m_fails;
  const Outputs& m_allowed;
  const I18NString m_document = Workplace::DOCUMENT;
  long m_sockets = 0;  // open before the reading that fails, and after the one that follows
};

void sweepConfiguration(const std::string& name, Fails fails, long step) {
  Outputs allowed;
  {
    ConfigureRound round(fails, allowed);
    round.call();
    againOnAnotherThread(round);
    allowed = round.shapes;
  }
  ASSERT_GT(allowed.size(), 5U);
  sweep(
      name, Throws::Never, [&] { return std::make_unique<ConfigureRound>(fails, allowed); }, step);
}

}  // namespace

TEST(AllocationFault, LetsTheFirstUseBeTriedAgain) {
  const Workplace workplace;
  LOGLogger* logger = nullptr;
  long n = 1;
  while (failsWithout(n, [&] {
    LOGObject().instanceOf();
    ZEBConfigurationFactory::getInstance();
    logger = nullptr;
    LOGNDC::push(LONG_TEXT);
    logger = LOGManager::getLogger(NAMES[0]);
  })) {
    ++n;
  }
  ASSERT_NE(logger, nullptr);
  EXPECT_EQ(LOGManager::exists(NAMES[0]), logger);
  EXPECT_EQ(Workplace::configure(file("all", PLAIN) + root({"all"})), 1);
  logger->info(LONG_TEXT);
  EXPECT_EQ(takeOutputs().begin()->second, LONG_TEXT + std::string("\r\n"));
}

TEST(AllocationFault, LeavesTheTreeOfLoggersWhole) {
  const Workplace workplace;
  const auto make = [](int others) {
    return [others] { return std::make_unique<LoggersRound>(others); };
  };
  sweep("loggers", Throws::OutOfMemory, make(0));
  sweep("loggers of a table that grows", Throws::OutOfMemory, make(198));
}

TEST(AllocationFault, LosesNoMoreThanTheEventAndNeverThrows) {
  const Workplace workplace;
  const std::string host = "127.0.0.61";
  DatagramReceiver syslog(host, 514);
  DatagramReceiver udp;
  for (const char* name : {"LOGSimpleLayout", "LOGTTCCLayout", "LOGXMLLayout", "LOGHTMLLayout"}) {
    sweepEvent(std::string("file, ") + name, file("all", layout(name)) + root({"all"}));
  }
  sweepEvent("file, LOGPatternLayout", file("all", PATTERN) + root({"all"}));
  sweepEvent("rolling file",
             appender("all", "LOGRollingFileAppender", param("File", "all.out") + PATTERN) +
                 root({"all"}));
  sweepEvent("console", appender("all", "LOGConsoleAppender", PATTERN) + root({"all"}));
  sweepEvent("syslog",
             appender("all", "LOGSyslogAppender", param("Host", host) + PATTERN) + root({"all"}),
             &syslog);
  sweepEvent("local UDP",
             appender("all", "LOGLocalUDPAppender", param("Port", std::to_string(udp.port()))) +
                 root({"all"}),
             &udp);
}

TEST(AllocationFault, IsAnExceptionOfTheLibraryInTheTextsOfAnEvent) {
  const Workplace workplace;
  const std::string longest(1000, 'x');
  LOGLogger* const logger = LOGManager::getLogger(longest);
  LOGLevel* const level = LOGLevel::toLevel("INFO");
  LOGNDC::push(longest);
  for (const Mode mode : {Mode::One, Mode::AllFrom}) {
    const auto isLibrarysException = [mode](const auto& operation) {
      FailingHeap::fail(1, mode);
      bool isRight = false;
      try {
        operation();
      } catch (const ZEBOutOfMemoryError&) {
        isRight = true;
      } catch (...) {
        // Another one.
      }
      return FailingHeap::end() && isRight;
    };
    EXPECT_TRUE(isLibrarysException([&] { LOGLoggingEvent("", logger, level, nullptr); }));
    LOGLoggingEvent event("", logger, level, nullptr);
    EXPECT_TRUE(isLibrarysException([&] { event.getNDC(); }));
    EXPECT_EQ(event.getNDC(), longest) << "is copied once there is memory";
    const I18NString thrown = longest;
    EXPECT_TRUE(isLibrarysException([&] { event.setThrowableStrRep(thrown); }));
    EXPECT_TRUE(isLibrarysException([&] { const LOGLoggingEvent copy(event); }));
    LOGObject message("text");
    LOGLoggingEvent rendered("", logger, level, &message);
    rendered.render();
    EXPECT_TRUE(isLibrarysException([&] { event = rendered; }));
    EXPECT_EQ(event.getMessage(), nullptr);
  }
  LOGNDC::remove();
}

TEST(AllocationFault, LeavesAThreadTheContextThatItHas) {
  const Workplace workplace;
  LOGNDC::push("of another");
  const std::unique_ptr<LOGStack> other(LOGNDC::cloneStack());
  LOGNDC::remove();
  LOGNDC::push(LONG_TEXT);
  bool hasFailed = true;
  for (long nth = 1; hasFailed; ++nth) {
    hasFailed = failsWithout(nth, [&] { LOGNDC::inherit(other.get()); });
    EXPECT_EQ(LOGNDC::get(), I18NString(hasFailed ? LONG_TEXT : "of another")) << nth;
  }
  LOGNDC::remove();
}

TEST(AllocationFault, LeavesAPatternThatIsSetWhileItFormatsWhole) {
  const Workplace workplace;
  bool hasFailed = true;
  for (long nth = 1; hasFailed; ++nth) {
    LOGPatternLayout layout("old %m");
    ActingMessage message("sets", [&] {
      hasFailed = failsWithout(
          nth, [&] { layout.setConversionPattern(std::string("new %m ") + LONG_TEXT); });
    });
    TestEvent setting("shop", "INFO", &message);
    layout.format(&setting);
    TestEvent event("shop", "INFO", "text");
    EXPECT_EQ(layout.format(&event).toStdString().substr(0, 3),
              layout.getConversionPattern().toStdString().substr(0, 3))
        << nth;
  }
}

TEST(AllocationFault, LeavesNothingOfAContextThatAThreadUsesAsItEnds) {
  static auto use = [](int depth) {
    LOGNDC::push(LONG_TEXT);
    LOGNDC::push(LONG_TEXT);
    for (int i = 0; i < depth; ++i) {
      LOGNDC::pop();
    }
  };
  struct Late {
    explicit Late(int newDepth) : depth(newDepth) {}
    ~Late() { use(depth); }
    int depth;
  };
  const Workplace workplace;
  const auto runThread = [](int depth) {
    std::async(std::launch::async, [depth] {
      static thread_local const Late last(depth);  // is destroyed after what the context has made
      use(0);
      static thread_local const Late first(depth + 1);
      EXPECT_EQ(last.depth + 1, first.depth);
    }).get();
  };
  runThread(0);  // fills what is kept for good
  const long live = FailingHeap::live();
  for (int depth = 0; depth < 3; ++depth) {
    runThread(depth);
    EXPECT_EQ(FailingHeap::live(), live) << depth;
  }
}

TEST(AllocationFault, EndsWithTheFirstEventOfAThread) {
  const Workplace workplace;
  ASSERT_EQ(Workplace::configure(file("all", PLAIN) + root({"all"})), 1);
  LOGLogger* const logger = LOGManager::getLogger(NAMES[0]);
  const I18NString text = LONG_TEXT;
  // In this order, because a thread that ends leaves what it was given to the next one.
  for (const Mode mode : {Mode::AllFrom, Mode::One}) {
    std::async(std::launch::async, [&] {
      FailingHeap::fail(1, mode);
      EXPECT_NO_THROW(logger->info(text));
      EXPECT_TRUE(FailingHeap::end());
    }).get();
  }
  EXPECT_EQ(Workplace::noted("no memory for an event"), 1);
  logger->info(text);
  EXPECT_EQ(linesOf(takeOutputs()), Lines{LONG_TEXT});
}

TEST(AllocationFault, LetsTheNextEventActivateASyslogAppender) {
  const Workplace workplace;
  LOGLayout plain;
  long n = 0;
  for (bool hasFailed = true; hasFailed;) {
    LOGSyslogAppender syslog(&plain, LOGSyslogAppender::DEFAULT_FACILITY);
    hasFailed = failsWithout(++n, [&] { syslog.activateOptions(); });
    syslog.activateOptions();
    TestEvent event("a", "INFO", LONG_TEXT);
    syslog.doAppend(&event);
  }
  EXPECT_GT(n, 2);
  EXPECT_EQ(Workplace::noted("No syslog host is set"), 0);
}

TEST(AllocationFault, LetsTheNextEventOpenAFile) {
  const Workplace workplace;
  LOGLayout plain;
  const I18NString name = "file-with-a-name-that-needs-memory.out";
  for (const bool isRolling : {false, true}) {
    long n = 0;
    for (bool hasFailed = true; hasFailed;) {
      SCOPED_TRACE((isRolling ? "rolling " : "plain ") + std::to_string(n + 1));
      const std::unique_ptr<LOGFileAppender> file(isRolling ? new LOGRollingFileAppender
                                                            : new LOGFileAppender);
      file->setLayout(&plain);
      hasFailed = failsWithout(++n, [&] { EXPECT_NO_THROW(file->setFile(name, 1, 0, 1)); });
      TestEvent event("a", "INFO", LONG_TEXT);
      file->activateOptions();
      file->doAppend(&event);
      EXPECT_EQ(linesOf(takeOutputs()), Lines{LONG_TEXT});
    }
    EXPECT_GT(n, 10);
  }
}

TEST(AllocationFault, NeitherTearsNorRepeatsALine) {
  const Workplace workplace;
  using Way = LinesRound::Way;
  const auto make = [](const std::string& document, Way way = Way::Method) {
    return [=] { return std::make_unique<LinesRound>(document + root({"all"}), way); };
  };
  sweep("macro", Throws::Never, make(file("all", PLAIN), Way::Stream));
  sweep("macro with an exception", Throws::Never,
        make(file("all", PLAIN), Way::StreamWithException));
  sweep("asynchronous", Throws::Never,
        make(file("queued", PLAIN) + documents::async("all", {"queued"})));
  for (const char* append : {"true", "false"}) {
    sweep(std::string("rollover, append ") + append, Throws::Never,
          make(appender("all", "LOGRollingFileAppender",
                        param("File", "all.out") + param("Append", append) +
                            param("MaxBackupIndex", "9") + param("MaximumFileSize", "1") + PLAIN)));
  }
}

TEST(AllocationFault, LetsTheNextConfigurationSucceed) {
  const Workplace workplace;
  sweepConfiguration("configuration", Fails::Configuring, CONFIGURATION_STEP);
}

TEST(AllocationFault, LetsTheNextReloadSucceed) {
  const Workplace workplace;
  sweepConfiguration("reload", Fails::Reloading, CONFIGURATION_STEP);
}

TEST(AllocationFault, ShutsDownAllTheSame) {
  const Workplace workplace;
  sweepConfiguration("shutdown", Fails::ShuttingDown, 1);
}
