// Levels, objects, the hash table, events, the diagnostic context and the diagnostics.

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <thread>

#ifdef __linux__
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include "core/LOGHashtable.h"
#include "core/LOGLevel.h"
#include "core/LOGLogLog.h"
#include "core/LOGLogger.h"
#include "core/LOGLoggingEvent.h"
#include "core/LOGManager.h"
#include "core/LOGNDC.h"
#include "core/LOGOptionConverter.h"
#include "core/LOGStack.h"
#include "layouts/LOGLocationInfo.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBUtTime.h"
#include "rendering/LOGObjectRenderer.h"
#include "rendering/LOGRendererMap.h"
#include "support/Threads.h"
#include "support/Workplace.h"

namespace fs = std::filesystem;

TEST(OptionConverter, FindsLevelsBeforeAnyLoggerWasMade) {
  LOGLevel* const fallback = reinterpret_cast<LOGLevel*>(8);
  EXPECT_STREQ(LOGOptionConverter::toLevel("WARN", nullptr)->toString(), "WARN");
  EXPECT_EQ(LOGOptionConverter::toLevel("NOSUCH", fallback), fallback);
  EXPECT_EQ(LOGOptionConverter::toLevel("", fallback), fallback);
  EXPECT_EQ(LOGOptionConverter::toLevel("null", fallback), nullptr);
}

TEST(OptionConverter, SplitsClassesAtTheLastHashAndReadsTruthValues) {
  Workplace workplace;
  LOGLevel* const fallback = LOGLevel::toLevel(LOGLevel::FATAL_RANK);
  EXPECT_STREQ(LOGOptionConverter::toLevel("INFO#LOGLevel", fallback)->toString(), "INFO");
  EXPECT_EQ(LOGOptionConverter::toLevel("INFO#loglevel", fallback), nullptr);
  EXPECT_STREQ(LOGOptionConverter::toLevel("A#B#LOGLevel", fallback)->toString(), "DEBUG");
  EXPECT_EQ(LOGOptionConverter::toLevel("NULL#LOGLevel", fallback), nullptr);
  EXPECT_EQ(Workplace::diagnostics(),
            (std::vector<std::string>{"log4zeb: toLevel:class=[LOGLevel]:pri=[INFO]",
                                      "log4zeb: toLevel:class=[loglevel]:pri=[INFO]",
                                      "log4zeb: toLevel:class=[LOGLevel]:pri=[A#B]"}));
  EXPECT_EQ(LOGOptionConverter::toBoolean("tRuE", 0), 1);
  EXPECT_EQ(LOGOptionConverter::toBoolean("False", 1), 0);
  EXPECT_EQ(LOGOptionConverter::toBoolean(" true", 0), 0);
  EXPECT_EQ(LOGOptionConverter::toBoolean("", 1), 1);
}

TEST(Level, IsFoundByNameInAnyCaseAndByExactRank) {
  const struct {
    const char* name;
    int rank;
    int syslog;
  } LEVELS[] = {{"All", LOGLevel::ALL_RANK, 7},
                {"debug", 10000, 7},
                {"INFO", 20000, 6},
                {"wArN", 30000, 4},
                {"error", 40000, 3},
                {"Fatal", 50000, 0},
                {"off", LOGLevel::OFF_RANK, 0}};
  for (const auto& expected : LEVELS) {
    LOGLevel* const level = LOGLevel::toLevel(I18NString(expected.name));
    EXPECT_EQ(level->toInt(), expected.rank);
    EXPECT_EQ(level->getSyslogEquivalent(), expected.syslog);
    EXPECT_EQ(LOGLevel::toLevel(expected.rank), level);
  }
  EXPECT_EQ(LOGLevel::toLevel(25000)->toInt(), LOGLevel::DEBUG_RANK);
  EXPECT_EQ(LOGLevel::toLevel(25000, nullptr), nullptr);
  EXPECT_EQ(LOGLevel::toLevel(I18NString("warning"), nullptr), nullptr);
  EXPECT_EQ(LOGLevel::toLevel(10000)->isGreaterOrEqual(nullptr), 0);
  EXPECT_EQ(LOGLevel::toLevel(LOGLevel::ALL_RANK)->isGreaterOrEqual(LOGLevel::toLevel(10000)), 0);
}

