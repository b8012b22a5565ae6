// Documents in, a working set of loggers and appenders out; and what is reported of bad ones.

#include <gtest/gtest.h>

#include <atomic>

#include "appenders/LOGAsyncAppender.h"
#include "appenders/LOGConsoleAppender.h"
#include "appenders/LOGOnlyOnceErrorHandler.h"
#include "appenders/LOGRollingFileAppender.h"
#include "config/LOG4ZEBConfigurator.h"
#include "config/LOGDOMConfigurator.h"
#include "core/LOGDefaultRepositorySelector.h"
#include "core/LOGHierarchy.h"
#include "core/LOGLogger.h"
#include "core/LOGManager.h"
#include "core/LOGRootLogger.h"
#include "filters/LOGLevelMatchFilter.h"
#include "filters/LOGLevelRangeFilter.h"
#include "filters/LOGStringMatchFilter.h"
#include "layouts/LOGPatternLayout.h"
#include "layouts/LOGTTCCLayout.h"
#include "platform/ZEBIDOM_DOMImplementation.h"
#include "platform/ZEBIDOM_Document.h"
#include "platform/ZEBIDOM_Element.h"
#include "platform/ZEBIDOM_Parser.h"
#include "support/CapturingAppender.h"
#include "support/Documents.h"
#include "support/Texts.h"
#include "support/Threads.h"
#include "support/Workplace.h"

namespace fs = std::filesystem;

namespace {

using Lines = std::vector<std::string>;
using documents::param;

class Configuration : public testing::Test {
 protected:
  static std::string fileAppender(const std::string& name, const std::string& file,
                                  const std::string& children = "") {
    return "<appender name='" + name + "' class='x.y.LOGFileAppender'>" + param("File", file) +
           "<layout class='LOGSimpleLayout'/>" + children + "</appender>";
  }
  static std::string root(const std::string& children) { return "<root>" + children + "</root>"; }
  static std::string ref(const std::string& name) { return "<appender-ref ref='" + name + "'/>"; }

  template <typename Appender = LOGAppenderSkeleton>
  static Appender* rootAppender(const char* name) {
    return dynamic_cast<Appender*>(LOGManager::getRootLogger()->getAppender(name));
  }
  static void info(const char* text) { LOGManager::getRootLogger()->info(text); }

  Workplace workplace;
};

}  // namespace

TEST_F(Configuration, BuildsWhatTheDocumentDescribes) {
  ASSERT_EQ(
      Workplace::configure(
          "<appender name='F' class='LOGRollingFileAppender' addProcID='false'>" +
              param("File", "f.log") + param("Append", "FALSE") + param("MaxBackupIndex", " 7x") +
              param("MaximumFileSize", "10MB") + param("file", "ignored.log") +
              param("MaxBackupIndex", "") + "<layout class='LOGPatternLayout'>" +
              param("conversionpattern", "%p %c %m%n") +
              "</layout>"
              "<filter class='LOGLevelRangeFilter'>" +
              param("LevelMin", "INFO") + param("LevelMax", "ERROR") +
              "</filter><filter class='LOGStringMatchFilter'>" + param("StringToMatch", "keep") +
              "</filter><filter class='LOGLevelMatchFilter'>" + param("LevelToMatch", "WARN") +
              "</filter><filter class='LOGUnknownFilter'/>"
              "<errorHandler class='LOGOnlyOnceErrorHandler'><root-ref/>"
              "<logger-ref ref='a'/></errorHandler></appender>"
              "<appender name='T' class='LOGFileAppender'>" +
              param("File", "t.log") + "<layout class='LOGTTCCLayout'>" +
              param("DATEFORMAT", "NULL") +
              "</layout></appender>"
              "<appender name='never' class='LOGFileAppender'>" +
              param("File", "never.log") +
              "</appender>"
              "<category name='a' additivity='False'><priority value='warn'/>" +
              ref("T") + "</category><logger name='b' additivity='0'/>" +
              root("<level value='INFO'/>" + ref("F")),
          "debug='false'"),
      1);
  auto* const file = rootAppender<LOGRollingFileAppender>("F");
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(file->getMaxBackupIndex(), 7);
  EXPECT_EQ(file->getMaximumFileSize(), 10U);
  EXPECT_EQ(file->getAppend(), 0);
  EXPECT_EQ(file->getAddProcID(), 0);
  EXPECT_NE(dynamic_cast<const LOGOnlyOnceErrorHandler*>(file->getErrorHandler()), nullptr);
  file->setMaximumFileSize(1000);
  LOGLogger* const b = LOGManager::getLogger("b");
  b->debug("below the root's level");
  b->info("keep 1");
  b->warn("w");
  b->info("denied at the end of the chain");
  b->fatal("keep, but beyond the range");
  LOGManager::getLogger("a")->warn("quiet");
  EXPECT_EQ(Workplace::lines("f.log"), (Lines{"INFO b keep 1", "WARN b w"}));
  EXPECT_EQ(Workplace::lines("t.log").size(), 1U);
  EXPECT_NE(Workplace::read("t.log").find("] WARN a - quiet"), std::string::npos);
  EXPECT_FALSE(fs::exists("never.log"));
  EXPECT_EQ(Workplace::debugs("debug attributes= \"false\""), 1);
  EXPECT_EQ(Workplace::noted("Ignoring debug attribute."), 0);
  EXPECT_EQ(Workplace::debugs("Setting [b] additivity to [true]"), 1);
}

