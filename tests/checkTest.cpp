// The command log4zeb check, run as processes on documents with one mistake each.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/Command.h"
#include "support/Texts.h"
#include "support/Workplace.h"

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

constexpr const char* DOCUMENT = "log.xml";

// Without a mistake; its first line is empty, so that the indexes are the numbers of the lines.
const Words CLEAN{
    "",
    R"(<?xml version="1.0" encoding="UTF-8"?>)",
    R"(<log4j:configuration xmlns:log4j="urn:x" threshold="DEBUG">)",
    R"(  <appender name="FILE" class="LOGRollingFileAppender" addProcID="false">)",
    R"(    <param name="File" value="out.log"/>)",
    R"(    <param name="MaximumFileSize" value="10485760"/>)",
    R"(    <layout class="LOGPatternLayout">)",
    R"(      <param name="ConversionPattern" value="%d %p %c{2} - %m%n"/>)",
    R"(    </layout>)",
    R"(    <filter class="LOGLevelRangeFilter">)",
    R"(      <param name="LevelMin" value="INFO"/>)",
    R"(    </filter>)",
    R"(  </appender>)",
    R"(  <appender name="CONSOLE" class="LOGConsoleAppender">)",
    R"(    <layout class="LOGTTCCLayout"><param name="DateFormat" value="ISO8601"/></layout>)",
    R"(  </appender>)",
    R"(  <appender name="ASYNC" class="LOGAsyncAppender">)",
    R"(    <appender-ref ref="FILE"/>)",
    R"(  </appender>)",
    R"(  <logger name="shop" additivity="false">)",
    R"(    <level value="INFO"/>)",
    R"(    <appender-ref ref="CONSOLE"/>)",
    R"(  </logger>)",
    R"(  <root>)",
    R"(    <level value="WARN"/>)",
    R"(    <appender-ref ref="ASYNC"/>)",
    R"(  </root>)",
    R"(</log4j:configuration>)"};

std::string text(const Words& lines) {
  std::string result;
  for (std::size_t i = 1; i < lines.size(); ++i) {
    result += lines[i] + "\n";
  }
  return result;
}

