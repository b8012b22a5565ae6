// The command `log4zeb page` on files that an appender wrote.

#include <gtest/gtest.h>

#include <sstream>

#include "core/LOGNDC.h"
#include "layouts/LOGHTMLLayout.h"
#include "support/Command.h"
#include "support/Documents.h"
#include "support/TestEvent.h"
#include "support/Workplace.h"

namespace {

using Words = std::vector<std::string>;

constexpr const char* ROWS = "rows.html";

Outcome page(Words arguments, const std::string& input = ChildProcess::NO_INPUT) {
  arguments.insert(arguments.begin(), "page");
  return runProgram(LOG4ZEB_COMMAND, arguments, input);
}

/// Logs through a document to ROWS: events of all levels, one in a context, one with a throwable.
void writeRows() {
  ASSERT_EQ(
      Workplace::configure(documents::file("F", ROWS, documents::layout("org.x.LOGHTMLLayout")) +
                           documents::root({"F"}, "DEBUG")),
      1);
  LOGLogger* const logger = LOGManager::getLogger("shop");
  for (const char* const level : {"DEBUG", "INFO", "WARN", "ERROR", "FATAL"}) {
    logger->log(LOGLevel::toLevel(level), I18NString("a<b>c & \xC3\xA9\xF0\x9F\x98\x80", "UTF-8"));
  }
  LOGNDC::push("request <7>");
  logger->info(I18NString("in context"));
  LOGNDC::remove();
  TestEvent failure("shop", "ERROR", "failed");
  failure.setThrowableStrRep("Failure <x>\n at one");
  logger->callAppenders(&failure);
}

}  // namespace

TEST(Page, StandsBetweenTheHeaderAndTheFooterOfTheLayout) {
  const Workplace workplace;
  writeRows();
  const Outcome outcome = page({"--title", "a < b & \xC3\xA9", ROWS});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
  EXPECT_EQ(outcome.errors, "");
  LOGHTMLLayout layout;
  layout.setTitle("a &lt; b &amp; &#233;");
  // Nothing but characters beyond ASCII is changed in the rows.
  std::string rows = Workplace::read(ROWS);
  const std::string eAcuteAndFace = "\xC3\xA9\xF0\x9F\x98\x80";
  for (std::size_t at; (at = rows.find(eAcuteAndFace)) != std::string::npos;) {
    rows.replace(at, eAcuteAndFace.size(), "&#233;&#128512;");
  }
  const std::string expected =
      layout.getHeader().toStdString() + rows + layout.getFooter().toStdString();
  const auto withoutDate = [](std::string text) {
    const std::size_t begin = text.find("start time ");
    return text.erase(begin, text.find("<br>", begin) - begin);
  };
  EXPECT_EQ(withoutDate(outcome.output), withoutDate(expected));

  EXPECT_EQ(page({"--output", "page.html", "-"}, ROWS).exitCode, 0);
  const std::string fromInput = Workplace::read("page.html");
  EXPECT_NE(fromInput.find("<title>Log4J Log Messages</title>"), std::string::npos);
  EXPECT_EQ(fromInput.substr(fromInput.find("<table")),
            outcome.output.substr(outcome.output.find("<table")));
}

TEST(Page, IsNoSuccessWhenARowIsNotWhole) {
  const Workplace workplace;
  writeRows();
  const std::string rows = Workplace::read(ROWS);
  const std::size_t secondRow = rows.find("<tr>", rows.find("<tr>") + 1);
  const std::size_t secondEnd = rows.find("</tr>", secondRow);
  // Cut at each byte of a row; and behind it the rows of a later start.
  for (std::size_t size = secondRow + 1; size < secondEnd + 5; ++size) {
    for (const std::string& later : {std::string(), "\r\n" + rows}) {
      Workplace::write("cut.html", rows.substr(0, size) + later);
      const Outcome outcome = page({"cut.html"});
      ASSERT_EQ(outcome.exitCode, 4) << size;
      ASSERT_EQ(outcome.errors,
                "log4zeb: the input file 'cut.html' has a row that is not whole: the page is not "
                "complete\n");
    }
  }
  Workplace::write("cut.html", rows.substr(0, secondEnd + 5));
  EXPECT_EQ(page({"cut.html"}).exitCode, 0);
  Workplace::write("cut.html", rows.substr(0, rows.find("<td", rows.find("<td") + 1)) + rows);
  const Outcome firstIsCut = page({"cut.html"});
  EXPECT_EQ(firstIsCut.exitCode, 4);
  EXPECT_NE(firstIsCut.errors.find("not whole"), std::string::npos) << firstIsCut.errors;
}

#ifndef _WIN32
TEST(Page, ReadsNoMoreThanARowMayHave) {
  constexpr std::uintmax_t SIZE = 200'000'000;
  for (const std::string beginning : {"", "<tr>", "\r\n<tr>\r\n<td>"}) {
    const Workplace workplace;
    Workplace::write("endless", beginning);
    std::filesystem::resize_file("endless", SIZE);
    const Outcome outcome = runProgram(
        "/bin/sh", {"-c", "(\"$0\" page - >page; echo $?; wc -c) <endless", LOG4ZEB_COMMAND});
    std::istringstream output(outcome.output);
    int exitCode = 0;
    std::uintmax_t left = 0;
    output >> exitCode >> left;
    EXPECT_EQ(exitCode, 4);
    EXPECT_GT(left, SIZE / 2);
    EXPECT_NE(outcome.errors.find(beginning.empty() ? "does not begin with a row"
                                                    : "has a row of more than 16 MiB"),
              std::string::npos)
        << outcome.errors;
  }
}
#endif

TEST(Page, NamesWhatIsWrong) {
  const Workplace workplace;
  writeRows();
  LOGHTMLLayout layout;
  layout.setLocationInfo(1);
  TestEvent event("shop", "INFO", "hi\n<td>\n<td>");
  Workplace::write("located.html", layout.format(&event).toStdString());
  Workplace::write("plain.log", "00:00 INFO <tr>\n");
  Workplace::write("empty.html", "");
  const std::string before = Workplace::read(ROWS);
  const struct {
    Words arguments;
    int exitCode;
    std::string complaint;
  } CASES[] = {
      {{"missing.html"}, 4, "cannot read the input file 'missing.html' ("},
      {{"."}, 4, "cannot read the input file '.' ("},
      {{"plain.log"}, 4, "'plain.log' does not begin with a row"},
      {{"located.html"}, 4, "has the column File:Line: add --location-info"},
      {{"--location-info", ROWS}, 4, "has no column File:Line: leave out --location-info"},
      {{"--output", ROWS, std::string("./") + ROWS}, 5, "to the file with the rows"},
      {{"--output", Workplace::FULL_DISK, ROWS},
       5,
       std::string("cannot write the page '") + Workplace::FULL_DISK + "' ("},
      {{"--output", "no/page.html", ROWS}, 5, "cannot write the page 'no/page.html' ("},
      {{}, 2, "FILE is required"},
      {{"--location-info", "located.html"}, 0, ""},
      {{"empty.html"}, 0, ""},
  };
  for (const auto& [arguments, exitCode, complaint] : CASES) {
    const Outcome outcome = page(arguments);
    EXPECT_EQ(outcome.exitCode, exitCode) << complaint;
    EXPECT_NE(outcome.errors.find(complaint), std::string::npos) << outcome.errors;
    EXPECT_EQ(outcome.output.empty(), exitCode != 0) << complaint;
  }
  EXPECT_EQ(Workplace::read(ROWS), before);
}