TEST_F(Configuration, SharesOneAppenderAmongLoggers) {
  Workplace::configure(fileAppender("F", "f.log") + "<logger name='a'>" + ref("F") + "</logger>" +
                       "<logger name='b'>" + ref("F") + "</logger>");
  EXPECT_EQ(LOGManager::getLogger("a")->getAppender("F"),
            LOGManager::getLogger("b")->getAppender("F"));
  EXPECT_EQ(Workplace::debugs(
                "LOGDOMConfigurator::findAppenderByName : Put appender F into the appender bag."),
            1);
  EXPECT_EQ(Workplace::debugs("LOGDOMConfigurator::findAppenderByName : The appender F already "
                              "exists in appender bag, return it."),
            1);
}

TEST_F(Configuration, RebuildsStaleAppendersEverywhereWhenAppliedAgain) {
  const std::string document = fileAppender("F", "f.log") + fileAppender("G", "g.log") +
                               "<logger name='early'>" + ref("F") + "</logger>" +
                               "<logger name='a' additivity='false'>" + ref("F") + "</logger>" +
                               root(ref("F") + ref("G"));
  Workplace::configure(document);
  LOGAppenderSkeleton* const before = rootAppender("F");
  LOGLogger* const unnamed = LOGManager::getLogger("not.in.the.document");
  unnamed->setAdditivity(0);
  unnamed->addAppender(before);
  info("1");
  Workplace::configure(document);
  LOGAppenderSkeleton* const after = rootAppender("F");
  EXPECT_NE(after, before);
  EXPECT_EQ(before->isStale(), 1);
  for (const char* const name : {"early", "a", "not.in.the.document"}) {
    EXPECT_EQ(LOGManager::getLogger(name)->getAppender("F"), after) << name;
  }
  info("2");
  unnamed->info("3");
  EXPECT_EQ(Workplace::lines("f.log"), (Lines{"1", "2", "3"}));
  Workplace::configure(root(""));
  EXPECT_TRUE(LOGManager::getRootLogger()->getAllAppenders().atEnd());
}

TEST_F(Configuration, AttachesAppendersToAnAsynchronousOneAndFlushesThatWhenItEnds) {
  using documents::layout;
  const std::string document =
      documents::appender("Q", "LOGAsyncAppender",
                          param("BufferSize", "1") + ref("X") + ref("H") + ref("missing")) +
      documents::file("X", "X.log", layout("LOGXMLLayout")) +
      documents::file("H", "H.log", layout("LOGHTMLLayout")) + root(ref("Q"));
  for (int i = 0; i < 2; ++i) {
    Workplace::configure(document);
    EXPECT_EQ(rootAppender<LOGAsyncAppender>("Q")->getBufferSize(), 128) << "not set by documents";
    for (int j = 0; j < 50; ++j) {
      info("x");
    }
  }
  LOG4ZEBConfigurator::shutdown();
  EXPECT_EQ(countOf("</log4j:event>", Workplace::read("X.log")), 100);
  EXPECT_EQ(countOf("</tr>", Workplace::read("H.log")), 100);
  EXPECT_EQ(Workplace::debugs("Attaching appender named [X] to appender named [Q]"), 2);
}

