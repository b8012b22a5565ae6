// Loggers, the root logger, the hierarchy and the manager.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include "core/LOGDefaultRepositorySelector.h"
#include "core/LOGHashtable.h"
#include "core/LOGHierarchy.h"
#include "core/LOGLogger.h"
#include "core/LOGManager.h"
#include "core/LOGRootLogger.h"
#include "log4zeb.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBThreadGuard.h"
#include "support/CapturingAppender.h"
#include "support/Threads.h"
#include "support/Workplace.h"

namespace {

class OwnLogger : public LOGLogger {
 public:
  explicit OwnLogger(const I18NString& name) : LOGLogger(name) { instance("OwnLogger"); }
};

class OwnFactory : public LOGLoggerFactory {
 public:
  LOGLogger* makeNewLoggerInstance(const I18NString& name) override {
    ++made;
    return new OwnLogger(name);
  }
  int made = 0;
};

LOGLevel* level(const char* name) { return LOGLevel::toLevel(I18NString(name)); }

/// A hierarchy of its own with a capturing appender on the root.
class Hierarchy : public testing::Test {
 protected:
  Hierarchy() { root.addAppender(&capture); }

  Workplace workplace;
  CapturingAppender capture;
  LOGRootLogger root{nullptr};
  LOGHierarchy hierarchy{&root};
};

using Messages = std::vector<std::string>;

}  // namespace

TEST_F(Hierarchy, LinksLoggersToTheirNearestAncestorInWhateverOrderTheyCome) {
  LOGLogger* const abc = hierarchy.getLogger("a.b.c");
  EXPECT_EQ(abc->getParent(), &root);
  EXPECT_EQ(hierarchy.exists("a.b"), nullptr);
  LOGLogger* const a = hierarchy.getLogger("a");
  EXPECT_EQ(abc->getParent(), a);
  EXPECT_EQ(a->getParent(), &root);
  LOGLogger* const ab = hierarchy.getLogger("a.b");
  EXPECT_EQ(abc->getParent(), ab);
  EXPECT_EQ(ab->getParent(), a);
  EXPECT_EQ(hierarchy.getLogger("a.b.c"), abc);
  EXPECT_EQ(hierarchy.exists("a.b"), ab);
  EXPECT_EQ(hierarchy.getCurrentLoggers().size(), 3U);
  const Messages expected = {"log4zeb: Creating new instance of LOGLogger: a.b.c",
                             "log4zeb: Creating a new provision [a.b] for LOGLogger [a.b.c].",
                             "log4zeb: Creating a new provision [a] for LOGLogger [a.b.c].",
                             "log4zeb: Add logger [a] as parent of [a.b.c].",
                             "log4zeb: Add logger [a.b] as parent of [a.b.c]."};
  EXPECT_EQ(Workplace::diagnostics(), expected);
  LOGLogger* const xyz = hierarchy.getLogger("x.y.z");
  for (const char* const above : {"x.y", "x"}) {
    LOGLogger* const logger = hierarchy.getLogger(above);
    EXPECT_EQ(xyz->getParent(), logger) << "the parent's name is not looked at";
  }
}

TEST_F(Hierarchy, KeepsOneLoggerForTheEmptyNameAndNamesThatBeginWithADot) {
  LOGLogger* const empty = hierarchy.getLogger("");
  EXPECT_EQ(hierarchy.getLogger(""), empty);
  EXPECT_EQ(hierarchy.exists(""), nullptr);
  EXPECT_EQ(Workplace::errors("LOGHierrachy::getLogger ---- Could not put Logger in LOGHashtable"),
            1);
  EXPECT_EQ(hierarchy.getLogger(".x.y")->getParent(), &root);
  EXPECT_EQ(hierarchy.getAllLoggers().size(), 3U);
  CapturingAppender late;
  empty->addAppender(&late);
  hierarchy.shutdown();
  EXPECT_GE(late.closings, 1) << "a logger that the table refused is shut down too";
}