Outcome check(const Words& arguments) {
  Words words{"check"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  Outcome outcome = runProgram(LOG4ZEB_COMMAND, words);
  outcome.output += outcome.errors;
  return outcome;
}

Outcome checkText(const std::string& document, Words arguments = {"--quiet"}) {
  Workplace::write(DOCUMENT, document);
  arguments.emplace_back(DOCUMENT);
  return check(arguments);
}

/// One line of the clean document, the mistake in its place, and what is to be said of it.
struct Mistake {
  std::size_t line;
  std::string instead;
  const char* rule;
  const char* words;
  std::string advice;
  std::ptrdiff_t findings = 1;  // some mistakes have consequences elsewhere
  std::size_t namedAt = 0;      // where it is to be named, if not at the line
};

std::string param(const std::string& name, const std::string& value) {
  return "<param name=\"" + name + "\" value=\"" + value + "\"/>";
}

std::string pattern(const std::string& value) { return param("ConversionPattern", value); }

std::string level(const std::string& value) { return "<level value=\"" + value + "\"/>"; }

std::string loneLogger(const std::string& name) {
  return "<logger name=\"" + name + "\" additivity=\"false\">";
}

const Mistake MISTAKES[] = {
    // The root element.
    {2, R"(<log4j:configuration debug="false">)", "debug",
     "turns the library's internal debugging on", "no attribute debug"},
    {2, R"(<log4j:configuration configDebug="true">)", "debug", "out of date", "debug=\"true\""},
    {2, R"(<log4j:configuration threshold="DEBUGG">)", "unknown-level", "stays what it was",
     "threshold=\"DEBUG\""},
    {2, R"(<log4j:configuration treshold="INFO">)", "unknown-attribute", "is ignored",
     "threshold=\"INFO\""},
    {2, R"(<log4j:configuration threshold="ERROR">)", "below-threshold",
     "below the threshold ERROR", "threshold=\"INFO\"", 2, 20},
    // Elements and texts.
    {12, R"(</appender><Appender name="B" class="LOGConsoleAppender"/>)", "unknown-element",
     "skipped with all that is in it", "<appender>"},
    {22, R"(<level value="INFO"/><logger name="a"/></logger>)", "misplaced-element",
     "not read in <logger>", "<logger> inside of <log4j:configuration>", 2},
    {20, "<level>INFO</level>", "text", "the text \"INFO\" in <level> is ignored",
     "<level value=\"INFO\"/>", 2},
    {12, R"(<layout class="LOGSimpleLayout"/></appender>)", "duplicate-layout",
     "the last one counts", "one <layout>", 1, 6},
    {23, R"(<root level="INFO">)", "unknown-attribute", "<root> has none",
     "<level value=\"INFO\"/>"},
    {6, R"(<layout class="LOGPatternLayout" ConversionPattern="%m%n">)", "unknown-attribute",
     "<layout> has none", pattern("%m%n")},
    {24, R"(<levels><level value="WARN"/></levels>)", "unknown-element", "skipped",
     "what is in it, without <levels> around it"},
    {21, R"(<appender-ref name="CONSOLE"/>)", "unknown-attribute", "is ignored", "ref=\"CONSOLE\"",
     4},
    {4, R"(<param name="File">out.log</param>)", "text", "is ignored", param("File", "out.log"), 3},
    {18, R"(</appender><log4j:logger name="a"/>)", "unknown-element", "skipped", "<logger>"},
    {18, R"(</appender><categoryFactory class="/opt/libshop.so"/>)", "library-name",
     "is not loaded", "class=\"shop\""},
    // Classes.
    {3, R"(<appender name="FILE" class="LOGRolingFileAppender">)", "unknown-class",
     "references to it are left out", "class=\"LOGRollingFileAppender\""},
    {14, R"(<layout class="LOGPaternLayout"/>)", "unknown-class", "the appender has no layout",
     "class=\"LOGPatternLayout\""},
    {9, R"(<filter class="LOGLevelRangefilter">)", "unknown-class", "denies every event",
     "class=\"LOGLevelRangeFilter\""},
    {8, R"(</layout><layout class="LOGOtherLayout"/>)", "unknown-class",
     "has no layout by this element", "LOGPatternLayout"},
    {12, R"(<errorHandler class="LOGOnlyOnceErrorHandler"/></appender>)", "error-handler",
     "never call an error handler", "leave it out"},
    {19, R"(<logger name="shop" additivity="false" class="x.MyLogger">)", "logger-class",
     "needs a <categoryFactory>", "no attribute class"},
    // Names and references.
    {13, R"(<appender name="FILE" class="LOGConsoleAppender">)", "duplicate-name",
     "an appender \"FILE\" in line 3 already", "another name", 3},
    {21, R"(<appender-ref ref="CONSLOE"/>)", "unknown-appender", "no appender \"CONSLOE\"",
     "ref=\"CONSOLE\"", 3},
    {21, R"(<appender-ref ref="FILE"/>)", "unused-appender", "\"CONSOLE\" is never built",
     "<appender-ref ref=\"CONSOLE\"/>", 1, 13},
    {15,
     R"(</appender><appender name="A" class="LOGAsyncAppender"><appender-ref ref="B"/></appender>)"
     R"(<appender name="B" class="LOGAsyncAppender"><appender-ref ref="A"/></appender>)",
     "unused-appender", "\"A\" is never built", "<appender-ref ref=\"A\"/>"},
    {25, R"(<appender-ref ref="ASYNC"/><appender-ref ref="FILE"/>)", "twice",
     "reach the appender \"FILE\" twice", "one reference"},
    {19, R"(<logger name="shop"><appender-ref ref="FILE"/>)", "twice", "through a logger above it",
     "additivity=\"false\""},
    {17, R"(<appender-ref ref="FILE"/><appender-ref ref="ASYNC"/>)", "circle", "leads back",
     "no reference in a circle"},
    {15, R"(<appender-ref ref="FILE"/></appender>)", "misplaced-element",
     "only LOGAsyncAppender passes events on", "class=\"LOGAsyncAppender\""},
    {17, "", "async-without-appender", "passes events on to no appender", "<appender-ref", 2, 16},
    {21, "", "no-appender", "\"shop\" reach no appender", "additivity=\"true\"", 2, 19},
    {25, "", "no-appender", "the root logger has no appender", "in <root>", 2, 23},
    {21, R"(</logger><logger name="shop.a">)", "no-appender",
     "the additivity of the logger \"shop\" above it is off", "an <appender-ref>", 3},
    {19, loneLogger("................................................................."),
     "logger-name", "no more than 1024 characters", "a shorter name"},
    {19, loneLogger("root"), "logger-named-root", "not the root logger itself", "<root>"},
    {19, loneLogger("shop::db"), "logger-name", "only dots separate", "name=\"shop.db\""},
    {19, loneLogger("shop.*"), "logger-name", "stands for itself", "name=\"shop\""},
    {19, loneLogger("shop "), "blanks", "are part of the name", "name=\"shop\""},
    {22, R"(</logger><logger name="shop"/>)", "duplicate-name", "replace those given before",
     "one element"},
    {19,
     R"(<logger name="shop.db"/><logger name="shopping"/><logger name="shop" additivity="false">)",
     "logger-order", "\"shop.db\" is described before \"shop\"", "this element before"},
    {22, R"(</logger><logger name="a"><appender-ref ref="CONSOLE"/></logger><logger name="a"/>)",
     "duplicate-name", "replace those given before", "one element"},
    // Levels and truth values.
    {20, level("WARNING"), "unknown-level", "it means DEBUG", "value=\"WARN\""},
    {20, level(" INFO"), "unknown-level", "\" INFO\" is no level", "value=\"INFO\""},
    {20, level("Inherited"), "unknown-level", "it means DEBUG", "value=\"inherited\""},
    {20, R"(<level value="INFO" class="a.B"/>)", "level-class", "no effect", "no attribute class"},
    {20, R"(<level value="INFO"/><priority value="WARN"/>)", "duplicate-level",
     "the last one counts", "one <level>"},
    {24, level("inherited"), "root-level", "nobody to inherit from", "value=\"INFO\""},
    {19, R"(<logger name="shop" additivity="no">)", "truth-value", "means true",
     "additivity=\"false\""},
    {3, R"(<appender name="FILE" class="LOGRollingFileAppender" addProcID="FALSE">)", "truth-value",
     "means true", "addProcID=\"false\""},
    {13, R"(<appender name="CONSOLE" class="LOGConsoleAppender" addProcID="true">)",
     "attribute-without-effect", "only LOGRollingFileAppender reads it", "no addProcID"},
    // Params.
    {4, param("file", "out.log"), "ignored-param", "case and blanks count", "name=\"File\"", 2},
    {5, param("MaxFileSize", "1048576"), "ignored-param", "reads none of that name",
     "name=\"MaximumFileSize\", in bytes"},
    {5, param("MaximumFileSize", "10MB"), "file-size", "\"10MB\" means 10 bytes",
     "value=\"10485760\""},
    {5, param("MaximumFileSize", "5000000000"), "file-size", "means 2147483647 bytes",
     "value=\"2147483647\""},
    {5, param("MaximumFileSize", "-1"), "file-size", "never reached", "value="},
    {5, param("MaxBackupIndex", "0"), "no-backup", "a full file is emptied", "value=\"1\" or more"},
    {5, param("MaxBackupIndex", "many"), "number", "read as the number 0", "value="},
    {5, param("Append", "no"), "truth-value", "means true", "value=\"false\""},
    {5, param("Append", ""), "empty-param", "its value is empty", "value="},
    {5, param("File", "b.log"), "duplicate-param", "the last value counts", "one <param>"},
    {5, param("Threshold", "WARN"), "ignored-param", "reads none of that name",
     "LevelMin; a threshold that a program sets is an upper bound"},
    {14, R"(<layout class="LOGSimpleLayout"><param name="ConversionPattern" value="%m"/></layout>)",
     "ignored-param", "reads none of that name", "class=\"LOGPatternLayout\""},
    {5, param("LevelMin", "WARN"), "ignored-param", "reads none of that name",
     "the param in <filter class=\"LOGLevelRangeFilter\">"},
    {5, param("BufferedIO", "true"), "ignored-param", "reads none of that name",
     "loses what is in the buffer when it is killed"},
    {5, param("BufferSize", "0"), "ignored-param", "reads none of that name",
     "setBufferedIO(1) in the program"},
    {16,
     R"(<appender name="ASYNC" class="LOGLocalUDPAppender"><param name="RemoteHost" value="h"/>)",
     "ignored-param", "reads none of that name", "records go to this machine", 2},
    {17, R"(<param name="BufferSize" value="0"/><appender-ref ref="FILE"/>)", "ignored-param",
     "reads none of that name", "a queue holds 128"},
    {20, R"(<param name="x" value="y"/><level value="INFO"/>)", "param-without-effect", "no effect",
     "leave it out"},
    // Files.
    {4, "", "no-file", "nothing is opened", "name=\"File\"", 1, 3},
    {4, param("File", "logs/out.log"), "directory", "the directory \"logs\" does not exist",
     "make it before"},
    {4, param("File", "."), "directory", "is a directory, not a file", "a file"},
    {4, param("File", "${HOME}.log"), "variable", "place of a variable", "the text that is meant"},
    {4, param("File", "out-%d.log"), "file-name", "taken as it stands", "the name of the file"},
    {15,
     R"(</appender><appender name="A" class="LOGFileAppender"><param name="File" value="./out.log"/>)"
     R"(<layout class="LOGSimpleLayout"/></appender>)",
     "shared-file", "\"FILE\" writes to the same file", "a file of its own", 2},
    {22,
     R"(<appender-ref ref="A"/><appender-ref ref="B"/></logger><appender name="A" class="LOGFileAppender">)"
     R"(<param name="File" value="a"/><layout class="LOGSimpleLayout"/></appender><appender name="B" )"
     R"(class="LOGFileAppender"><layout class="LOGSimpleLayout"/><param name="File" value="a"/>)"
     R"(</appender>)",
     "shared-file", "its events are in it twice", "one appender for both"},
    {15,
     R"(</appender><appender name="A" class="LOGFileAppender"><param name="File" value="out.log.1"/>)"
     R"(<layout class="LOGSimpleLayout"/></appender>)",
     "shared-file", "\"FILE\" renames its full file to this name", "no backup gets", 2},
    {15,
     R"(</appender><appender name="A" class="LOGRollingFileAppender" addProcID="FALSE">)"
     R"(<param name="File" value="./out"/><layout class="LOGSimpleLayout"/></appender>)",
     "process-id", "\"4711./out\"", "addProcID=\"false\"", 3},
    // Layouts and patterns.
    {14, "", "no-layout", "it writes nothing", "<layout", 1, 13},
    {16, R"(<appender name="ASYNC" class="LOGAsyncAppender"><layout class="LOGSimpleLayout"/>)",
     "layout-without-effect", "no effect in LOGAsyncAppender",
     "in the appenders that it refers to"},
    {14, R"(<layout class="LOGTTCCLayout"><param name="DateFormat" value="HH:mm"/></layout>)",
     "unknown-date-format", "no date is written", "value="},
    {7, pattern("%q %m%n"), "unknown-specifier", "\"%q\" is no specifier", "one of the letters"},
    {7, pattern("%\xC3\xA4 %m%n"), "unknown-specifier", "\"%\xC3\xA4\" is no specifier",
     "one of the letters"},
    {7, pattern("%-5level %m%n"), "unknown-specifier",
     "\"%-5level\" is \"%-5l\" and the text \"evel\"", "%p", 2},
    {7, pattern("%d{ISO8601 %m%n"), "unknown-specifier",
     "the brace behind \"%d\" is written as it stands", "a text in braces"},
    {7, pattern("%d{HH:mm:ss,SSS} %m%n"), "twelve-hours", "the hours of half a day",
     "%d{ABSOLUTE}"},
    {7, pattern("%d{HH:mm:ss.SSS} %m%n"), "unknown-date-format", "no date is written",
     "%d{ABSOLUTE}"},
    {7, pattern("%p %M%n"), "no-message", "the messages are not written", "%m", 2},
    {7, pattern("%c{1.} %m%n"), "precision", "is read as 1", "%c{1}"},
    {7, pattern("%5.x %m%n%-5"), "unknown-specifier", "\"%5.x\" is the beginning of a specifier",
     "a letter at its end", 2},
    {7, pattern("%m\\n"), "backslash", "a backslash and a letter", "%n", 2},
    {7, pattern("%d{absolute} %m%n"), "unknown-date-format", "no date format of a pattern",
     "%d{ABSOLUTE}"},
    {7, pattern("%X %m%n"), "pattern-without-key", "the layout is not made", "%x"},
    {7, pattern("%F:%m%n"), "nothing-to-show", "shows \"?\"", "leave it out"},
    {7, pattern("%c{0} %m%n"), "precision", "the whole name", "%c"},
    {7, pattern("%-5p %m%n"), "widths", "\"%m\" in line 7", "without a width"},
    {7, pattern("%p %-20m%n"), "widths", "that of every specifier of every pattern",
     "without a width"},
    {7, pattern("%p %m"), "no-line-end", "become one line", "%n"},
    {13,
     R"(<appender name="CONSOLE" class="LOGSyslogAppender"><param name="Facility" value="locale1"/>)",
     "unknown-facility", "it means user", "value=\"local1\"", 2},
    {13,
     R"(<appender name="CONSOLE" class="LOGSyslogAppender"><param name="Host" value="loghost:515"/>)",
     "port", "datagrams go to port 514", "value=\"loghost\"", 2},
    {13, R"(<appender name="CONSOLE" class="LOGSyslogAppender">)", "syslog-line-end",
     "a datagram is one message", "without %n", 1, 14},
    {13, R"(<appender name="CONSOLE" class="LOGTCPSocketAppender">)", "sends-nothing",
     "every event is lost", "LOGSyslogAppender", 2},
    // Filters.
    {10, param("LevelMin", "INF"), "unknown-level", "LevelMin becomes DEBUG", "value=\"INFO\""},
    {10, R"(<param name="LevelMin" value="ERROR"/><param name="LevelMax" value="INFO"/>)",
     "empty-range", "LevelMin ERROR is above LevelMax INFO", "the other way round", 1, 9},
    {10, param("LevelMax", "INFO"), "never-reached", "no event reaches", "another level", 1, 3},
    {10, "", "filter-without-effect", "neither LevelMin nor LevelMax", "LevelMin", 1, 9},
    {10, param("AcceptOnMatch", "false"), "ignored-param", "reads none",
     "cannot make a filter deny"},
    {10, param("LevelMin", "OFF"), "denies-all", "deny every event",
     "bounds between which there are levels", 1, 9},
    {11, R"(</filter><filter class="LOGDenyAllFilter"/>)", "denies-all", "deny every event",
     "a filter before LOGDenyAllFilter", 1, 9},
    {12,
     R"(<filter class="LOGStringMatchFilter"><param name="StringToMatch" value="x"/></filter></appender>)",
     "match-without-deny", "what does not match passes as well",
     "<filter class=\"LOGDenyAllFilter\"/>"},
    {12,
     R"(<filter class="LOGLevelMatchFilter"><param name="LevelToMatch" value="DEBUG"/></filter></appender>)",
     "never-matches", "no event of the level DEBUG comes", "another level"},
    {15, R"(<filter class="LOGDenyAllFilter"/><filter class="LOGLevelMatchFilter"/></appender>)",
     "filter-never-asked", "never asked", "before them", 2},
};

/// The lines that are indented between two texts of a page.
Words indentedLines(const std::string& page, const std::string& from, const std::string& to) {
  std::istringstream part(page.substr(page.find(from), page.find(to) - page.find(from)));
  Words lines;
  for (std::string line; std::getline(part, line);) {
    if (line.empty() || line.compare(0, 4, "    ") == 0) {
      lines.push_back(line.substr(std::min<std::size_t>(4, line.size())));
    }
  }
  return lines;
}

}  // namespace