TEST_F(Configuration, BuildsAnewWhatTheProgramHasClosed) {
  const std::string document = fileAppender("F", "f.log") + root(ref("F"));
  Workplace::configure(document);
  LOGManager::getRootLogger()->removeAllAppenders();
  Workplace::configure(document);
  info("x");
  EXPECT_EQ(Workplace::lines("f.log"), (Lines{"x"}));
}

TEST_F(Configuration, BoundsChainsAndCirclesOfReferences) {
  std::string document = root(ref("A0") + ref("circle"));
  for (int i = 0; i < 5000; ++i) {
    document += "<appender name='A" + std::to_string(i) +
                "' class='LOGConsoleAppender'><errorHandler class='LOGOnlyOnceErrorHandler'>" +
                ref("A" + std::to_string(i + 1)) + "</errorHandler></appender>";
  }
  document += "<appender name='circle' class='LOGAsyncAppender'>" + ref("circle") + "</appender>";
  EXPECT_EQ(Workplace::configure(document), 1);
  EXPECT_EQ(Workplace::noted("could be found."), 2);
  EXPECT_EQ(Workplace::noted("Put appender circle into"), 1) << "built once";
  EXPECT_NE(rootAppender("A0"), nullptr);
}

TEST_F(Configuration, GivesAppendersByTheOperationsOfALoggersClass) {
  class Keeping : public LOGLogger {
   public:
    using LOGLogger::addAppender;
    Keeping(const I18NString& name, LOGAppenderSkeleton* own) : LOGLogger(name), kept(own) {
      addAppender(own);
    }
    void addAppender(LOGAppenderSkeleton* appender) override {
      calls += "+" + appender->getName().toStdString();
      LOGLogger::addAppender(appender);
    }
    void removeAllAppenders() override {
      calls += " -";
      removedFrom = snapshotOfAppenders().size();
      LOGLogger::removeAllAppenders();
      if (kept != nullptr) {
        LOGLogger::addAppender(kept);
      }
    }
    std::string calls;
    std::size_t removedFrom = 0;
    LOGAppenderSkeleton* kept;
  };
  CapturingAppender kept("kept");
  CapturingAppender plain("plain");
  struct Factory : LOGLoggerFactory {
    LOGLogger* makeNewLoggerInstance(const I18NString& name) override {
      return new Keeping(name, kept);
    }
    LOGAppenderSkeleton* kept = nullptr;
  } factory;
  factory.kept = &kept;
  auto* const logger = static_cast<Keeping*>(LOGManager::getLogger("own", &factory));
  logger->addAppender(&plain);
  const std::string document = fileAppender("F", "f.log") + fileAppender("G", "g.log") +
                               "<logger name='own'>" + ref("F") + ref("G") + "</logger>";
  std::atomic<std::size_t> logged{0};
  Repeating program({[&] {
    logger->info("x");
    ++logged;
  }});
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(Workplace::configure(document), 1);
    EXPECT_EQ(logger->removedFrom, i == 0 ? 2U : 3U);
  }
  program.stop();
  EXPECT_EQ(logger->calls.substr(0, 18), "+kept+plain -+F+G ");
  EXPECT_EQ(kept.closings, 0) << "the class has kept it";
  EXPECT_EQ(plain.closings, 1);
  EXPECT_EQ(kept.messages.size(), logged) << "no event finds the logger empty";
  EXPECT_EQ(Workplace::lines("f.log").size(), Workplace::lines("g.log").size());
  logger->kept = nullptr;
  logger->removeAllAppenders();
}

