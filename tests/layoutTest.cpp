// The plain layout, the TTCC layout and the date layout under it.

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <stdexcept>
#include <thread>

#include "core/LOGNDC.h"
#include "layouts/LOGHTMLLayout.h"
#include "layouts/LOGPatternLayout.h"
#include "layouts/LOGTTCCLayout.h"
#include "layouts/LOGTimeZone.h"
#include "layouts/LOGXMLLayout.h"
#include "platform/I18NRuntimeError.h"
#include "platform/ZEBAssertError.h"
#include "support/TestEvent.h"
#include "support/Workplace.h"

namespace {

std::string text(LOGLayout& layout, LOGLoggingEvent& event) {
  return layout.format(&event).toStdString();
}

/// What a TTCC line of the event holds between its date and its message.
std::string middle(LOGLoggingEvent& event) {
  return "[" + event.getThreadName().toStdString() + "] INFO app.db - ";
}

template <typename Failure>
void expectRefusal(const std::function<void()>& operation, const char* description,
                   const char* source) {
  try {
    operation();
    ADD_FAILURE() << "nothing was thrown, expected " << description;
  } catch (const Failure& failure) {
    EXPECT_STREQ(failure.what(), description);
    EXPECT_EQ(failure.getSource(), source);
  }
}

}  // namespace

TEST(PlainLayout, WritesTheMessageAndALineEnd) {
  LOGLayout layout;
  TestEvent event("app", "INFO", "hi");
  TestEvent silent("app", "INFO", static_cast<LOGObject*>(nullptr));
  EXPECT_EQ(text(layout, event), "hi\r\n");
  EXPECT_EQ(text(layout, silent), "\r\n");
  EXPECT_EQ(text(layout, event), "hi\r\n");
  EXPECT_EQ(layout.format(nullptr), "");
}

TEST(PlainLayout, ReportsWhatRenderingThrowsAndPassesItOn) {
  Workplace workplace;
  LOGLayout layout;
  ActingMessage badText("", [] { throw I18NRuntimeError("text", "test", 1); });
  ActingMessage badState("", [] { throw ZEBAssertError("state", "test", 2); });
  ActingMessage foreign("", [] { throw 3; });
  TestEvent first("app", "INFO", &badText);
  TestEvent second("app", "INFO", &badState);
  TestEvent third("app", "INFO", &foreign);
  EXPECT_THROW(layout.format(&first), I18NRuntimeError);
  EXPECT_THROW(layout.format(&second), ZEBAssertError);
  EXPECT_THROW(layout.format(&third), int);
  const std::string begin = "log4zeb:ERROR LOGLayout::format -- some ";
  EXPECT_EQ(Workplace::diagnosticsEqual(begin + "i18nstring exception occurred"), 1);
  EXPECT_EQ(Workplace::diagnosticsEqual(begin + "ZEBThrowable exception occurred"), 1);
  EXPECT_EQ(Workplace::diagnosticsEqual(begin + "generic error occurred"), 1);
  TestEvent good("app", "INFO", "hi");
  EXPECT_EQ(text(layout, good), "hi\r\n");
}

TEST(Layout, RefusesToBeCloned) {
  expectRefusal<ZEBAssertError>(
      [] { LOGPatternLayout().clone(); },
      "ZEB_ASSERT_NAMED(FALSE, \"Unable to clone LOGLayout + derived objects.\");", "LOGLayout");
  expectRefusal<ZEBAssertError>(
      [] { LOGTTCCLayout().clone(); },
      "ZEB_ASSERT_NAMED(FALSE, \"Unable to clone LOGDateLayout object.\");", "LOGDateLayout");
}

TEST(Layout, KeepsTheTextsOfAMessageThatLogsThroughTheSameLayoutApart) {
  LOGLayout plain;
  LOGPatternLayout pattern("<%c %m>");
  LOGTTCCLayout ttcc("NULL");
  LOGXMLLayout xml;
  LOGHTMLLayout html;
  for (LOGLayout* const layout :
       std::initializer_list<LOGLayout*>{&plain, &pattern, &ttcc, &xml, &html}) {
    TestEvent inner("db", "WARN", "the inner text, which is longer");
    std::string innerText;
    ActingMessage message("outer", [&] { innerText = text(*layout, inner); });
    TestEvent outer("app", "INFO", &message);
    const std::string outerText = text(*layout, outer);
    EXPECT_EQ(innerText, text(*layout, inner));
    EXPECT_EQ(outerText, text(*layout, outer));
    EXPECT_EQ(outerText.find("inner"), std::string::npos);
  }
}

TEST(TTCCLayout, WritesTheRelativeTimeByDefault) {
  TestEvent early("app.db", "INFO", "connected");
  LOGTTCCLayout layout;
  TestEvent event("app.db", "INFO", "connected");
  EXPECT_EQ(layout.getDateFormat(), "RELATIVE");
  const std::string line = text(layout, event);
  EXPECT_EQ(line.substr(line.find(' ') + 1), middle(event) + "connected\r\n");
}

TEST(TTCCLayout, WritesWhatItsFlagsSay) {
  LOGTTCCLayout layout("NULL");
  TestEvent event("app.db", "INFO", "connected");
  EXPECT_EQ(text(layout, event), middle(event) + "connected\r\n");
  layout.setLoggerPrefixing(0);
  EXPECT_EQ(layout.getLoggerPrefixing(), 0);
  EXPECT_EQ(text(layout, event), middle(event) + "connected\r\n");
  layout.setThreadPrinting(0);
  EXPECT_EQ(text(layout, event), "INFO app.db - connected\r\n");
  layout.setContextPrinting(1);
  EXPECT_EQ(text(layout, event), "INFO app.db  - connected\r\n");
  LOGNDC::push("request 7");
  TestEvent inContext("app.db", "INFO", "connected");
  EXPECT_EQ(text(layout, inContext), "INFO app.db - connected\r\n");
  LOGNDC::remove();
}