TEST(CheckCommand, NamesEveryMistakeAtItsLineAndSaysWhatToWrite) {
  const Workplace workplace;
  for (const Mistake& mistake : MISTAKES) {
    Words lines = CLEAN;
    lines[mistake.line] = mistake.instead;
    const Outcome outcome = checkText(text(lines));
    SCOPED_TRACE(std::string(mistake.rule) + ": " + mistake.instead + "\n" + outcome.output);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(countOf(": warning: ", outcome.output), mistake.findings);
    const std::size_t place = mistake.namedAt == 0 ? mistake.line : mistake.namedAt;
    const std::string beginning = std::string(DOCUMENT) + ":" + std::to_string(place) + ":";
    bool isNamed = false;
    std::istringstream output(outcome.output);
    for (std::string line, advice; std::getline(output, line);) {
      if (line.compare(0, beginning.size(), beginning) == 0 && mentions(line, mistake.words) &&
          mentions(line, std::string("[") + mistake.rule + "]")) {
        std::getline(output, advice);
        isNamed = isNamed || mentions(advice, mistake.advice);
      }
    }
    EXPECT_TRUE(isNamed);
  }
}

TEST(CheckCommand, IsContentWithWhatOnlyLooksLikeAMistake) {
  const Workplace workplace;
  Words silent = CLEAN;  // a logger that is off needs no appender, and reaches none twice
  silent[22] = R"(</logger><logger name="a" additivity="false"><level value="OFF"/></logger>)"
               R"(<logger name="b"><level value="OFF"/><appender-ref ref="ASYNC"/></logger>)";
  Words split = CLEAN;  // two ways, of which each event goes one
  split[18] =
      R"(<filter class="LOGLevelRangeFilter"><param name="LevelMax" value="WARN"/></filter>)"
      R"(</appender><appender name="GRAVE" class="LOGAsyncAppender"><appender-ref ref="FILE"/>)"
      R"(<filter class="LOGLevelRangeFilter"><param name="LevelMin" value="ERROR"/></filter>)"
      R"(</appender>)";
  split[25] += R"(<appender-ref ref="GRAVE"/>)";
  Words traced = CLEAN;  // nobody knows what a filter from a library accepts
  traced[11] += R"(<filter class="LOGLogUVDDyeTraceFilter"/><filter class="LOGDenyAllFilter"/>)";
  Words numbered = CLEAN;  // only the first backup is made
  numbered[15] +=
      R"(<appender name="A" class="LOGFileAppender"><param name="File" value="out.log.2"/>)"
      R"(<layout class="LOGSimpleLayout"/></appender>)";
  numbered[21] += R"(<appender-ref ref="A"/>)";
  for (const Words& lines : {silent, split, traced, numbered}) {
    const Outcome outcome = checkText(text(lines), {});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_TRUE(mentions(outcome.output, "log.xml: nothing to complain of\n"));
    EXPECT_EQ(mentions(outcome.output, "FILE if the filter LOGLogUVDDyeTraceFilter lets it"),
              lines == traced);
  }
}

