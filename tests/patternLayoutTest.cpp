// Conversion patterns: the parser, the converters and the layout that uses them.

#include <gtest/gtest.h>

#include <ctime>
#include <functional>
#include <vector>

#include "core/LOGNDC.h"
#include "layouts/LOGDatePatternConverter.h"
#include "layouts/LOGFormattingInfo.h"
#include "layouts/LOGISODateFormat.h"
#include "layouts/LOGLoggerPatternConverter.h"
#include "layouts/LOGMDCPatternConverter.h"
#include "layouts/LOGPatternLayout.h"
#include "platform/ZEBAssertError.h"
#include "support/TestEvent.h"
#include "support/Threads.h"
#include "support/Workplace.h"

namespace {

std::string formatted(const I18NString& pattern, LOGLoggingEvent& event) {
  LOGPatternLayout layout(pattern);
  return layout.format(&event).toStdString();
}

std::string refusal(const std::function<void()>& operation) {
  try {
    operation();
  } catch (const ZEBAssertError& failure) {
    return failure.what();
  }
  return "nothing was thrown";
}

struct Case {
  const char* pattern;
  std::string expected;
};

}  // namespace

TEST(PatternLayout, WritesEachPartOfTheEvent) {
  LOGNDC::push("request 7");
  TestEvent event("app.db.pool", "ERROR", "it \xC3\xA9t\xC3\xA9 \xF0\x9F\x98\x80");
  const std::string thread = event.getThreadName().toStdString();
  const std::string relative =
      std::to_string((event.getTimeStamp() - LOGLoggingEvent::getStartTime()) * 1000);
  const std::string message = "it \xC3\xA9t\xC3\xA9 \xF0\x9F\x98\x80";
  const Case CASES[] = {
      {"%m%n", message + "\r\n"},
      {"%p|%c|%x", "ERROR|app.db.pool|request 7"},
      {"%t", thread},
      {"%r", relative},
      {"%C %F %L %M", "? ? ? ?"},
      {"<%l>", "<>"},
      {"<%X{key}>", "<>"},
      {"%r [%t] %p %c %x - %m%n",
       relative + " [" + thread + "] ERROR app.db.pool request 7 - " + message + "\r\n"}};
  for (const Case& c : CASES) {
    EXPECT_EQ(formatted(c.pattern, event), c.expected) << c.pattern;
  }
  EXPECT_EQ(LOGPatternLayout().getConversionPattern(), "%m%n");
  LOGNDC::remove();
}

TEST(PatternLayout, WritesAsTextWhatIsNoSpecifier) {
  TestEvent event("app", "INFO", "message");
  const Case CASES[] = {{"", ""},
                        {"plain", "plain"},
                        {"%%", "%"},
                        {"%%m", "%m"},
                        {"a%nb%n", "a\r\nb\r\n"},
                        {"100%", "100%"},
                        {"%p 100%", "INFO 100%"},
                        {"%-5", "%-5"},
                        {"%5.", "%5."},
                        {"%5.x%p", "%5.xINFO"},
                        {"%.%p", "%.%p"},
                        {"%q", "%q"},
                        {"<%-5q>%p", "<%-5q>INFO"},
                        {"%5-p", "%5-p"},
                        {"%.5.p", "%.5.p"},
                        {"%c{}", "app{}"},
                        {"%c{1", "app{1"},
                        {"%P%", "%P%"},
                        {"\xC3\xA9\xF0\x9F\x98\x80%p\xF0\x9F\x98\x80",
                         "\xC3\xA9\xF0\x9F\x98\x80INFO\xF0\x9F\x98\x80"}};
  for (const Case& c : CASES) {
    EXPECT_EQ(formatted(c.pattern, event), c.expected) << c.pattern;
  }
}