TEST(TTCCLayout, RefusesAnEventOrALevelThatIsMissing) {
  LOGTTCCLayout layout;
  expectRefusal<ZEBAssertError>([&] { layout.format(nullptr); }, "ZEB_ASSERT(event);",
                                "LOGTTCCLayout");
  TestEvent event("app", "INFO", "text");
  event.setLevel(nullptr);
  expectRefusal<ZEBAssertError>([&] { layout.format(&event); }, "ZEB_ASSERT(logLevel);",
                                "LOGTTCCLayout");
}

TEST(TTCCLayout, ReturnsALineAsFarAsItWasBuilt) {
  Workplace workplace;
  LOGTTCCLayout layout("NULL");
  ActingMessage failing("", [] { throw std::runtime_error("failing"); });
  TestEvent event("app.db", "INFO", &failing);
  EXPECT_EQ(text(layout, event), middle(event));
  EXPECT_EQ(Workplace::debugs("LOGTTCCLayout:format --- an unknown error has occurred."), 1);
  TestEvent silent("app.db", "INFO", static_cast<LOGObject*>(nullptr));
  EXPECT_EQ(text(layout, silent), middle(silent) + "\r\n");
  EXPECT_EQ(Workplace::noted("LOGTTCCLayout:format --- getRenderedMessage returned NULL"), 1);
}

TEST(DateLayout, WritesTheTimeOfTheEventInTheNamedFormat) {
  LOGDateLayout layout;
  TestEvent event("app", "INFO", "text");
  I18NString date = "untouched";
  layout.dateFormat(date, &event);
  EXPECT_EQ(date, "untouched");

  layout.setDateFormat("iSo8601");
  layout.dateFormat(date, &event);
  const std::time_t time = event.getTimeStamp();
  char seconds[20];
  std::strftime(seconds, sizeof seconds, "%Y-%m-%d %H:%M:%S", std::localtime(&time));
  EXPECT_EQ(date.toStdString().substr(0, 19), seconds);
  EXPECT_EQ(shapeOf(date.toStdString()), "9-9-9 9:9:9,9 ");
  EXPECT_THROW(layout.dateFormat(date, nullptr), ZEBAssertError);
}

TEST(DateLayout, KnowsItsFormatsByName) {
  const std::pair<const char*, const char*> FORMATS[] = {
      {"absolute", "9:9:9,9 "},   {"Date", "9 A 9 9:9:9,9 "},
      {"HH:mm:ss,SSS", "9:9:9 "}, {"null", " "},
      {"no such format", " "},    {"NULL", "A"}};
  TestEvent event("app", "INFO", "text");
  for (const auto& [name, expected] : FORMATS) {
    LOGDateLayout layout;
    layout.setOption("DateFormat", name);
    I18NString date = "untouched";
    layout.dateFormat(date, &event);
    EXPECT_EQ(shapeOf(date.toStdString()), expected) << name;
  }
  LOGDateLayout layout;
  layout.setDateFormat("relative");
  I18NString date;
  layout.dateFormat(date, &event);
  EXPECT_EQ(shapeOf(date.toStdString()).find_first_not_of("-9, "), std::string::npos) << date;
  EXPECT_NE(date, " ");
}

TEST(DateLayout, WritesEachSecondAndEachFormatAnew) {
  LOGDateLayout layout;
  LOGPatternLayout pattern("%d");
  TestEvent first("app", "INFO", "text");
  I18NString date;
  layout.setDateFormat("ABSOLUTE");
  layout.dateFormat(date, &first);
  layout.setDateFormat("ISO8601");
  layout.dateFormat(date, &first);
  EXPECT_EQ(shapeOf(date.toStdString()), "9-9-9 9:9:9,9 ");
  const std::string shown = text(pattern, first);
  while (std::time(nullptr) == first.getTimeStamp()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  TestEvent later("app", "INFO", "text");
  I18NString laterDate;
  layout.dateFormat(laterDate, &later);
  EXPECT_NE(laterDate, date);
  EXPECT_NE(text(pattern, later), shown);
}

TEST(DateLayout, ActivatesTheOptionsThatWereSet) {
  LOGDateLayout layout;
  TestEvent event("app", "INFO", "text");
  const auto date = [&] {
    I18NString result = "none";
    layout.dateFormat(result, &event);
    return result.toStdString();
  };
  layout.activateOptions();
  EXPECT_EQ(date(), "none") << "no name, no format";
  layout.setOption("dateformat", "ABSOLUTE");
  EXPECT_EQ(layout.getDateFormat(), "") << "option names are exact";

  layout.setDateFormat("HH:mm:ss,SSS", new LOGTimeZone("Europe/Paris"));
  layout.setOption("TimeZone", "Asia/Tokyo");
  const std::string before = date();
  layout.activateOptions();
  layout.activateOptions();
  EXPECT_EQ(layout.getDateFormat(), "HH:mm:ss,SSS");
  EXPECT_EQ(layout.getTimeZone(), "Asia/Tokyo");
  EXPECT_EQ(date(), before) << "dates stay local to the process";
}