TEST(Level, ComparesByRankAndSyslogValueButNotByName) {
  class OwnLevel : public LOGLevel {
   public:
    OwnLevel(int rank, int syslog) : LOGLevel(rank, "OWN", syslog) {}
    OwnLevel() = default;
  };
  EXPECT_TRUE(OwnLevel(10000, 7) == *LOGLevel::toLevel(10000));
  EXPECT_TRUE(OwnLevel(10000, 6) != *LOGLevel::toLevel(10000));
  EXPECT_EQ(OwnLevel().getSyslogEquivalent(), 50000);
}

TEST(Hashtable, ShadowsOlderEntriesAndRemovesTheNewest) {
  LOGHashtable table;
  EXPECT_EQ(table.put("a", new LOGObject("first")), 1);
  EXPECT_EQ(table.put("a", new LOGObject("second")), 2);
  EXPECT_EQ(table.get("a")->toString(), I18NString("second"));
  EXPECT_EQ(table.remove("b"), -1);
  EXPECT_EQ(table.remove("a"), 1);
  EXPECT_EQ(table.get("a")->toString(), I18NString("first"));
  EXPECT_EQ(table.remove("a"), 0);
  EXPECT_EQ(table.remove("a"), -1);
  EXPECT_EQ(table.put("", nullptr), 0);
  LOGObject object;
  EXPECT_EQ(LOGHashtable(0).put("a", &object), 0);
  EXPECT_EQ(table.put("", &object), 0);
}

TEST(Hashtable, LosesEntriesThatCollideWhenItGrowsButStillOwnsThem) {
  LOGHashtable table(4);
  // Hashes 1, 5, 9 and 13: one bucket of four, two buckets of eight.
  for (const char unit : {'\x01', '\x05', '\x09', '\x0D'}) {
    table.put(I18NString(std::string(1, unit)), new LOGObject);
  }
  EXPECT_EQ(table.elements().size(), 4U);
  table.put("z", new LOGObject);
  EXPECT_EQ(table.size(), 5);
  EXPECT_EQ(table.elements().size(), 3U);
  // A chain is moved from its head, so the newest entry of a bucket stays.
  EXPECT_EQ(table.contains("\x0D"), 1);
  EXPECT_EQ(table.contains("\x09"), 1);
  EXPECT_EQ(table.contains("\x05"), 0);
  EXPECT_EQ(table.contains("\x01"), 0);
}

TEST(Hashtable, RemovesAnEntryByItsValueWhereverItIs) {
  LOGHashtable table(4);
  std::vector<LOGObject*> values;
  // Hashes 1, 5, 9 and 13, as above; two of them are lost.
  for (const char* name : {"\x01", "\x05", "\x09", "\x0D", "\x05"}) {
    table.put(name, values.emplace_back(new LOGObject(name)));
  }
  LOGObject* const newer = new LOGObject("newer");
  table.put("\x09", newer);
  EXPECT_EQ(table.size(), 6);
  for (LOGObject* const value : values) {
    table.removeValue(value->toString(), value);
  }
  EXPECT_EQ(table.size(), 1);
  EXPECT_EQ(table.get("\x09"), newer);
}

