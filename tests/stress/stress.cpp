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

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
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
#include "support/Documents.h"
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

const Name& anyName() { return NAMES[t_random.below(std::size(NAMES))]; }

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
  const auto found = std::find_if(g_nodes.begin(), g_nodes.end(), [&](const Node* node) {
    return node->appender.get() == appender;
  });
  if (found != g_nodes.end()) {
    g_graveyard.push_back(*found);
    g_nodes.erase(found);
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
    std::unique_lock<std::mutex> guard(g_nodesLock);
    const auto found = std::find_if(g_graveyard.begin(), g_graveyard.end(),
                                    [](const Node* node) { return node->users == 0; });
    if (found == g_graveyard.end()) {
      return;
    }
    Node& node = **found;
    g_graveyard.erase(found);
    guard.unlock();
    bury(node);
  }
}

struct Action {
  const char* what;
  std::function<void()> act;
};

/// Does one of them; the last has what the others leave of the chances.
void perform(const std::vector<Action>& actions, unsigned chances) {
  const Action& action =
      actions[std::min<std::size_t>(t_random.below(chances), actions.size() - 1)];
  at(action.what);
  action.act();
}

void actOutside() {
  const auto seldom = [](void (*act)()) {
    if (t_random.oneIn(4)) {
      act();
    }
  };
  perform(
      {{"reading a document", [] { LOGDOMConfigurator::configure(DOCUMENTS[t_random.below(3)]); }},
       {"shutting down", [&] { seldom(LOGManager::shutdown); }},
       {"resetting", [&] { seldom(LOGManager::resetConfiguration); }},
       {"removing all from a logger", [] { loggerOf(anyName())->removeAllAppenders(); }},
       {"digging", dig}},
      12);
}

void actOnLogger() {
  const Name& name = anyName();
  const Use use(name.rank);
  if (name.rank >= t_rank || use.node == nullptr) {
    return;
  }
  LOGLogger& logger = *loggerOf(name);
  LOGAppenderSkeleton* const appender = use.node->appender.get();
  perform(
      {{"setting a level",
        [&] {
          const bool has = *name.text == 0 || t_random.oneIn(3);
          logger.setLevel(has ? LOGLevel::toLevel("DEBUG") : nullptr);
        }},
       {"setting additivity", [&] { logger.setAdditivity(static_cast<int>(t_random.below(2))); }},
       {"asking for an appender", [&] { logger.getAppender("FILE"); }},
       {"asking whether one is attached", [&] { logger.isAttached(appender); }},
       {"removing from a logger",
        [&] {
          t_random.oneIn(2) ? logger.removeAppender(appender)
                            : logger.removeAppender(appender->getName());
        }},
       {"adding to a logger", [&] { logger.addAppender(appender); }}},
      9);
}

void actOnAsync() {
  const Use use(t_rank - 1, true);
  const Use other(use.node == nullptr ? 0 : use.node->rank);
  if (other.node == nullptr) {
    return;
  }
  LOGAsyncAppender& async = *use.node->async;
  LOGAppenderSkeleton& appender = *other.node->appender;
  // Later ones only: no circles.
  const bool mayAdd = other.node->async == nullptr || other.node->number > use.node->number;
  perform({{"flushing", [&] { async.flush(static_cast<int>(t_random.below(5))); }},
           {"setting a buffer's size",
            [&] {
              try {
                async.setBufferSize(1 + static_cast<int>(t_random.below(16)));
              } catch (const ZEBAssertError&) {  // closed
              }
            }},
           {"asking a queue whether one is attached", [&] { async.isAttached(&appender); }},
           {"removing from a queue",
            [&] {
              t_random.oneIn(2) ? async.removeAppender(&appender)
                                : async.removeAppender(appender.getName());
            }},
           {"removing all from a queue",
            [&] { t_random.oneIn(4) ? async.removeAllAppenders() : void(); }},
           {"adding to a queue", [&] { mayAdd ? async.addAppender(&appender) : void(); }}},
          8);
}

void actOnAppender() {
  const Use use(t_rank - 1);
  if (use.node != nullptr) {
    LOGAppenderSkeleton& appender = *use.node->appender;
    perform({{"closing", [&] { appender.close(); }},
             {"retiring", [&] { retire(&appender); }},
             {"setting a layout", [&] { appender.setLayout(&layout()); }}},
            6);
  }
}

void log() {
  const Name& name = anyName();
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
  using namespace documents;
  const std::string lines = pattern("%m%n");
  const std::string appenders =
      file("FILE", "file.log", param("Append", "false") + lines) +
      appender("ROLL", "LOGRollingFileAppender",
               param("File", "roll.log") + param("MaximumFileSize", "5000") + lines) +
      async("INNER", {"FILE"}) + async("ASYNC", {"INNER", "ROLL"});
  const std::string all = root({"ASYNC"}, "DEBUG");
  const std::string texts[] = {logger("s.a", {"ASYNC"}) + logger("t.a", {"FILE"}) + all,
                               logger("s.c", {"ROLL"}) + logger("u.a", {"INNER"}),
                               logger("t.b", {"ASYNC"}) + logger("s.a.b", {"FILE"}) + all};
  for (int i = 0; i < 3; ++i) {
    Workplace::write(DOCUMENTS[i], whole(appenders + texts[i]));
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
  const auto runs = [](const Progress& progress) { return !progress.hasEnded; };
  while (std::any_of(g_progress.begin(), g_progress.end(), runs)) {
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