TEST(CheckCommand, SaysWhereReferencesBecomeTooDeep) {
  const Workplace workplace;
  std::string document = "<log4j:configuration><root><appender-ref ref='0'/></root>";
  for (int i = 0; i < 66; ++i) {
    document += "\n<appender name='" + std::to_string(i) +
                "' class='LOGAsyncAppender'><appender-ref ref='" + std::to_string(i + 1) +
                "'/></appender>";
  }
  const std::string output = checkText(document +
                                       "<appender name='66' class='LOGConsoleAppender'><layout "
                                       "class='LOGSimpleLayout'/></appender></log4j:configuration>")
                                 .output;
  EXPECT_TRUE(mentions(output, "log.xml:65:")) << output;
  EXPECT_EQ(countOf("[too-many]", output), 1) << output;
}

TEST(CheckCommand, GivesThePlaceOfAnAttributeThatStandsInALaterLine) {
  const Workplace workplace;
  Words lines = CLEAN;
  lines[1] = "\xEF\xBB\xBF<log4j:configuration debug='no'>";  // with a byte order mark
  lines[2] = "";
  lines[13] =
      "  <!-- \xC3\xA4 --><appender class='LOGConsoleAppender'\r\n   name = 'CONSOLE\xC3\xA4 '\t"
      "addProcID=\r\n'true'>";
  lines[21] = "<appender-ref ref='CONSOLE\xC3\xA4 '/>";
  const std::string output = checkText(text(lines)).output;
  EXPECT_TRUE(mentions(output, "log.xml:1:22: warning: debug=")) << output;
  EXPECT_TRUE(mentions(output, "log.xml:14:4: warning: the blanks around")) << output;
  EXPECT_TRUE(mentions(output, "log.xml:14:23: warning: addProcID has no effect")) << output;
}

