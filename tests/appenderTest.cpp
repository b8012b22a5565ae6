// What all appenders share: the skeleton, lists of appenders, error handlers, quiet writers and the
// console.

#include <gtest/gtest.h>

#include <memory>

#include "appenders/LOGAppenderAttachableImpl.h"
#include "appenders/LOGConsoleAppender.h"
#include "appenders/LOGCountingQuietWriter.h"
#include "appenders/LOGOnlyOnceErrorHandler.h"
#include "core/LOGHashtable.h"
#include "core/LOGLevel.h"
#include "core/LOGLogger.h"
#include "core/LOGManager.h"
#include "filters/LOGFilter.h"
#include "layouts/LOGLayout.h"
#include "platform/I18NRuntimeError.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBFmFile.h"
#include "platform/ZEBSystemError.h"
#include "support/CapturingAppender.h"
#include "support/RedirectedStream.h"
#include "support/TestEvent.h"
#include "support/Workplace.h"

namespace {

using Messages = std::vector<std::string>;

LOGLevel* level(const char* name) { return LOGLevel::toLevel(I18NString(name)); }

class FixedFilter : public LOGFilter {
 public:
  explicit FixedFilter(int decision) : m_decision(decision) {}
  int decide(LOGLoggingEvent*) override {
    ++asked;
    return m_decision;
  }
  int asked = 0;

 private:
  int m_decision;
};

class AppenderTest : public testing::Test {
 protected:
  AppenderTest() {
    LOGManager::getLogger("appender");
    Workplace::clearDiagnostics();
  }
  static void append(LOGAppender& appender, const char* text, const char* levelName = "INFO") {
    TestEvent event("appender", levelName, text);
    appender.doAppend(&event);
  }

  Workplace workplace;
  CapturingAppender appender{"A"};
};

}  // namespace

TEST_F(AppenderTest, PassesEventsUpToItsThreshold) {
  appender.setThreshold(level("WARN"));
  append(appender, "1", "DEBUG");
  append(appender, "2", "WARN");
  append(appender, "above the upper bound", "ERROR");
  EXPECT_EQ(appender.messages, (Messages{"1", "2"}));
  EXPECT_EQ(appender.isAsSevereAsThreshold(nullptr), 0);
}

TEST_F(AppenderTest, AsksItsFiltersUntilOneDecides) {
  FixedFilter neutral(LOGFilter::m_NEUTRAL);
  FixedFilter accept(LOGFilter::m_ACCEPT);
  FixedFilter deny(LOGFilter::m_DENY);
  appender.addFilter(&neutral);
  append(appender, "only neutral");
  appender.addFilter(&accept);
  appender.addFilter(&deny);
  append(appender, "accepted");
  EXPECT_EQ(deny.asked, 0);
  appender.clearFilters();
  neutral.next = nullptr;
  appender.addFilter(&neutral);
  appender.addFilter(&deny);
  append(appender, "denied");
  EXPECT_EQ(appender.messages, (Messages{"only neutral", "accepted"}));
  appender.addFilter(&deny);
  EXPECT_EQ(deny.next, &deny) << "added twice, a filter is linked to itself";
}

TEST_F(AppenderTest, RefusesEventsOnceClosedAndReportsEach) {
  appender.close();
  append(appender, "x");
  append(appender, "y");
  appender.doAppend(nullptr);
  appender.finalize();
  EXPECT_EQ(appender.closings, 1);
  EXPECT_TRUE(appender.messages.empty());
  EXPECT_EQ(Workplace::errors("Attempted to append to closed appender named [A]."), 3);
}

TEST_F(AppenderTest, ContainsItsOwnFailuresAndPassesOthersOn) {
  struct TwoBases : ZEBThrowable, std::runtime_error {
    TwoBases() : ZEBThrowable("t", "test", 1), std::runtime_error("t") {}
    const char* what() const noexcept override { return "t"; }
    [[noreturn]] void raise() const override { throw *this; }
  };
  EXPECT_THROW(appender.doAppend(nullptr), ZEBAssertError);
  appender.onAppend = [](LOGLoggingEvent*) { throw I18NRuntimeError("r", "test"); };
  append(appender, "1");
  appender.onAppend = [](LOGLoggingEvent*) { throw ZEBSystemError("f", 5, "test", 1); };
  append(appender, "2");
  appender.onAppend = [](LOGLoggingEvent*) { throw TwoBases(); };
  append(appender, "caught as no std::exception");
  appender.onAppend = [](LOGLoggingEvent*) { throw std::runtime_error("s"); };
  EXPECT_THROW(append(appender, "3"), std::runtime_error);
  EXPECT_EQ(Workplace::diagnostics(),
            (Messages{"log4zeb:ERROR LOGAppenderSkeleton::doAppend -- RunTime Error in I18NString",
                      "log4zeb:ERROR LOGAppenderSkeleton::doAppend -- ZEB Exception occured",
                      "log4zeb:ERROR LOGAppenderSkeleton::doAppend -- ZEB Exception occured",
                      "log4zeb:ERROR LOGAppenderSkeleton::doAppend -- An Exception occured"}));
  EXPECT_THROW(appender.clone(), ZEBAssertError);
}

