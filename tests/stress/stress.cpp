// Does to appenders, loggers and documents from several threads, and from inside of appenders,
// filters and messages, whatever a program may do, in an order that follows from a seed.
//
//   stress SECONDS [SEED]
//
// Ends with 0 unless it crashes or hangs: when no thread has got on for half a minute it says what
// each is at and ends with 1.
//
// Locks of the program's own appenders have an order here, as in any program whose appenders log.
// Loggers and appenders have a rank: an appender is attached to loggers of its rank or a higher
// one, and its code reaches only for loggers and appenders of a lower one.

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "appenders/LOGAsyncAppender.h"
#include "appenders/LOGRollingFileAppender.h"
#include "config/LOGDOMConfigurator.h"
#include "core/LOGLogger.h"
#include "core/LOGManager.h"
#include "core/LOGNDC.h"
#include "filters/LOGFilter.h"
#include "layouts/LOGPatternLayout.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBThreadGuard.h"
#include "soak/SoakRandom.h"
#include "support/Workplace.h"

namespace {

constexpr int THREADS = 4;
constexpr int OUTSIDE = 4;  // the rank of code that holds nothing
constexpr std::size_t MOST_NODES = 40;
constexpr std::uintmax_t MOST_DIAGNOSTICS = 1 << 24;
constexpr std::chrono::seconds HANG(30);
const std::string DOCUMENTS[] = {"first.xml", "second.xml", "third.xml"};

/// What a thread does, as the main thread sees it.
struct Progress {
  std::atomic<unsigned long> operations{0};
  std::atomic<const char*> at{"nothing"};
  std::atomic<bool> hasEnded{false};
};
std::array<Progress, THREADS> g_progress;

std::atomic<unsigned> g_seed{0};
std::atomic<unsigned> g_threads{0};
thread_local SoakRandom t_random(g_seed * 1000 + g_threads++);
thread_local Progress* t_progress = nullptr;  // null on dispatchers
thread_local int t_rank = OUTSIDE;            // what is held is not lower than this
thread_local int t_depth = 0;                 // so many calls of the program's code are under way

void at(const char* what) {
  if (t_progress != nullptr) {
    t_progress->at = what;
    ++t_progress->operations;
  }
}

void act();

/// Code of the program that the library calls, with what is held at least of that rank.
void actInside(int rank) {
  const int before = t_rank;
  t_rank = std::min(t_rank, rank);
  if (++t_depth <= 3 && t_random.oneIn(3)) {
    act();
  }
  --t_depth;
  t_rank = before;
}

struct Name {
  const char* text;
  int rank;
};
constexpr Name NAMES[] = {{"s.a", 3}, {"s.a.b", 3}, {"s.c", 3}, {"t.a", 2},
                          {"t.b", 2}, {"u.a", 1},   {"u.b", 1}, {"", 1}};

LOGLogger* loggerOf(const Name& name) {
  return *name.text == 0 ? LOGManager::getRootLogger() : LOGManager::getLogger(name.text);
}

class OwnFilter : public LOGFilter {
 public:
  explicit OwnFilter(int rank) : m_rank(rank) {}
  int decide(LOGLoggingEvent*) override {
    actInside(m_rank);
    return t_random.oneIn(8) ? m_DENY : m_NEUTRAL;
  }

 private:
  const int m_rank;
};

/// An appender, attached anywhere. Those who use it count themselves.
struct Node {
  std::unique_ptr<OwnFilter> filter;
  std::unique_ptr<LOGAppenderSkeleton> appender;
  LOGAsyncAppender* async = nullptr;
  int rank = 1;
  unsigned long number = 0;
  std::atomic<int> users{0};
};

std::mutex g_nodesLock;  // of what follows; nothing is called under it
std::vector<Node*> g_nodes;
std::vector<Node*> g_graveyard;
unsigned long g_numbers = 0;
std::mutex g_diggingLock;  // taken outside only

void retire(const LOGAppenderSkeleton* appender) {
  const std::lock_guard<std::mutex> guard(g_nodesLock);
  for (auto node = g_nodes.begin(); node != g_nodes.end(); ++node) {
    if ((*node)->appender.get() == appender) {
      g_graveyard.push_back(*node);
      g_nodes.erase(node);
      return;
    }
  }
}

/// Keeps one of the nodes up to a rank from being deleted.
class Use {
 public:
  explicit Use(int highest, bool isAsync = false) {
    const std::lock_guard<std::mutex> guard(g_nodesLock);
    const std::size_t first = t_random.below(MOST_NODES);
    for (std::size_t i = 0; i < g_nodes.size() && node == nullptr; ++i) {
      Node* const candidate = g_nodes[(first + i) % g_nodes.size()];
      if (candidate->rank <= highest && (!isAsync || candidate->async != nullptr)) {
        node = candidate;
        ++node->users;
      }
    }
  }
  Use(const Use&) = delete;
  Use& operator=(const Use&) = delete;
  ~Use() {
    if (node != nullptr) {
      --node->users;
    }
  }