TEST(CheckCommand, TellsWhyADocumentCannotBeUsed) {
  const Workplace workplace;
  fs::create_directory("folder");
  const struct {
    const char* document;
    const char* complaint;
  } cases[] = {
      {"<log4j:configuration>\n <root>\n</log4j:configuration>",
       "log.xml:3:3: error: mismatched tag"},
      {"<log4j:configuration>\n &nbsp;</log4j:configuration>",
       "log.xml:2:2: error: undefined entity"},
      {"<log4j:configuration><root>", "log.xml:1:28: error: the document ends inside"},
      {"<log4j:Configuration/>", "log.xml:1:1: error: the root element is <log4j:Configuration>"},
      {"", "log.xml: error: the file is empty"},
  };
  for (const auto& broken : cases) {
    const Outcome outcome = checkText(broken.document, {});
    EXPECT_EQ(outcome.exitCode, 2) << outcome.output;
    EXPECT_TRUE(mentions(outcome.output, broken.complaint)) << outcome.output;
    EXPECT_TRUE(mentions(outcome.output, "log.xml: cannot be used")) << outcome.output;
  }
  EXPECT_EQ(check({"missing.xml"}).exitCode, 2);
  EXPECT_EQ(check({"folder"}).exitCode, 2);
  EXPECT_EQ(check({}).exitCode, 2);
  // The older name of the root element is only worth a warning.
  std::string old = text(CLEAN);
  for (const char* const mark : {"<", "</"}) {
    old.replace(old.find(std::string(mark) + "log4j:c"), std::string(mark).size() + 6, mark);
  }
  const Outcome outcome = checkText(old);
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_TRUE(mentions(outcome.output, "log.xml:2:1: warning: the root element <configuration>"));
}