TEST(Event, CopiesItsMessageAndKeepsTheFirstThreadsContext) {
  LOGLogger* const logger = LOGManager::getLogger("event.test");
  LOGObject message("text");
  auto original = std::make_unique<LOGLoggingEvent>(
      "fqn", logger, LOGLevel::toLevel(LOGLevel::INFO_RANK), &message);
  message = LOGObject("changed");
  const std::unique_ptr<I18NString> first(original->getRenderedMessage());
  std::unique_ptr<I18NString> second(original->getRenderedMessage());
  EXPECT_NE(first.get(), second.get());
  LOGNDC::push("context");
  const std::string thread = original->getThreadName().toStdString();
  EXPECT_EQ(original->getNDC(), I18NString("context"));
  original->setThrowableStrRep("thrown");
  LOGLoggingEvent copy(*original);
  original.reset();
  std::thread([&] {
    EXPECT_EQ(copy.getThreadName().toStdString(), thread);
    EXPECT_EQ(copy.getNDC(), I18NString("context"));
  }).join();
  second.reset(copy.getRenderedMessage());
  EXPECT_EQ(*second, I18NString("text"));
  EXPECT_TRUE(copy.getThrowableStrRep().isEmpty());
  EXPECT_EQ(copy.getLoggerName(), I18NString("event.test"));
  EXPECT_LE(ZEBUtTime::nowSeconds() - copy.getTimeStamp(), 5);
  EXPECT_EQ(copy.getLocationInformation()->getLineNumber(), I18NString("?"));
  LOGNDC::remove();
}

TEST(Event, MayHaveNoMessageButNeedsALogger) {
  LOGLogger* const logger = LOGManager::getLogger("event.test");
  LOGLoggingEvent empty("fqn", logger, LOGLevel::toLevel(LOGLevel::INFO_RANK), nullptr);
  const LOGLoggingEvent copy(empty);
  EXPECT_EQ(empty.getMessage(), nullptr);
  EXPECT_EQ(empty.getRenderedMessage(), nullptr);
  LOGObject message("text");
  LOGLoggingEvent assigned("other", logger, nullptr, &message);
  assigned = empty;
  EXPECT_EQ(assigned.getMessage(), nullptr);
  EXPECT_EQ(assigned.getLevel(), empty.getLevel());
  EXPECT_THROW(LOGLoggingEvent("fqn", nullptr, nullptr, nullptr), ZEBAssertError);
}

TEST(Event, RendersWhatItWasAssigned) {
  class Own : public LOGObject {
   public:
    using LOGObject::LOGObject;
    LOGObject* clone() const override { return new Own(*this); }
  };
  LOGLogger* const logger = LOGManager::getLogger("event.test");
  const auto makeEvent = [logger](LOGObject message, bool isRendered) {
    auto event = std::make_unique<LOGLoggingEvent>("fqn", logger, nullptr, &message);
    if (isRendered) {
      event->render();
    }
    return event;
  };
  for (const bool wasRendered : {false, true}) {
    for (const bool isRendered : {false, true}) {
      const auto target = makeEvent(Own("old"), wasRendered);
      target->setThrowableStrRep("thrown");
      const auto source = makeEvent(Own("new"), isRendered);
      source->setThrowableStrRep("another");
      *target = *source;
      const std::unique_ptr<I18NString> text(target->getRenderedMessage());
      EXPECT_EQ(*text, I18NString("new")) << wasRendered << isRendered;
      EXPECT_EQ(target->getThrowableStrRep(), I18NString("thrown"));
    }
  }
}

TEST(Renderer, IsChosenByTheObjectsTag) {
  static int alive = 0;
  class Upper : public LOGObjectRenderer {
   public:
    Upper() { ++alive; }
    ~Upper() override { --alive; }
    I18NString* doRender(LOGObject* object) override {
      return new I18NString("<" + object->toString() + ">");
    }
  };
  LOGRendererMap map;
  auto* const renderer = new Upper;
  map.put("Order", renderer);
  map.put("Invoice", renderer);
  map.put("Order", renderer);
  map.put("", renderer);
  map.put("", new Upper);
  EXPECT_EQ(alive, 1) << "what is put under no tag is freed, unless it is known";
  LOGObject order("o");
  order.instance("Order");
  LOGObject other("o");
  EXPECT_EQ(*std::unique_ptr<I18NString>(map.findAndRender(&order)), I18NString("<o>"));
  EXPECT_EQ(*std::unique_ptr<I18NString>(map.findAndRender(&other)), I18NString("o"));
  EXPECT_EQ(map.findAndRender(nullptr), nullptr);
  map.clear();
  EXPECT_EQ(*std::unique_ptr<I18NString>(map.findAndRender(&order)), I18NString("o"));
  EXPECT_EQ(alive, 0);
}