  Node* node = nullptr;
};

class OwnAppender : public LOGAppenderSkeleton {
 public:
  explicit OwnAppender(int rank) : m_rank(rank) {}
  ~OwnAppender() override { finalize(); }
  void append(LOGLoggingEvent* event) override {
    if (m_isAppending) {
      return;
    }
    m_isAppending = true;
    if (layout() != nullptr) {
      m_text = format(*layout(), event);
    }
    if (t_random.oneIn(20)) {
      retire(this);
    }
    if (t_random.oneIn(10)) {
      removeItself();
    }
    actInside(m_rank);
    m_isAppending = false;
  }
  void close() override {
    const ZEBThreadGuard guard(getCriticalSection());
    m_text = "closed";
    m_closed = 1;
  }

 private:
  /// From the logger that passes it the event, and from a queue.
  void removeItself() {
    for (const Name& name : NAMES) {
      LOGLogger& logger = *loggerOf(name);
      if (logger.getCriticalSection().isHeldHere()) {
        at("an appender's removing itself from a logger");
        logger.removeAppender(this);
      }
    }
    const Use use(OUTSIDE, true);
    if (use.node != nullptr) {
      at("an appender's removing itself from a queue");
      use.node->async->removeAppender(this);
    }
  }

  const int m_rank;
  bool m_isAppending = false;
  I18NString m_text;
};

/// What this message does is of a lower rank than the logger that it is given to.
class OwnMessage : public LOGObject {
 public:
  explicit OwnMessage(int rank) : LOGObject("own message"), m_rank(rank) {}
  OwnMessage(const OwnMessage&) = default;
  ~OwnMessage() override { actInside(m_rank); }
  const I18NString& toString() const override {
    actInside(m_rank);
    return LOGObject::toString();
  }
  LOGObject* clone() const override {
    const int depth = t_depth++;
    if (depth == 0 && t_random.oneIn(100)) {
      at("reading a document in a clone");
      LOGDOMConfigurator::configure(DOCUMENTS[t_random.below(3)]);
    }
    --t_depth;
    actInside(m_rank);
    return new OwnMessage(*this);
  }