TEST(CheckCommand, ShowsWhereEventsGoAndHowTheyLookAndOpensNothing) {
  const Workplace workplace;
  Words lines = CLEAN;
  lines[7] = R"(<param name="ConversionPattern" value="%p %c{1} - %m%n"/>)";
  lines[11] =
      R"(</filter><filter class="LOGStringMatchFilter"><param name="StringToMatch" value="disk"/>)"
      R"(</filter><filter class="LOGLevelMatchFilter"><param name="LevelToMatch" value="fatal"/>)"
      R"(</filter><filter class="LOGDenyAllFilter"/>)";
  lines[22] = R"(</logger><logger name="a.b"><appender-ref ref="CONSOLE"/></logger>)";
  const Outcome outcome = checkText(text(lines), {});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
  const std::string middle = outcome.output.substr(outcome.output.find("  root"));
  const std::string upToSample = middle.substr(0, middle.find("  CONSOLE"));
  EXPECT_EQ(
      upToSample,
      "  root  WARN  (line 23)\n"
      "      DEBUG, INFO: off\n"
      "      WARN, ERROR: ASYNC > FILE if the message contains \"disk\"\n"
      "      FATAL: ASYNC > FILE\n"
      "    a.b  WARN from root  (line 22)\n"
      "        DEBUG, INFO: off\n"
      "        WARN, ERROR: CONSOLE, ASYNC > FILE if the message contains \"disk\"\n"
      "        FATAL: CONSOLE, ASYNC > FILE\n"
      "    shop  INFO, not to the appenders of loggers above  (line 19)\n"
      "        DEBUG: off\n"
      "        INFO, WARN, ERROR, FATAL: CONSOLE\n"
      "\nAppenders\n"
      "  FILE  LOGRollingFileAppender  (line 3)\n"
      "      writes to   the file out.log, which is appended to; at 10485760 bytes it becomes "
      "backup 1 of 1\n"
      "      layout      LOGPatternLayout \"%p %c{1} - %m%n\"\n"
      "      sample      FATAL b - an example message\n"
      "      filters     1. LOGLevelRangeFilter: denies what is below INFO\n"
      "                  2. LOGStringMatchFilter: accepts messages that contain \"disk\"\n"
      "                  3. LOGLevelMatchFilter: accepts FATAL\n"
      "                  4. LOGDenyAllFilter: denies everything\n");
  EXPECT_TRUE(mentions(outcome.output, "passes them on to FILE"));
  EXPECT_EQ(countOf("\x1B", outcome.output), 0);  // it is no terminal
  EXPECT_FALSE(fs::exists("out.log"));
}