TEST_F(AppenderTest, KeepsLayoutAndHandlerWhenGivenNull) {
  LOGLayout layout;
  appender.setLayout(&layout);
  appender.setLayout(nullptr);
  EXPECT_EQ(appender.getLayout(), &layout);
  auto* const handler = new LOGOnlyOnceErrorHandler;
  appender.setErrorHandler(handler);
  appender.setErrorHandler(nullptr);
  appender.setErrorHandler(handler);
  EXPECT_EQ(appender.getErrorHandler(), handler);
}

TEST_F(AppenderTest, ListHoldsOneOfEqualAppendersAndFindsThemByName) {
  LOGAppenderAttachableImpl list;
  CapturingAppender twin("A");
  CapturingAppender other("B");
  EXPECT_EQ(list.isAttached(nullptr), 0);
  list.removeAppender(static_cast<LOGAppenderSkeleton*>(nullptr));
  list.addAppender(&appender);
  list.addAppender(&twin);
  list.addAppender(&other);
  EXPECT_EQ(list.getAppender("A"), &appender);
  EXPECT_EQ(list.isAttached(&twin), 1) << "equal by value";
  EXPECT_EQ(list.getAppender("C"), nullptr);
  EXPECT_THROW(list.isAttached(nullptr), ZEBAssertError);
  EXPECT_THROW(list.addAppender(nullptr), ZEBAssertError);
  LOGLayout layout;
  twin.setLayout(&layout);
  list.addAppender(&twin);
  list.removeAppender("A");
  EXPECT_EQ(list.getAppender("A"), &twin) << "only the first of a name goes";
  list.removeAppender(&twin);
  EXPECT_EQ(list.getAppender("A"), nullptr);
  EXPECT_EQ(appender.closings + twin.closings, 0);
}

TEST_F(AppenderTest, ListMarksStaleWhatTheBagHoldsUnderThatName) {
  LOGAppenderAttachableImpl list;
  CapturingAppender other("B");
  list.addAppender(&appender);
  list.addAppender(&other);
  LOGHashtable bag;
  bag.put("A", &appender);
  bag.put("B", &appender);
  list.removeAllAppenders(&bag);
  EXPECT_EQ(appender.isStale(), 1);
  EXPECT_EQ(other.isStale(), 0);
  EXPECT_EQ(appender.closings + other.closings, 2);
  EXPECT_TRUE(list.getAllAppenders().atEnd());
  bag.forget();
}

TEST_F(AppenderTest, ListActivatesBeforeEveryEventAndCountsAllMembers) {
  LOGAppenderAttachableImpl list;
  CapturingAppender failing("F");
  CapturingAppender closed("C");
  failing.onActivate = [] { throw std::runtime_error("no"); };
  closed.close();
  EXPECT_EQ(list.appendLoopOnAppenders(nullptr), 0);
  for (CapturingAppender* const member : {&failing, &closed, &appender}) {
    list.addAppender(member);
  }
  TestEvent event("a", "INFO", "m");
  EXPECT_EQ(list.appendLoopOnAppenders(&event), 3);
  EXPECT_EQ(failing.messages.size(), 1U) << "it gets the event although it could not be activated";
  EXPECT_EQ(appender.messages.size(), 1U);
  EXPECT_EQ(appender.activations, 1);
}

TEST_F(AppenderTest, ListSurvivesAppendersThatChangeItDuringAnEvent) {
  LOGLogger* const logger = LOGManager::getLogger("changing");
  logger->setAdditivity(0);
  CapturingAppender first("1");
  CapturingAppender second("2");
  CapturingAppender third("3");
  CapturingAppender added("4");
  for (CapturingAppender* const member : {&first, &second, &third}) {
    logger->addAppender(member);
  }
  bool isNested = false;
  first.onAppend = [&](LOGLoggingEvent*) {
    if (isNested) {
      return;
    }
    isNested = true;
    logger->info("nested");
    logger->removeAppender(&first);
    logger->removeAppender(&second);
    logger->addAppender(&added);
  };
  logger->info("outer");
  EXPECT_EQ(first.messages, (Messages{"outer", "nested"}));
  EXPECT_EQ(second.messages, (Messages{"nested"}));
  EXPECT_EQ(third.messages, (Messages{"nested", "outer"}));
  EXPECT_EQ(added.messages, (Messages{"outer"}));
  logger->removeAllAppenders();
}