TEST_F(Configuration, WorksOnARepositoryWithoutARoot) {
  struct Rootless : LOGHierarchy {
    using LOGHierarchy::LOGHierarchy;
    LOGLogger* getRootLogger() override { return nullptr; }
  };
  LOGRootLogger root(nullptr);
  Rootless rootless(&root);
  LOGDefaultRepositorySelector selector(&rootless);
  LOGObject guard;
  LOGManager::setRepositorySelector(&selector, &guard);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(Workplace::configure(fileAppender("F", "f.log") + "<logger name='a'>" + ref("F") +
                                   "</logger>" + Configuration::root(ref("F"))),
              1);
    LOGManager::getLogger("a")->warn("x");
  }
  EXPECT_EQ(Workplace::lines("f.log").size(), 2U);
  EXPECT_EQ(Workplace::noted("parseRoot -- unable to lock mutex"), 2);
  LOGManager::shutdown();
  LOGManager::setRepositorySelector(nullptr, &guard);
}

TEST_F(Configuration, SetsAndUnsetsLevelsAndTheThreshold) {
  LOGLogger* const a = LOGManager::getLogger("a");
  a->setLevel(LOGLevel::toLevel(LOGLevel::FATAL_RANK));
  Workplace::configure(
      "<logger name='a'><level value='inherited'/><level value='null'/></logger>"
      "<logger name='b'><level value='NOSUCH' class='x.Own'/></logger>"
      "<root><level value='inherited'/></root>",
      "threshold='WARN'");
  EXPECT_EQ(a->getLevel(), nullptr);
  EXPECT_EQ(LOGManager::getLogger("b")->getLevel()->toInt(), LOGLevel::DEBUG_RANK);
  EXPECT_EQ(LOGManager::getLoggerRepository()->isDisabled(LOGLevel::INFO_RANK), 1);
  for (const char* const line :
       {"log4zeb: Threshold =\"WARN\"", "log4zeb: Level value for a is  [inherited]",
        "log4zeb:ERROR Could not create level [inherited] Reported error follows.",
        "log4zeb:ERROR Could not create level [null] Reported error follows.",
        "log4zeb: Desired LOGLevel sub-class: [Own]", "log4zeb: b level set to DEBUG",
        "log4zeb:ERROR Root level cannot be inherited. Ignoring directive.",
        "log4zeb: root level set to DEBUG", "log4zeb: Ignoring debug attribute."}) {
    EXPECT_EQ(Workplace::diagnosticsEqual(line), 1) << line;
  }
}

TEST_F(Configuration, PutsTheProcessIdIntoFileNames) {
  const std::string pid = std::to_string(getpid());
  const auto named = [&](const std::string& file, const std::string& add = "yes") {
    Workplace::write("p.xml",
                     "<log4j:configuration><appender name='P' class='LOGRollingFileAppender' "
                     "addProcID='" +
                         add + "'>" + param("File", file) + "</appender>" + root(ref("P")) +
                         "</log4j:configuration>");
    LOGDOMConfigurator::configureWithProcID("p.xml");
    return rootAppender<LOGFileAppender>("P")->getFile().toStdString();
  };
  EXPECT_EQ(named("logs/app.log"), "logs/app_" + pid + ".log");
  EXPECT_EQ(named("app"), "app_" + pid);
  EXPECT_EQ(named("app", "FALSE"), "app_" + pid);
  EXPECT_EQ(named("app", "false"), "app");
  EXPECT_EQ(named(".log"), pid + ".log");
  EXPECT_EQ(named("../logs/server"), "._" + pid + "./logs/server");
  LOG4ZEBConfigurator::initialize("p.xml");
  EXPECT_EQ(rootAppender<LOGFileAppender>("P")->getFile(), I18NString("../logs/server"));
}