TEST(CheckCommand, AgreesWithWhatTheLibraryThenDoes) {
  const Workplace workplace;
  // Widths, a wrong level word, an appender reached twice and an unknown filter, all as they are.
  Words lines = CLEAN;
  lines[7] = R"(<param name="ConversionPattern" value="%p|%c|%8m%n"/>)";
  lines[19] = R"(<logger name="shop"><appender-ref ref="FILE"/>)";
  lines[20] = R"(<level value="TRACE"/>)";
  const Outcome outcome = checkText(text(lines), {});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_TRUE(mentions(outcome.output, "INFO, WARN, ERROR, FATAL: FILE, CONSOLE, ASYNC > FILE"))
      << outcome.output;
  EXPECT_TRUE(mentions(outcome.output, "sample          INFO|    shop|an example message"))
      << outcome.output;
  Workplace::write("lines", "an example message\n");
  runProgram(LOG4ZEB_COMMAND, {"log", "--config", DOCUMENT, "--logger", "shop"}, "lines");
  EXPECT_EQ(Workplace::lines("out.log"), Words(2, "    INFO|    shop|an example message"));
}

TEST(CheckCommand, ReadsADocumentOnceAndStandardInputForADash) {
  const Workplace workplace;
  Words lines = CLEAN;
  lines[20] = R"(    <level value="WARNING"/>)";
  Workplace::write(DOCUMENT, text(lines));
  const auto checkFrom = [](const std::string& name) {
    const Outcome outcome = runProgram(LOG4ZEB_COMMAND, {"check", "--quiet", name}, DOCUMENT);
    EXPECT_EQ(outcome.exitCode, 1) << outcome.output << outcome.errors;
    return outcome.output;
  };
  EXPECT_TRUE(mentions(checkFrom("-"), "-:20:12: warning: \"WARNING\" is no level"));
#ifndef _WIN32
  const std::string line =
      "mkfifo pipe && (cat log.xml >pipe & timeout 10 \"$0\" check --quiet pipe)";
  const Outcome outcome = runProgram("/bin/sh", {"-c", line, LOG4ZEB_COMMAND});
  EXPECT_TRUE(mentions(outcome.output, "pipe:20:12: warning: \"WARNING\" is no level"));
  EXPECT_EQ(outcome.exitCode, 1);
#endif
}