TEST(DiagnosticContext, ComposesTheMessagesOfAThread) {
  EXPECT_TRUE(LOGNDC::pop().isEmpty());
  EXPECT_TRUE(LOGNDC::get().isEmpty());
  LOGNDC::push("a");
  LOGNDC::push("b");
  EXPECT_EQ(LOGNDC::get(), I18NString("a b"));
  EXPECT_EQ(LOGNDC::peek(), I18NString("b"));
  EXPECT_EQ(LOGNDC::getDepth(), 2);
  const I18NString& popped = LOGNDC::pop();
  LOGNDC::push("c");
  EXPECT_EQ(popped, I18NString("b")) << "valid until the next pop";
  LOGNDC::push("kept");
  const I18NString& kept = LOGNDC::pop();
  const std::unique_ptr<LOGStack> stack(LOGNDC::cloneStack());
  LOGNDC::remove();
  LOGNDC::inherit(stack.get());
  EXPECT_EQ(kept, I18NString("kept")) << "also when the stack itself goes";
  LOGNDC::push("d");
  LOGNDC::setMaxDepth(5);
  EXPECT_EQ(LOGNDC::getDepth(), 3);
  LOGNDC::setMaxDepth(1);
  EXPECT_EQ(LOGNDC::get(), I18NString("a"));
  LOGNDC::clear();
  EXPECT_EQ(LOGNDC::getDepth(), 0);
  LOGNDC::push("again");
  EXPECT_EQ(LOGNDC::get(), I18NString("again")) << "an emptied stack begins anew";
  LOGNDC::remove();
  EXPECT_EQ(LOGNDC::getDepth(), 0);
}

TEST(DiagnosticContext, IsInheritedByCopyAndGoneWithItsThread) {
  LOGNDC::push("parent");
  const std::unique_ptr<LOGStack> stack(LOGNDC::cloneStack());
  constexpr int MORE_THAN_THE_REGISTRY_HAS_BUCKETS = 300;
  Threads(MORE_THAN_THE_REGISTRY_HAS_BUCKETS, [&stack](int) {
    LOGNDC::inherit(stack.get());
    LOGNDC::push("child");
    EXPECT_EQ(LOGNDC::get(), I18NString("parent child"));
  }).join();
  EXPECT_EQ(LOGNDC::get(), I18NString("parent"));
  LOGNDC::remove();
  EXPECT_EQ(LOGNDC::cloneStack(), nullptr);
}

TEST(Diagnostics, AreWrittenOnlyWhenTheSettingsFileIsThere) {
  Workplace workplace;
  fs::remove("../configuration/logdebug.ini");
  LOGLogLog::error("lost");
  EXPECT_FALSE(fs::exists("log4zeb.log"));
  // Without a file being written, shutdown changes nothing: the settings are not read again.
  Workplace::write("../configuration/logdebug.ini", "1 other.log");
  LOGLogLog::shutdown();
  LOGLogLog::error("lost");
  EXPECT_FALSE(fs::exists("other.log"));
}

TEST(Diagnostics, ReadTheirSettingsFromARegularFileOnly) {
  Workplace workplace;
  fs::remove("../configuration/logdebug.ini");
#ifdef __linux__
  ASSERT_EQ(mkfifo("../configuration/logdebug.ini", 0600), 0) << "whoever opens it waits for ever";
#else
  fs::create_directory("../configuration/logdebug.ini");
#endif
  LOGLogLog::error("lost");
  EXPECT_FALSE(fs::exists("log4zeb.log"));
}