TEST_F(Hierarchy, StillKnowsLoggersThatTheGrowingTableLost) {
  std::vector<LOGLogger*> made;
  for (int i = 0; i < 500; ++i) {
    made.push_back(hierarchy.getLogger(I18NString("logger" + std::to_string(i))));
  }
  LOGHashtable table;  // which the list is in the order of, with what it lost
  for (LOGLogger* const logger : made) {
    table.put(logger->getName(), logger);
  }
  const ZEBList<LOGObject*> listed = hierarchy.getCurrentLoggers();
  const ZEBList<LOGObject*> expected = table.elements();
  table.forget();
  EXPECT_LT(listed.size(), 500U);
  EXPECT_TRUE(std::equal(listed.begin(), listed.end(), expected.begin(), expected.end()));
  for (int i = 0; i < 500; ++i) {
    EXPECT_EQ(hierarchy.exists(I18NString("logger" + std::to_string(i))), made[i]);
    LOGLogger* const child = hierarchy.getLogger(I18NString("logger" + std::to_string(i) + ".x"));
    EXPECT_EQ(child->getParent(), made[i]);
  }
  ASSERT_EQ(hierarchy.getAllLoggers().size(), 1001U);
  for (LOGLogger* const logger : hierarchy.getAllLoggers()) {
    logger->addAppender(&capture);
  }
  hierarchy.shutdown();
  for (LOGLogger* const logger : hierarchy.getAllLoggers()) {
    EXPECT_TRUE(logger->getAllAppenders().atEnd());
  }
}

TEST_F(Hierarchy, InheritsLevelsAndAppliesTheThreshold) {
  LOGLogger* const logger = hierarchy.getLogger("a.b");
  logger->debug("1");
  hierarchy.getLogger("a")->setLevel(level("WARN"));
  logger->info("below the inherited level");
  logger->warn("2");
  auto own = std::make_unique<LOGLevel>(*level("INFO"));
  logger->setLevel(own.get());
  own.reset();
  logger->info("3");
  logger->setLevel(const_cast<LOGLevel*>(logger->getLevel()));
  logger->info("4");
  EXPECT_EQ(logger->isInfoEnabled(), 1);
  EXPECT_EQ(logger->isDebugEnabled(), 0);
  hierarchy.setThreshold(I18NString("NOSUCH"));
  EXPECT_EQ(Workplace::warnings("Could not convert [NOSUCH to Level."), 1);
  hierarchy.setThreshold(I18NString("OFF"));
  logger->fatal("dropped by the threshold");
  hierarchy.setThreshold(I18NString("all"));
  root.setLevel(nullptr);
  hierarchy.getLogger("other")->fatal("no level anywhere");
  EXPECT_EQ(capture.messages, (Messages{"1", "2", "3", "4"}));
}

TEST_F(Hierarchy, ForgetsWhatItRememberedOfLevelsWhenTheyChange) {
  LOGLogger* const logger = hierarchy.getLogger("a.b.c");
  const auto logs = [&] {
    const std::size_t before = capture.messages.size();
    logger->info("x");
    return capture.messages.size() > before;
  };
  root.setLevel(level("WARN"));
  EXPECT_FALSE(logs());
  hierarchy.getLogger("a")->setLevel(level("INFO"));
  EXPECT_TRUE(logs()) << "a parent that was not there before";
  hierarchy.setThreshold(level("ERROR"));
  EXPECT_FALSE(logs());
  hierarchy.setThreshold(level("ALL"));
  EXPECT_TRUE(logs());
  logger->getParent()->setLevel(nullptr);
  EXPECT_FALSE(logs());
  logger->setParent(nullptr);
  logger->setLevel(nullptr);
  EXPECT_FALSE(logs()) << "no level at all";
}

TEST(Logger, AsksARepositoryOfAnotherClassEveryTime) {
  class Moody : public LOGHierarchy {
   public:
    using LOGHierarchy::LOGHierarchy;
    int isDisabled(int) override { return disabled; }
    int disabled = 1;
  };
  const Workplace workplace;
  LOGRootLogger root(level("ALL"));
  Moody moody(&root);
  CapturingAppender capture;
  root.addAppender(&capture);
  LOGLogger* const logger = moody.getLogger("a");
  for (moody.disabled = 0; moody.disabled < 2; ++moody.disabled) {
    logger->info("x");
  }
  moody.disabled = 0;
  logger->info("y");
  EXPECT_EQ(capture.messages, (Messages{"x", "y"}));
}

TEST_F(Hierarchy, DeliversToAnAppenderThatIsAddedWhileTheLockIsHeld) {
  root.setLevel(level("ALL"));
  LOGLogger* const logger = hierarchy.getLogger("a");
  for (int i = 0; i < 500; ++i) {
    CapturingAppender late;
    std::atomic<bool> held{false};
    std::thread other([&] {
      while (!held) {
      }
      logger->info("x");
    });
    {
      const ZEBThreadGuard guard(logger->getCriticalSection());
      held = true;
      logger->addAppender(&late);
    }
    other.join();
    ASSERT_EQ(late.messages, Messages{"x"});
    logger->removeAppender(&late);
  }
}