TEST_F(Configuration, ReportsBadElementsAndGoesOnWithTheNext) {
  EXPECT_EQ(
      Workplace::configure(
          "<categoryFactory/>"
          "<logger name='f' class='Own'>" +
          ref("F") +
          "</logger>"
          "<appender name='U' class='LOGFileAppender.'/>"
          "<appender name='C' class='LOGConsoleAppender'><layout class='LOGNoLayout'/>"
          "<layout class='LOGPatternLayout'>" +
          param("ConversionPattern", "%X") + "</layout><errorHandler class='Own'/>" + ref("C") +
          "</appender>" + fileAppender("F", "f.log", "<filter class='LOGLevelMatchFilter'/>") +
          root(ref("missing") + ref("U") + ref("C") + ref("F"))),
      1);
  info("1");
  EXPECT_EQ(Workplace::lines("f.log"), (Lines{"1"}));
  EXPECT_NE(rootAppender<LOGConsoleAppender>("C"), nullptr);
  EXPECT_EQ(rootAppender("C")->getLayout(), nullptr);
  for (const char* const line :
       {"log4zeb:ERROR Category Factory tag class attribute not found.",
        "log4zeb: No Category Factory configured.",
        "log4zeb:ERROR Logger Factory missing from config document; please add and restart",
        "log4zeb:ERROR LOGDOMConfigurator::findAppenderByName : No appender named [missing] could "
        "be found.",
        "log4zeb: LOGDOMConfigurator::parseChildrenOfLoggerElement : Appender named [missing] not "
        "found.",
        "log4zeb: Class name: [LOGFileAppender.]",
        "log4zeb:WARN Could not find the appropriate class for Appenders",
        "log4zeb:WARN Creating generic error handler",
        "log4zeb: Requesting attachment of appender named [C] to appender named [C] which does not "
        "implement LOGAppenderAttachable."}) {
    EXPECT_EQ(Workplace::diagnosticsEqual(line), 1) << line;
  }
  EXPECT_EQ(Workplace::errors("Could not create the LOGLayout. Reported error follows."), 2);
}

TEST_F(Configuration, ChangesNothingWhenTheDocumentCannotBeUsed) {
  Workplace::configure(fileAppender("F", "f.log") + root(ref("F")));
  Workplace::write("truncated.xml", "<log4j:configuration>\n<root><level value='OFF'/>\n");
  Workplace::write("wrong.xml", "<log4j:Configuration/>");
  for (const char* const bad : {"truncated.xml", "wrong.xml", "absent.xml", "."}) {
    EXPECT_EQ(LOG4ZEBConfigurator::initialize(bad), 0) << bad;
  }
  EXPECT_EQ(Workplace::errors("Could not parse the document"), 3);
  EXPECT_EQ(Workplace::noted("log4zeb:ERROR truncated.xml:3:"), 1);
  EXPECT_EQ(Workplace::noted("log4zeb:ERROR absent.xml: "), 1);
  EXPECT_EQ(Workplace::errors("DOM element is - not a <log4j:configuration> element."), 1);
  info("still there");
  EXPECT_EQ(Workplace::lines("f.log"), (Lines{"still there"}));
}

TEST_F(Configuration, AcceptsDeprecatedNamesWithWarningsAndParsedDocuments) {
  Workplace::write("old.xml", "<configuration configDebug='true'>" + fileAppender("F", "f.log") +
                                  root(ref("F")) + "</configuration>");
  ZEBIDOM_Document document = ZEBIDOM_DOMImplementation::getInstance().createDocument();
  ASSERT_NE(ZEBIDOM_Parser(0).parse("old.xml", document), 0);
  EXPECT_EQ(LOGDOMConfigurator::configure(document.getDocumentElement()), 1);
  info("x");
  EXPECT_EQ(Workplace::lines("f.log").size(), 1U);
  const Lines expected = {"log4zeb:WARN The <configuration> element has been deprecated.",
                          "log4zeb:WARN Use the <log4j:configuration> element instead.",
                          "log4zeb:WARN The \"configDebug\" attribute is deprecated.",
                          "log4zeb:WARN Use the \"debug\" attribute instead."};
  for (const std::string& line : expected) {
    EXPECT_EQ(Workplace::diagnosticsEqual(line), 1) << line;
  }
}

TEST_F(Configuration, ShutsDownAndCanBeInitialisedAgain) {
  const std::string document = fileAppender("F", "f.log") + root(ref("F"));
  for (const char* const text : {"1", "2"}) {
    Workplace::configure(document);
    info(text);
    LOG4ZEBConfigurator::shutdown();
    EXPECT_TRUE(LOGManager::getRootLogger()->getAllAppenders().atEnd());
    info("reaches nothing");
  }
  LOG4ZEBConfigurator::shutdown();
  EXPECT_EQ(Workplace::lines("f.log"), (Lines{"1", "2"}));
}