TEST(CheckCommand, LooksFromTheDirectoryWhereTheProgramRuns) {
  const Workplace workplace;
  Words lines = CLEAN;
  lines[4] = R"(<param name="File" value="logs/out.log"/>)";
  fs::create_directories("place/logs");
  EXPECT_EQ(checkText(text(lines), {"--directory", "place"}).exitCode, 0);
  lines[15] += R"(<appender name="A" class="LOGFileAppender"><param name="File" value=")" +
               fs::absolute("place/logs/out.log").u8string() +
               R"("/><layout class="LOGSimpleLayout"/></appender>)";
  EXPECT_TRUE(mentions(checkText(text(lines), {"--directory", "place"}).output,
                       "log.xml:15:76: warning: the appender \"FILE\" writes to the same file"));
  lines[15] = CLEAN[15];
  fs::permissions("place/logs", fs::perms::owner_read | fs::perms::owner_exec);
  if (!std::ofstream("place/logs/probe").is_open()) {  // some users may write everywhere
    EXPECT_TRUE(mentions(checkText(text(lines), {"--directory", "place"}).output,
                         "log.xml:4:24: warning: this user may make no files in"));
  }
  fs::permissions("place/logs", fs::perms::owner_all);
}

TEST(CheckCommand, PrintsOneJsonObjectOnRequest) {
  const Workplace workplace;
  std::string output =
      checkText(
          "<log4j:configuration><appender name='A\"\\&#9;b' class='LOGConsoleAppender'>"
          "<layout class='LOGSimpleLayout'/></appender>\n<root><level value='OUCH'/>"
          "<appender-ref ref='A\"\\&#9;b'/></root></log4j:configuration>",
          {"--json"})
          .output;
  EXPECT_EQ(output,
            R"({"document":"log.xml","exitCode":1,"findings":[{"line":2,"column":14,)"
            R"("severity":"warning","rule":"unknown-level",)"
            R"("text":"\"OUCH\" is no level: it means DEBUG","instead":"value=\"DEBUG\""}],)"
            R"("threshold":"ALL","loggers":[{"name":"root","root":true,"line":2,"level":"DEBUG",)"
            R"("inheritedFrom":null,"additivity":true,"routes":[{"levels":["DEBUG","INFO","WARN",)"
            R"("ERROR","FATAL"],"enabled":true,"to":["A\"\\\tb"]}]}],)"
            R"("appenders":[{"name":"A\"\\\tb","class":"LOGConsoleAppender","line":1,"built":true,)"
            R"("destination":"standard output","layout":"LOGSimpleLayout",)"
            R"("sample":"an example message\r\n","filters":[],"threshold":null}]})"
            "\n");
  output = checkText("<a>", {"--json"}).output;
  EXPECT_TRUE(mentions(output, R"("severity":"error","rule":"unreadable")")) << output;
  EXPECT_FALSE(mentions(output, "loggers"));
}

TEST(CheckCommand, HasNothingToComplainOfInTheExamples) {
  const Workplace workplace;
  fs::create_directory("logs");
  int examples = 0;
  for (const auto& entry : fs::recursive_directory_iterator(LOG4ZEB_SOURCES "/examples")) {
    if (entry.path().extension() == ".xml") {
      const Outcome outcome = check({"--quiet", entry.path().u8string()});
      EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
      EXPECT_EQ(outcome.output, "");
      ++examples;
    }
  }
  EXPECT_GE(examples, 5);
}

TEST(CheckCommand, PrintsWhatTheDocumentationShows) {
  const Workplace workplace;
  const std::string page = Workplace::read(LOG4ZEB_SOURCES "/docs/check.md");
  std::string document;
  for (const std::string& line : indentedLines(page, "    <?xml", "and prints")) {
    document += line + "\n";
  }
  Workplace::write("server.xml", document);
  std::istringstream output(check({"server.xml"}).output);
  Words printed;
  for (std::string line; std::getline(output, line);) {
    printed.push_back(line);
  }
  Words shown = indentedLines(page, "    server.xml:", "A finding begins");
  shown.pop_back();  // the empty line behind
  ASSERT_EQ(shown.size(), printed.size());
  for (std::size_t i = 0; i < shown.size(); ++i) {
    if (!mentions(shown[i], "sample")) {  // it holds the time
      EXPECT_EQ(shown[i], printed[i]);
    }
  }
}