TEST_F(AppenderTest, ErrorHandlerReportsOnlyTheFirstError) {
  ZEBAssertError failure("f", "s", 1);
  LOGOnlyOnceErrorHandler handler;
  const std::unique_ptr<LOGObject> armed(handler.clone());
  handler.error("first", failure, 5);
  handler.error("second");
  handler.error("third", failure, 5, nullptr);
  const std::unique_ptr<LOGObject> spent(handler.clone());
  static_cast<LOGErrorHandler&>(*spent).error("of the spent clone");
  static_cast<LOGErrorHandler&>(*armed).error("of the armed clone");
  EXPECT_EQ(Workplace::diagnostics(),
            (Messages{"log4zeb:ERROR first", "log4zeb:ERROR of the armed clone"}));
}

TEST_F(AppenderTest, QuietWriterReportsEachFailureAndCountsOnlyWhatIsWritten) {
  ZEBFmFile file;
  ASSERT_EQ(file.open("f.txt", ZEBFmFile::APPEND), 1);
  LOGCountingQuietWriter writer(nullptr, &file);
  writer.write(&file, "");
  writer.write(&file, "\xC3\xA9\r\n");
  writer.write(&file, I18NString::fromUtf8(std::string_view("z\0", 2)));
  EXPECT_EQ(writer.getCount(), 5U) << "bytes, without a terminating zero";
  file.close();
  writer.write(&file, "lost");
  writer.stWrite(&file, "lost");
  writer.LOGQuietWriter::write(&file, "lost");
  EXPECT_EQ(writer.getCount(), 5U);
  EXPECT_EQ(Workplace::read("f.txt"), "\xC3\xA9\r\nz");
  EXPECT_EQ(
      Workplace::diagnostics(),
      (Messages{"log4zeb:ERROR LOGCountingQuietWriter::write -- ZEBThrowable exception occurred",
                "log4zeb:ERROR LOGQuietWriter::stWrite -- ZEBThrowable exception occurred",
                "log4zeb:ERROR LOGQuietWriter::write -- ZEBThrowable exception occurred"}));
  EXPECT_THROW(writer.close(nullptr), ZEBAssertError);
}

TEST_F(AppenderTest, ConsoleWritesAtOnceAndLeavesTheStreamOpen) {
  LOGLayout layout;
  LOGConsoleAppender console(&layout);
  console.setName("console");
  append(console, "closed until activated");
  EXPECT_EQ(Workplace::noted("closed appender named [console]"), 1);
  {
    RedirectedStream redirected(ZEBFmFile::STANDARD_ERROR, "stderr.txt");
    console.setTarget("ERR");
    EXPECT_EQ(console.getTarget(), I18NString("ERR"));
    append(console, "to standard error");
    EXPECT_EQ(Workplace::read("stderr.txt"), "to standard error\r\n");
    console.close();
    EXPECT_TRUE(redirected.write("still open"));
  }
  EXPECT_EQ(Workplace::read("stderr.txt"), "to standard error\r\nstill open");
  console.activateOptions();
  append(console, "a closed one stays closed");
  EXPECT_EQ(Workplace::noted("closed appender named [console]"), 2);
}

TEST_F(AppenderTest, ConsoleWithAnUnknownTargetWarnsAndHasNoStream) {
  LOGLayout layout;
  LOGConsoleAppender console(&layout, "out");
  console.setTarget("console");
  EXPECT_EQ(console.getTarget(), I18NString("out"));
  append(console, "x");
  EXPECT_EQ(
      Workplace::diagnostics(),
      (Messages{"log4zeb:WARN LOGConsoleAppender::targetWarn -- possible values are out and err",
                "log4zeb:WARN LOGConsoleAppender::targetWarn -- using out (default)",
                "log4zeb:ERROR LOGQuietWriter::stWrite -- ZEBThrowable exception occurred"}));
}

TEST_F(AppenderTest, ConsoleWithoutLayoutWritesNothing) {
  LOGConsoleAppender console;
  console.activateOptions();
  append(console, "x");
  EXPECT_TRUE(Workplace::diagnostics().empty());
}