TEST_F(Hierarchy, StopsAtALoggerWithoutAdditivityAndWarnsOnce) {
  LOGLogger* const logger = hierarchy.getLogger("lonely");
  logger->setAdditivity(0);
  logger->info("x");
  logger->info("y");
  hierarchy.getLogger("lonely.child")->info("z");
  EXPECT_TRUE(capture.messages.empty());
  EXPECT_EQ(Workplace::noted("No appenders could be found"), 1);
  EXPECT_EQ(Workplace::warnings("No appenders could be found for logger (lonely)."), 1);
}

TEST_F(Hierarchy, StampsWhatAFactoryMakes) {
  OwnFactory factory;
  hierarchy.getLogger("own.child");
  LOGLogger* const own = hierarchy.getLogger("own", &factory);
  EXPECT_NE(dynamic_cast<OwnLogger*>(own), nullptr);
  EXPECT_EQ(own->instanceOf(), I18NString("LOGLogger"));
  EXPECT_EQ(hierarchy.getLogger("own", &factory), own);
  EXPECT_EQ(factory.made, 1);
  EXPECT_EQ(hierarchy.getLogger("own.child")->getParent(), own);
  EXPECT_THROW(hierarchy.getLogger("none", nullptr), ZEBAssertError);
  EXPECT_EQ(Workplace::errors("LOGHierarchy::getLogger -- unable to lock mutex"), 1);
}

TEST_F(Hierarchy, HasOneLoggerForANameThatItsFactoryAsksForItself) {
  class AskingFactory : public LOGLoggerFactory {
   public:
    explicit AskingFactory(LOGHierarchy& asked) : m_asked(asked) {}
    LOGLogger* makeNewLoggerInstance(const I18NString& name) override {
      m_asked.getLogger(name + ".child");
      LOGLogger* const known = name == "x" ? nullptr : m_asked.getLogger(name);
      return name == "same" ? known : new OwnLogger(name == "x" ? "x.y" : name);
    }

   private:
    LOGHierarchy& m_asked;
  } factory(hierarchy);
  for (const char* name : {"same", "other", "x"}) {
    LOGLogger* const logger = hierarchy.getLogger(name, &factory);
    EXPECT_EQ(hierarchy.getLogger(name), logger) << name;
    EXPECT_EQ(hierarchy.exists(name), logger) << name;
    EXPECT_EQ(logger->getParent(), &root) << name;
    EXPECT_EQ(std::string(name) == "x" ? &root : logger,
              hierarchy.getLogger(I18NString(name) + ".child")->getParent())
        << "a logger that has another name is above no other";
  }
  EXPECT_EQ(hierarchy.getAllLoggers().size(), 7U);
}

TEST_F(Hierarchy, ResetsEverything) {
  LOGLogger* const logger = hierarchy.getLogger("a");
  logger->setLevel(level("ERROR"));
  logger->setAdditivity(0);
  root.setLevel(level("FATAL"));
  hierarchy.setThreshold(level("OFF"));
  hierarchy.resetConfiguration();
  EXPECT_EQ(logger->getLevel(), nullptr);
  EXPECT_EQ(logger->getAdditivity(), 1);
  EXPECT_EQ(root.getLevel()->toInt(), LOGLevel::DEBUG_RANK);
  EXPECT_EQ(hierarchy.isDisabled(LOGLevel::DEBUG_RANK), 0);
  EXPECT_EQ(capture.closings, 2) << "closed as nested appender, and closed when removed";
  hierarchy.clear();
  EXPECT_EQ(hierarchy.exists("a"), nullptr);
}

TEST(Logger, LogsWithoutARepositoryOnlyThroughItsLevelMethods) {
  Workplace workplace;
  CapturingAppender capture;
  LOGRootLogger logger(level("INFO"));
  logger.addAppender(&capture);
  LOGObject message("m");
  logger.info(&message);
  logger.log(level("FATAL"), &message);
  logger.l7dlog(nullptr, "key");
  EXPECT_EQ(logger.isInfoEnabled(), 0);
  EXPECT_EQ(logger.isEnabledFor(level("FATAL")), 0);
  EXPECT_EQ(capture.messages.size(), 1U);
}

TEST_F(Hierarchy, OffersTheRarerRequests) {
  LOGLogger* const logger = hierarchy.getLogger("a");
  logger->log(level("INFO"), I18NString("log"));
  logger->log(nullptr, I18NString("no level"));
  logger->l7dlog(level("WARN"), "key");
  logger->l7dlog(level("WARN"), "key2", nullptr);
  logger->assertLog(1, "holds");
  logger->assertLog(0, "broken");
  logger->info(static_cast<LOGObject*>(nullptr));
  logger->error(std::string("text"));
  EXPECT_THROW(logger->l7dlog(nullptr, "key"), ZEBAssertError);
  EXPECT_EQ(capture.messages, (Messages{"log", "key", "key2", "broken", "(null)", "text"}));
}