TEST(PatternLayout, ReportsBadSpecifiersWithTheirPlace) {
  Workplace workplace;
  TestEvent event("app.db", "INFO", "message");
  EXPECT_EQ(formatted("%q", event), "%q");
  EXPECT_EQ(formatted("\xF0\x9F\x98\x80 %-5q", event), "\xF0\x9F\x98\x80 %-5q");
  EXPECT_EQ(formatted("%c{0} %c{abc} %c{-1}", event), "app.db app.db app.db");
  EXPECT_EQ(formatted("%5.x", event), "%5.x");
  const std::string error = "log4zeb:ERROR ";
  const std::vector<std::string> expected = {
      error + "Unexpected char [q] at position 2 in conversion pattern.",
      error + "Unexpected char [q] at position 7 in conversion pattern.",
      error + "Precision option (0) isn't a positive integer.",
      error + "Precision option (abc) isn't a positive integer.",
      error + "Precision option (-1) isn't a positive integer."};
  std::vector<std::string> errors;
  for (const std::string& line : Workplace::diagnostics()) {
    if (line.compare(0, error.size(), error) == 0) {
      errors.push_back(line);
    }
  }
  EXPECT_EQ(errors, expected);
}

TEST(PatternLayout, PadsToTheMinimumAndKeepsTheEndThatFitsTheMaximum) {
  LOGNDC::remove();
  TestEvent event("app", "ERROR", "message");
  const Case CASES[] = {{"<%8p>", "<   ERROR>"},
                        {"<%-8p>", "<ERROR   >"},
                        {"<%5p>", "<ERROR>"},
                        {"<%.3p>", "<ROR>"},
                        {"<%.0p>", "<>"},
                        {"<%8.3p>", "<ROR>"},
                        {"<%8.6p>", "<   ERROR>"},
                        {"<%-42p>", "<ERROR" + std::string(37, ' ') + ">"},
                        {"<%105p>", "<" + std::string(100, ' ') + "ERROR>"},
                        {"<%5X{key}>", "<     >"},
                        {"<%3x>", "<   >"},
                        {"<%-5L>", "<?    >"},
                        {"<%.99999999999p>", "<ERROR>"},
                        {"<%.2147483648p>", "<ERROR>"}};
  for (const Case& c : CASES) {
    EXPECT_EQ(formatted(c.pattern, event), c.expected) << c.pattern;
  }
  TestEvent wide("app", "INFO", "a\xF0\x9F\x98\x80");
  EXPECT_EQ(formatted("<%4m>", wide), "< a\xF0\x9F\x98\x80>") << "widths count code units";
}

TEST(PatternLayout, SharesTheWidthsOfTheConverterThatWasBuiltLast) {
  TestEvent event("app", "INFO", "message");
  EXPECT_EQ(formatted("%-5p %c|", event), "INFO app|");
  EXPECT_EQ(formatted("%c %-5p|", event), "app   INFO |");
  LOGPatternLayout earlier("%p|%c|");
  EXPECT_EQ(earlier.format(&event), "INFO|app|");
  LOGPatternLayout later("%6m");
  EXPECT_EQ(earlier.format(&event), "  INFO|   app|");
  LOGPatternLayout literal("%-9");
  EXPECT_EQ(earlier.format(&event), "  INFO|   app|") << "literals have no say";
}

TEST(PatternLayout, KeepsTheLastComponentsOfAName) {
  const struct {
    const char* name;
    const char* pattern;
    const char* expected;
  } CASES[] = {{"a.b.c", "%c{1}", "c"},     {"a.b.c", "%c{2}", "b.c"},  {"a.b.c", "%c{3}", "a.b.c"},
               {"a.b.c", "%c{9}", "a.b.c"}, {"x", "%c{2}", "x"},        {"a.b.", "%c{1}", "b."},
               {".a", "%c{1}", "a"},        {".a", "%c{2}", ".a"},      {"a..b", "%c{2}", ".b"},
               {"a.b", "%C{1}", "?"},       {"a.b", "%c{1}{2}", "b{2}"}};
  for (const auto& c : CASES) {
    TestEvent event(c.name, "INFO", "message");
    EXPECT_EQ(formatted(c.pattern, event), c.expected) << c.name << " " << c.pattern;
  }
}