TEST(Diagnostics, PrefixTheirLinesAndTakeTheFileNameFromTheSettings) {
  Workplace workplace;
  Workplace::write("../configuration/logdebug.ini", "0\n mine.log ignored");
  LOGLogLog::debug("d");
  LOGLogLog::warn("w");
  LOGLogLog::error("");
  LOGLogLog::error("\xC3\xA9");
  ZEBAssertError failure("f", "source", 1);
  EXPECT_THROW(LOGLogLog::error("e", failure), ZEBAssertError);
  EXPECT_EQ(failure.getBackTrace().back().source, "LOGLogLog::error");
  EXPECT_EQ(Workplace::read("mine.log"),
            "log4zeb: d\r\nlog4zeb:WARN w\r\nlog4zeb:ERROR \xC3\xA9\r\nlog4zeb:ERROR e\r\n");
  LOGLogLog::shutdown();
  Workplace::write("../configuration/logdebug.ini", "1");
  LOGLogLog::debug("default name");
  EXPECT_EQ(Workplace::read("log4zeb.log"), "log4zeb: default name\r\n");
  LOGLogLog::shutdown();
  LOGLogLog::debug("appended");
  EXPECT_EQ(Workplace::lines("log4zeb.log").size(), 2U);
}

TEST(Diagnostics, PassAnExceptionOfAProgramsClassOnAsItIs) {
  struct Own : ZEBThrowable {
    explicit Own(int number) : ZEBThrowable("own", "source", 1), m_number(number) {}
    int m_number;
  };
  Workplace workplace;
  using Record = void (*)(const I18NString&, ZEBThrowable&);
  for (const Record record :
       {Record(&LOGLogLog::debug), Record(&LOGLogLog::warn), Record(&LOGLogLog::error)}) {
    Own another(1);
    try {
      try {
        throw Own(2);
      } catch (ZEBThrowable& handled) {
        EXPECT_THROW(record("another", another), ZEBThrowable) << "while one is handled";
        record("own", handled);
      }
    } catch (const Own& passed) {
      EXPECT_EQ(passed.m_number, 2);
      EXPECT_EQ(passed.getBackTrace().size(), 1U);
    }
  }
  EXPECT_EQ(Workplace::diagnostics().size(), 6U);
}

TEST(Diagnostics, TryAgainWhenTheirFileCannotBeOpened) {
  Workplace workplace;
  Workplace::write("../configuration/logdebug.ini", "1 later/d.log");
  LOGLogLog::debug("lost");
  fs::create_directory("later");
  LOGLogLog::debug("kept");
  EXPECT_EQ(Workplace::read("later/d.log"), "log4zeb: kept\r\n");
}

#ifdef __linux__
TEST(Diagnostics, GoToAPipeFromWhenItHasAReaderOn) {
  Workplace workplace;
  fs::remove("log4zeb.log");
  ASSERT_EQ(mkfifo("log4zeb.log", 0600), 0);
  alarm(60);  // ends a test that waits for ever in opening a pipe without a reader
  LOGLogLog::debug("lost");
  const int reader = open("log4zeb.log", O_RDONLY | O_NONBLOCK);
  const std::string message(3 * static_cast<std::size_t>(fcntl(reader, F_GETPIPE_SZ)), 'x');
  const std::string line = "log4zeb: " + message + "\r\n";
  std::thread logging([&] { LOGLogLog::debug(I18NString(message)); });
  std::string got;
  for (char piece[4096]; got.size() < line.size();) {
    const ssize_t size = read(reader, piece, sizeof piece);
    got.append(piece, size > 0 ? static_cast<std::size_t>(size) : 0);
  }
  logging.join();
  alarm(0);
  close(reader);
  EXPECT_TRUE(got == line) << "whole, although the pipe was full meanwhile";
}
#endif

TEST(Diagnostics, KeepLinesOfManyThreadsWhole) {
  Workplace workplace;
  Threads(4, [](int thread) {
    for (int i = 0; i < 500; ++i) {
      LOGLogLog::debug(I18NString(std::string(60, static_cast<char>('a' + thread))));
    }
  }).join();
  const std::vector<std::string> lines = Workplace::diagnostics();
  EXPECT_EQ(lines.size(), 2000U);
  EXPECT_LE(std::set<std::string>(lines.begin(), lines.end()).size(), 4U);
}