TEST_F(Hierarchy, RefusesToCloneALoggerButNotTheRoot) {
  EXPECT_THROW(hierarchy.getLogger("a")->clone(), ZEBAssertError);
  const std::unique_ptr<LOGObject> copy(root.clone());
  EXPECT_NE(dynamic_cast<LOGRootLogger*>(copy.get()), nullptr);
  EXPECT_TRUE(*copy == root);
}

TEST_F(Hierarchy, ReportsAndPassesOnWhatFailsUnderALoggersLock) {
  EXPECT_THROW(root.addAppender(nullptr), ZEBAssertError);
  EXPECT_EQ(Workplace::errors("LOGLogger::addAppender -- unable to lock mutex"), 1);
  capture.onAppend = [](LOGLoggingEvent*) { throw std::runtime_error("broken"); };
  EXPECT_THROW(root.info("x"), std::runtime_error);
  capture.onAppend = nullptr;
  root.info("y");
  EXPECT_EQ(capture.messages.back(), "y") << "no lock is left behind";
}

TEST(Manager, MakesItsHierarchyOnFirstUseFromAnyThread) {
  Workplace workplace;
  LOGManager::shutdown();
  EXPECT_TRUE(Workplace::diagnostics().empty()) << "nothing is made in order to shut it down";
  std::vector<LOGLogger*> roots(8);
  Threads(8, [&roots](int i) { roots[i] = LOGManager::getRootLogger(); }).join();
  EXPECT_EQ(std::set<LOGLogger*>(roots.begin(), roots.end()).size(), 1U);
  EXPECT_EQ(roots[0]->getLevel()->toInt(), LOGLevel::DEBUG_RANK);
  LOGLogger* const made = LOGLogger::getLogger("a");
  EXPECT_EQ(LOGManager::exists("a"), made);
}

TEST(Manager, KeepsEachNamesLoggerWhileThreadsAskForThousands) {
  constexpr int NAMES = 6000;
  constexpr int THREADS = 8;
  const auto nameOf = [](int i) {
    // A name with all that are above it, some of which are never asked for.
    return I18NString("a" + std::to_string(i % 7) + ".b" + std::to_string(i % 211) +
                      (i % 211 == i ? "" : ".c.d" + std::to_string(i)));
  };
  const Workplace workplace;
  std::vector<std::vector<LOGLogger*>> found(THREADS, std::vector<LOGLogger*>(NAMES));
  Threads(THREADS, [&](int thread) {
    for (int i = 0; i < NAMES; ++i) {
      const int mixed = (i * 7919 + thread * 997) % NAMES;
      found[thread][mixed] = LOGManager::getLogger(nameOf(mixed));
    }
  }).join();
  for (int i = 0; i < NAMES; ++i) {
    LOGLogger* const logger = LOGManager::getLogger(nameOf(i));
    for (int t = 0; t < THREADS; ++t) {
      ASSERT_EQ(found[t][i], logger) << nameOf(i).toStdString();
    }
    ASSERT_EQ(logger->getName(), nameOf(i));
    LOGLogger* parent = LOGManager::getRootLogger();
    for (std::string above = nameOf(i).toStdString(); above.find('.') != std::string::npos;) {
      above.resize(above.rfind('.'));
      if (LOGLogger* const existing = LOGManager::exists(above)) {
        parent = existing;
        break;
      }
    }
    ASSERT_EQ(logger->getParent(), parent) << nameOf(i).toStdString();
  }
}

TEST(Manager, AsksTheSelectorOnEveryCall) {
  LOGRootLogger root(nullptr);
  LOGHierarchy other(&root);
  LOGDefaultLoggerFactory factory;
  LOGDefaultRepositorySelector selector(&other);
  LOGObject guard;
  EXPECT_THROW(LOGManager::setRepositorySelector(&selector, nullptr), ZEBAssertError);
  LOGManager::setRepositorySelector(&selector, &guard);
  EXPECT_EQ(LOGManager::getRootLogger(), &root);
  LOGLogger* const made = LOGManager::getLogger("a", &factory);
  EXPECT_EQ(other.exists("a"), made);
  LOGManager::setRepositorySelector(nullptr, &guard);
  EXPECT_NE(LOGManager::getRootLogger(), &root);
}