TEST(PatternLayout, WritesDatesInTheFormatOfTheOption) {
  const Case CASES[] = {{"%d", "9-9-9 9:9:9,9"},       {"%d{ISO8601}", "9-9-9 9:9:9,9"},
                        {"%d{ABSOLUTE}", "9:9:9,9"},   {"%d{DATE}", "9 A 9 9:9:9,9"},
                        {"%d{HH:mm:ss,SSS}", "9:9:9"}, {"%d{absolute}", ""}};
  TestEvent event("app", "INFO", "message");
  for (const Case& c : CASES) {
    EXPECT_EQ(shapeOf(formatted(c.pattern, event)), c.expected) << c.pattern;
  }
  const std::time_t time = event.getTimeStamp();
  char expected[20];
  std::strftime(expected, sizeof expected, "%Y-%m-%d %H:%M:%S", std::localtime(&time));
  EXPECT_EQ(formatted("%.23d", event).substr(0, 19), expected);
}

TEST(PatternLayout, EndsEveryFailureOfFormat) {
  Workplace workplace;
  LOGPatternLayout layout("%c: %m (%p)");
  EXPECT_EQ(layout.format(nullptr), "");
  EXPECT_EQ(Workplace::warnings("LOGPatternLayout::format --- Event is NULL."), 1);
  ActingMessage failing("", [] { throw 1; });
  TestEvent event("app", "INFO", &failing);
  EXPECT_EQ(layout.format(&event), "app: ");
  TestEvent noLevel("app", "INFO", "message");
  noLevel.setLevel(nullptr);
  EXPECT_EQ(layout.format(&noLevel), "app: message (");
  EXPECT_EQ(Workplace::errors("LOGPatternLayout::format --- An unknown error occurred."), 2);
  TestEvent good("app", "INFO", "message");
  EXPECT_EQ(layout.format(&good), "app: message (INFO)");
}

TEST(PatternLayout, KeepsItsPatternWhenANewOneCannotBeParsed) {
  TestEvent event("app", "INFO", "message");
  LOGPatternLayout layout("%p %m");
  EXPECT_EQ(refusal([&] { layout.setConversionPattern("text %c %d %X"); }), "ZEB_ASSERT(xOpt);");
  EXPECT_EQ(refusal([] { LOGPatternLayout failing("%m %X{}"); }), "ZEB_ASSERT(xOpt);");
  EXPECT_EQ(layout.getConversionPattern(), "%p %m");
  EXPECT_EQ(layout.format(&event), "INFO message");
  layout.setConversionPattern("%c");
  EXPECT_EQ(layout.format(&event), "app");
  layout.setConversionPattern(layout.getConversionPattern());
  EXPECT_EQ(layout.format(&event), "app");
}

TEST(PatternConverter, RefusesMissingFormattingAndFreesWhatItWasGiven) {
  EXPECT_EQ(refusal([] { LOGDatePatternConverter(nullptr, new LOGISODateFormat()); }),
            "ZEB_ASSERT(fi);");
  EXPECT_EQ(refusal([] { LOGLoggerPatternConverter(nullptr, 1); }), "ZEB_ASSERT(formattingInfo);");
  EXPECT_EQ(refusal([] { LOGMDCPatternConverter(nullptr, "key"); }), "ZEB_ASSERT(formattingInfo);");
}

TEST(PatternConverter, AsksADateFormatOfAnotherClassForEveryEvent) {
  class Counting : public LOGDateFormat {
   public:
    const I18NString& format(LOGDate*) override {
      m_buffer.append(1, 'x');
      return m_buffer;
    }
  };
  const Workplace workplace;
  LOGFormattingInfo::reset();
  LOGFormattingInfo widths;
  LOGDatePatternConverter converter(&widths, new Counting);
  TestEvent event("a", "INFO", "message");
  for (const char* const text : {"x", "xx", "xxx"}) {
    I18NString piece;
    converter.format(piece, &event);
    EXPECT_EQ(piece, text);
  }
}

TEST(PatternLayout, FormatsWhileOtherThreadsParse) {
  const auto parse = [] {
    LOGPatternLayout layout("%c %-20.25p");
    layout.setConversionPattern("%d{DATE} %7m");
  };
  const Repeating parsers({parse, parse});
  LOGPatternLayout layout("%m|");
  TestEvent event("app", "INFO", "message");
  for (int i = 0; i < 5000; ++i) {
    const std::string text = layout.format(&event).toStdString();
    ASSERT_TRUE(text == "message|" || text == "message" + std::string(13, ' ') + "|" ||
                text == std::string(13, ' ') + "message|")
        << text;
  }
}