 private:
  const int m_rank;
};

LOGLayout& layout() {
  static LOGPatternLayout layouts[] = {LOGPatternLayout("%d %p [%t] %c %x - %m%n"),
                                       LOGPatternLayout("%m%n")};
  return layouts[t_random.below(2)];
}

void make() {
  auto made = std::make_unique<Node>();
  std::unique_lock<std::mutex> guard(g_nodesLock);
  if (g_nodes.size() + g_graveyard.size() >= MOST_NODES) {
    return;
  }
  made->number = ++g_numbers;
  guard.unlock();
  const unsigned kind = t_random.below(6);
  const std::string name = "own" + std::to_string(made->number);
  made->rank = 1 + static_cast<int>(t_random.below(3));
  if (kind < 2) {
    auto async = std::make_unique<LOGAsyncAppender>();
    async->setBufferSize(1 + static_cast<int>(t_random.below(16)));
    made->async = async.get();
    made->appender = std::move(async);
  } else if (kind == 2) {
    made->rank = 1;
    made->appender = std::make_unique<LOGRollingFileAppender>();
    auto& file = static_cast<LOGRollingFileAppender&>(*made->appender);
    file.setMaximumFileSize(5000);
    file.setFile("rolled" + std::to_string(made->number % 4) + ".log");
  } else {
    made->appender = std::make_unique<OwnAppender>(made->rank);
  }
  made->appender->setName(name);
  if (kind != 3) {
    made->appender->setLayout(&layout());
  }
  if (t_random.oneIn(3)) {
    made->filter = std::make_unique<OwnFilter>(made->rank);
    made->appender->addFilter(made->filter.get());
  }
  guard.lock();
  g_nodes.push_back(made.release());
}

/// Removes the node again from wherever it may be, and deletes it.
void bury(Node& node) {
  std::vector<Node*> asyncs;
  {
    const std::lock_guard<std::mutex> guard(g_nodesLock);
    for (const auto* const nodes : {&g_nodes, &g_graveyard}) {
      asyncs.insert(asyncs.end(), nodes->begin(), nodes->end());
    }
  }
  for (const Name& name : NAMES) {
    loggerOf(name)->removeAppender(node.appender.get());
  }
  for (const Node* const other : asyncs) {  // which only this thread may delete now
    if (other->async != nullptr) {
      other->async->removeAppender(node.appender.get());
    }
  }
  delete &node;
}

void dig() {
  const std::lock_guard<std::mutex> digging(g_diggingLock);
  for (;;) {
    Node* found = nullptr;
    {
      const std::lock_guard<std::mutex> guard(g_nodesLock);
      for (auto node = g_graveyard.begin(); node != g_graveyard.end() && found == nullptr; ++node) {
        if ((*node)->users == 0) {
          found = *node;
          g_graveyard.erase(node);
          break;
        }
      }
    }
    if (found == nullptr) {
      return;
    }
    bury(*found);
  }
}

void actOutside() {
  switch (t_random.below(12)) {
    case 0:
      at("reading a document");
      LOGDOMConfigurator::configure(DOCUMENTS[t_random.below(3)]);
      break;
    case 1:
      if (t_random.oneIn(4)) {
        at("shutting down");
        LOGManager::shutdown();
      }
      break;
    case 2:
      if (t_random.oneIn(4)) {
        at("resetting");
        LOGManager::resetConfiguration();
      }
      break;
    case 3:
      at("removing all from a logger");
      loggerOf(NAMES[t_random.below(std::size(NAMES))])->removeAllAppenders();
      break;
    default:
      at("digging");
      dig();
  }
}

void actOnLogger() {
  const Name& name = NAMES[t_random.below(std::size(NAMES))];
  if (name.rank >= t_rank) {
    return;
  }
  LOGLogger& logger = *loggerOf(name);
  const Use use(name.rank);
  LOGAppenderSkeleton* const appender = use.node == nullptr ? nullptr : use.node->appender.get();
  switch (t_random.below(9)) {
    case 0:
      at("setting a level");
      logger.setLevel(*name.text == 0 || t_random.oneIn(3) ? LOGLevel::toLevel("DEBUG") : nullptr);
      break;
    case 1:
      at("setting additivity");
      logger.setAdditivity(static_cast<int>(t_random.below(2)));
      break;
    case 2:
      at("asking for an appender");
      logger.getAppender("FILE");
      break;
    case 3:
      if (appender != nullptr) {
        at("asking whether one is attached");
        logger.isAttached(appender);
      }
      break;
    case 4:
      if (appender != nullptr) {
        at("removing from a logger");
        t_random.oneIn(2) ? logger.removeAppender(appender)
                          : logger.removeAppender(appender->getName());
      }
      break;
    default:
      if (appender != nullptr) {
        at("adding to a logger");
        logger.addAppender(appender);
      }
  }
}

void actOnAsync() {
  const Use use(t_rank - 1, true);
  if (use.node == nullptr) {
    return;
  }
  LOGAsyncAppender& async = *use.node->async;
  const Use other(use.node->rank);
  if (other.node == nullptr) {
    return;
  }
  LOGAppenderSkeleton& appender = *other.node->appender;
  switch (t_random.below(8)) {
    case 0:
      at("flushing");
      async.flush(static_cast<int>(t_random.below(5)));
      break;
    case 1:
      at("setting a buffer's size");
      try {
        async.setBufferSize(1 + static_cast<int>(t_random.below(16)));
      } catch (const ZEBAssertError&) {  // closed
      }
      break;
    case 2:
      at("asking a queue whether one is attached");
      async.isAttached(&appender);
      break;
    case 3:
      at("removing from a queue");
      t_random.oneIn(2) ? async.removeAppender(&appender)
                        : async.removeAppender(appender.getName());
      break;
    case 4:
      if (t_random.oneIn(4)) {
        at("removing all from a queue");
        async.removeAllAppenders();
      }
      break;
    default:
      // Later ones only: no circles.
      if (other.node->async == nullptr || other.node->number > use.node->number) {
        at("adding to a queue");
        async.addAppender(&appender);
      }
  }
}

void actOnAppender() {
  const Use use(t_rank - 1);
  if (use.node == nullptr) {
    return;
  }
  LOGAppenderSkeleton& appender = *use.node->appender;
  switch (t_random.below(8)) {
    case 0:
      at("closing");
      appender.close();
      break;
    case 1:
    case 2:
      at("retiring");
      retire(&appender);
      break;
    default:
      at("setting a layout");
      appender.setLayout(&layout());
  }
}

void log() {
  const Name& name = NAMES[t_random.below(std::size(NAMES))];
  if (name.rank >= t_rank) {
    return;
  }
  LOGLogger& logger = *loggerOf(name);
  at("logging");
  if (t_depth < 2 && t_random.oneIn(3)) {
    const OwnMessage message(name.rank);
    logger.info(const_cast<OwnMessage*>(&message));
  } else {
    logger.info("a text");
  }
}

void act() {
  switch (t_random.below(t_depth == 0 ? 16 : 12)) {
    case 0:
    case 1:
      actOnLogger();
      break;
    case 2:
    case 3:
      actOnAsync();
      break;
    case 4:
      actOnAppender();
      break;
    case 5:
      at("asking for a logger");
      LOGManager::getLogger("u.n" + std::to_string(t_random.below(3000)));
      break;
    case 12:
    case 13:
      make();
      break;
    case 14:
      if (t_random.oneIn(4)) {
        actOutside();
      }
      break;
    default:
      LOGNDC::push("inner");
      log();
      LOGNDC::pop();
  }
}

void writeDocuments() {
  const std::string layout =
      "<layout class='LOGPatternLayout'><param name='ConversionPattern' value='%m%n'/></layout>";
  const std::string appenders =
      "<appender name='FILE' class='LOGFileAppender'><param name='File' value='file.log'/>"
      "<param name='Append' value='false'/>" +
      layout +
      "</appender>"
      "<appender name='ROLL' class='LOGRollingFileAppender'><param name='File' value='roll.log'/>"
      "<param name='MaximumFileSize' value='5000'/>" +
      layout +
      "</appender>"
      "<appender name='INNER' class='LOGAsyncAppender'><appender-ref ref='FILE'/></appender>"
      "<appender name='ASYNC' class='LOGAsyncAppender'><appender-ref ref='INNER'/>"
      "<appender-ref ref='ROLL'/></appender>";
  const auto logger = [](const std::string& name, const std::string& appender) {
    return "<logger name='" + name + "'><appender-ref ref='" + appender + "'/></logger>";
  };
  const std::string root = "<root><level value='DEBUG'/><appender-ref ref='ASYNC'/></root>";
  const std::string texts[] = {appenders + logger("s.a", "ASYNC") + logger("t.a", "FILE") + root,
                               appenders + logger("s.c", "ROLL") + logger("u.a", "INNER"),
                               appenders + logger("t.b", "ASYNC") + logger("s.a.b", "FILE") + root};
  for (int i = 0; i < 3; ++i) {
    Workplace::write(DOCUMENTS[i],
                     "<?xml version='1.0' encoding='UTF-8'?>\n"
                     "<log4j:configuration>\n" +
                         texts[i] + "</log4j:configuration>\n");
  }
}

unsigned long operations() {
  unsigned long sum = 0;
  for (const Progress& progress : g_progress) {
    sum += progress.operations + (progress.hasEnded ? 1 : 0);
  }
  return sum;
}

/// Returns when all threads have ended; ends the process when they hang.
void watch() {
  auto lastChange = std::chrono::steady_clock::now();
  unsigned long before = 0;
  const auto haveEnded = [] {
    bool all = true;
    for (const Progress& progress : g_progress) {
      all = all && progress.hasEnded;
    }
    return all;
  };
  while (!haveEnded()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const unsigned long now = operations();
    if (now != before) {
      before = now;
      lastChange = std::chrono::steady_clock::now();
    } else if (std::chrono::steady_clock::now() - lastChange > HANG) {
      for (const Progress& progress : g_progress) {
        std::printf("HANG at %s, operation %lu\n",
                    progress.hasEnded ? "its end" : progress.at.load(), progress.operations.load());
      }
      std::fflush(stdout);
      std::_Exit(1);
    }
    std::error_code ignored;
    if (std::filesystem::file_size("log4zeb.log", ignored) + 1 > MOST_DIAGNOSTICS) {
      std::filesystem::resize_file("log4zeb.log", 0, ignored);
    }
  }
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount < 2) {
    std::fprintf(stderr, "usage: stress SECONDS [SEED]\n");
    return 2;
  }
  const std::chrono::milliseconds length(
      static_cast<long>(1000 * std::strtod(arguments[1], nullptr)));
  g_seed = argumentCount > 2 ? static_cast<unsigned>(std::strtoul(arguments[2], nullptr, 10))
                             : std::random_device()() % 1000000;
  std::printf("seed %u\n", g_seed.load());
  std::fflush(stdout);
  const Workplace workplace;
  if (g_seed % 2 == 0) {  // else with diagnostics, whose lock lets threads meet less often
    Workplace::write("../configuration/logdebug.ini", "0 log4zeb.log");
  }
  writeDocuments();
  const auto end = std::chrono::steady_clock::now() + length;
  std::vector<std::thread> threads;
  for (Progress& progress : g_progress) {
    const auto number = static_cast<unsigned>(&progress - g_progress.data());
    threads.emplace_back([&progress, number, end] {
      t_random = SoakRandom(g_seed * 1000 + 500 + number);
      t_progress = &progress;
      while (std::chrono::steady_clock::now() < end) {
        act();
      }
      progress.at = "its end";
      progress.hasEnded = true;
    });
  }
  watch();
  for (std::thread& thread : threads) {
    thread.join();
  }
  LOGManager::shutdown();
  while (!g_nodes.empty()) {
    retire(g_nodes.back()->appender.get());
  }
  dig();
  std::printf("%lu operations, %lu appenders\n", operations(), g_numbers);
  return 0;
}
