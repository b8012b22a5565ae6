// The command `log4zeb page` on files that an appender wrote, and its page in a browser.

#include <gtest/gtest.h>

#include <sstream>

#include "core/LOGNDC.h"
#include "layouts/LOGHTMLLayout.h"
#include "support/ChildProcess.h"
#include "support/TestEvent.h"
#include "support/Workplace.h"

namespace {

using Words = std::vector<std::string>;

constexpr const char* ROWS = "rows.html";

struct Outcome {
  int exitCode;
  std::string output;
  std::string errors;
};

Outcome run(const std::string& program, const Words& arguments,
            const std::string& input = ChildProcess::NO_INPUT) {
  ChildProcess process(program, arguments, input);
  const int exitCode = process.wait().exitCode;
  return {exitCode, process.receive(), process.errors()};
}

Outcome page(Words arguments, const std::string& input = ChildProcess::NO_INPUT) {
  arguments.insert(arguments.begin(), "page");
  return run(LOG4ZEB_COMMAND, arguments, input);
}

/// Logs through a document to ROWS; with `times`, events of all levels so many times, one event in
/// a context and one with a throwable.
void writeRows(int times = 1) {
  ASSERT_EQ(Workplace::configure("<appender name='F' class='LOGFileAppender'>"
                                 "<param name='File' value='rows.html'/>"
                                 "<layout class='org.x.LOGHTMLLayout'/></appender><root>"
                                 "<level value='DEBUG'/><appender-ref ref='F'/></root>"),
            1);
  LOGLogger* const logger = LOGManager::getLogger("shop");
  for (int round = 0; round < times; ++round) {
    for (const char* const level : {"DEBUG", "INFO", "WARN", "ERROR", "FATAL"}) {
      logger->log(LOGLevel::toLevel(level),
                  I18NString("a<b>c & \xC3\xA9\xF0\x9F\x98\x80", "UTF-8"));
    }
  }
  LOGNDC::push("request <7>");
  logger->info(I18NString("in context"));
  LOGNDC::remove();
  TestEvent failure("shop", "ERROR", "failed");
  failure.setThrowableStrRep("Failure <x>\n at one");
  logger->callAppenders(&failure);
}

#ifndef _WIN32
/// What a browser makes of the page in that file: for each row of its table, if it takes room on
/// the page, one text of the number of cells, the background of the first cell, colour and weight
/// of the level (of the only cell where there is just one), and the visible text of the last cell.
Words renderedRows(const std::string& file) {
  Workplace::write("measured.html", Workplace::read(file) + R"(<script>
const measured = Array.from(document.querySelector('table').rows).filter(row => row.offsetHeight)
    .map(row => {
  const cell = row.cells[row.cells.length > 1 ? 2 : 0];
  const text = getComputedStyle(cell.querySelector('strong') || cell.querySelector('font') || cell);
  return [row.cells.length, getComputedStyle(row.cells[0]).backgroundColor, text.color,
          text.fontWeight, row.cells[row.cells.length - 1].innerText.replace(/\n/g, '/')].join('|');
});
document.body.append('{{' + measured.join('\n') + '\n}}' + document.title + '{{}}');
</script>)");
  const std::string directory = std::filesystem::current_path();
  // The shell finds the browser, and says so where there is none.
  const Outcome browser =
      run("/bin/sh", {"-c", "HOME=$PWD exec chromium \"$@\"", "browser", "--headless",
                      "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
                      "--disable-background-networking", "--disable-component-update",
                      "--disable-sync", "--user-data-dir=" + directory + "/browser", "--dump-dom",
                      "file://" + directory + "/measured.html"});
  EXPECT_EQ(browser.exitCode, 0) << "this test needs the browser Chromium\n" << browser.errors;
  // The script itself is in the output too, so the result is what follows the last mark.
  const std::size_t end = browser.output.rfind("{{}}");
  const std::size_t begin = browser.output.rfind("{{", end - 1);
  if (end == std::string::npos || begin == std::string::npos) {
    return {"not measured: " + browser.output};
  }
  std::istringstream lines(browser.output.substr(begin + 2, end - begin - 2));
  Words rows;
  for (std::string line; std::getline(lines, line);) {
    rows.push_back(line);
  }
  return rows;
}
#endif

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
  Workplace::write("broken.html", before);
  std::filesystem::resize_file("broken.html", std::uintmax_t{65} << 20);  // with zeros
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
      {{"/dev/zero"}, 4, "'/dev/zero' does not begin with a row"},
      {{"--output", "page.html", "broken.html"}, 4, "cannot read on in the input"},
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

#ifndef _WIN32
TEST(Page, ShowsEveryRowInItsColoursInABrowser) {
  const Workplace workplace;
  writeRows(6);
  ASSERT_EQ(page({"--title", "a < b & \xC3\xA9", "--output", "page.html", ROWS}).exitCode, 0);
  const std::string plain = "5|rgba(0, 0, 0, 0)|rgb(0, 0, 0)|400|";
  const std::string red = "5|rgba(0, 0, 0, 0)|rgb(153, 51, 0)|700|";
  // The browser writes its document as markup again.
  const std::string message = "a&lt;b&gt;c &amp; \xC3\xA9\xF0\x9F\x98\x80";
  Words expected{"5|rgb(51, 102, 153)|rgb(255, 255, 255)|700|Message"};
  for (int round = 0; round < 6; ++round) {
    expected.push_back("5|rgba(0, 0, 0, 0)|rgb(51, 153, 51)|400|" + message);
    expected.push_back(plain + message);
    expected.insert(expected.end(), 3, red + message);
  }
  expected.push_back(plain + "in context");
  expected.push_back("1|rgb(238, 238, 238)|rgb(0, 0, 0)|400|NDC: request &lt;7&gt;");
  expected.push_back(red + "failed");
  expected.push_back(
      "1|rgb(153, 51, 0)|rgb(255, 255, 255)|400|"
      "Failure &lt;x&gt;/&nbsp;&nbsp;&nbsp;&nbsp; at one");
  expected.push_back("}}a &lt; b &amp; \xC3\xA9");
  EXPECT_EQ(renderedRows("page.html"), expected);
}
#endif
