// Documents and messages that mean harm: what they cost is bounded, nothing but the document is
// read, and the diagnostics say where and why.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <set>

#ifdef __linux__
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include "config/LOG4ZEBConfigurator.h"
#include "core/LOGManager.h"
#include "core/LOGUntrustedText.h"
#include "layouts/LOGHTMLLayout.h"
#include "layouts/LOGPatternLayout.h"
#include "layouts/LOGTTCCLayout.h"
#include "layouts/LOGXMLLayout.h"
#include "platform/ZEBIDOM_DOMImplementation.h"
#include "platform/ZEBIDOM_Document.h"
#include "platform/ZEBIDOM_Parser.h"
#include "support/Documents.h"
#include "support/TestEvent.h"
#include "support/Texts.h"
#include "support/Workplace.h"

namespace {

using namespace std::string_literals;

constexpr std::size_t MILLION = 1000000;

/// `count` pieces, each with its number where `text` has a '#'.
std::string numbered(const std::string& text, std::size_t count) {
  const std::size_t at = text.find('#');
  std::string result;
  for (std::size_t i = 0; i < count; ++i) {
    result += text.substr(0, at) + std::to_string(i) + text.substr(at + 1);
  }
  return result;
}

std::string utf16(const std::string& ascii) {
  std::string wide = "\xFF\xFE";
  for (const char c : ascii) {
    wide += {c, '\0'};
  }
  return wide;
}

std::string document(const std::string& children) {
  return "<log4j:configuration>\n" + children + "</log4j:configuration>";
}

std::string appender(const std::string& pattern, const std::string& params = "") {
  return documents::appender(
             "F", "LOGRollingFileAppender",
             documents::param("File", "f.log") + params + documents::pattern(pattern)) +
         documents::root({"F"});
}

/// The most memory that the process has had, in MiB; 0 where it is not known.
long peakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word == "VmHWM:" && status >> word) {
      return std::stol(word) / 1024;
    }
  }
  return 0;
}

void info(const std::string& text) { LOGManager::getRootLogger()->info(text); }

class HostileDocument : public testing::Test {
 protected:
  ~HostileDocument() override { EXPECT_LT(peakMemory(), 2048) << "MiB"; }

  Workplace workplace;
};

}  // namespace

TEST_F(HostileDocument, IsRefusedWithItsPlaceAndTheReasonAndChangesNothing) {
  const std::string dtd = "<!DOCTYPE log4j:configuration SYSTEM 'absent.dtd' [";
  const std::string laughter = "<!DOCTYPE a [<!ENTITY e0 'ha'>" + [] {
    std::string nested;
    for (int i = 1; i < 30; ++i) {
      const std::string inner = "&e" + std::to_string(i - 1) + ";";
      nested += "<!ENTITY e" + std::to_string(i) + " '" + repeated(inner, 10) + "'>";
    }
    return nested;
  }() + "]>\n";
  const std::string longEntity = "<!DOCTYPE a [<!ENTITY e '" + std::string(60000, 'x') + "'>]>\n";
  const std::string byDefault =
      "<!DOCTYPE a [<!ATTLIST b c CDATA '" + std::string(60000, 'x') + "'>]>\n";
  // Each entity names the one before, which a recursive reader follows to the end of its stack.
  std::string chain = "<!ENTITY e0 'x'>";
  for (int i = 1; i < 100000; ++i) {
    chain += "<!ENTITY e" + std::to_string(i) + " '&e" + std::to_string(i - 1) + ";'>";
  }
  const std::string outside = "an entity outside of the document is not read: \"&e;\"";
  const struct {
    std::string text;
    std::string place;
    std::string reason;
  } CASES[] = {
      {laughter + document("&e29;"), "", "amplification"},
      {longEntity + document(repeated("&e;", 60000)), "", "amplification"},
      {byDefault + document(repeated("<b/>", 100000)), "", "too much text"},
      {"<!DOCTYPE a [" + chain + "]>" + document("&e99999;"), "", "more than 256"},
      {"<!DOCTYPE a [" + numbered("<!ATTLIST a a# CDATA ''>", 100000) + "]>" + document(""), "",
       "more than 256"},
      {"<!DOCTYPE a [<!ENTITY e SYSTEM 'x'>]>\n" + document("&e;"), "3:1", outside},
      {"<!DOCTYPE a [<!ENTITY % p SYSTEM 'x'>%p;]>\n" + document("<root a='&e;'/>"), "3:1",
       outside},
      {dtd + "]>\n" + document("<root a='1' b=\"x&e;y\"/>"), "3:1", outside},
      {utf16(dtd + "]>\n" + document("<root b='x&e;y'/>")), "3:1", outside},
      {dtd + "<!ENTITY i '<root a=\"&e;\"/>'>]>\n" + document("&i;"), "1:", outside},
      {dtd + "\n<!ATTLIST root a CDATA 'x&e;'>]>\n" + document("<root/>"), "2:", outside},
      {document("<root " + numbered("a#='' ", MILLION) + "/>"), "", "larger than 4 MiB"},
      {document("<root " + numbered("a#='' ", 300000) + "/>"), "2:1", "more than 250000 nodes"},
      {document(repeated("<b/>", MILLION)), "2:", "more than 250000 nodes"},
      {document(repeated("<b>", 100000)), "2:766", "nested more than 256 deep"},
      {document("<root a='" + std::string(70000, 'x') + "'/>"), "2:1",
       "the attribute \"a\" is longer than 64 KiB"},
      {document("<root a='\0'/>"s), "2:10", "not well-formed"},
      {document("<root a='\xED\xA0\x80'/>"), "2:10", "not well-formed"},
      {document("<root a='\x1B[31m'/>"), "2:10", "not well-formed"},
      {document("<root a='&#0;'/>"), "2:10", "invalid character number"},
      {"<?xml version='1.0' encoding='UTF-16'?>\n" + document(""), "1:31",
       "encoding specified in XML declaration is incorrect"},
      {"<?xml version='1.0' encoding='UTF-7'?>\n" + document(""), "1:", "unknown encoding"},
      {utf16(document("")) + "x", "2:", ""},
      {utf16(document("")).substr(1), "1:", "not well-formed"},
  };
  ASSERT_EQ(Workplace::configure(appender("%m%n")), 1);
  for (const auto& [text, place, reason] : CASES) {
    Workplace::write("hostile.xml", text);
    Workplace::clearDiagnostics();
    EXPECT_EQ(LOG4ZEBConfigurator::initialize("hostile.xml"), 0) << text.substr(0, 200);
    EXPECT_EQ(Workplace::noted("log4zeb:ERROR hostile.xml:" + place), 1)
        << text.substr(0, 200) << '\n'
        << Workplace::diagnostics().back();
    EXPECT_EQ(Workplace::noted(reason), reason.empty() ? 2 : 1) << Workplace::diagnostics().back();
    info("still there");
  }
  EXPECT_EQ(Workplace::lines("f.log").size(), std::size(CASES));
}

TEST_F(HostileDocument, OfAGibibyteIsRefusedBeforeItIsInMemory) {
  Workplace::write("hostile.xml", "<log4j:configuration><root a='");
  std::filesystem::resize_file("hostile.xml", 1UL << 30);
  EXPECT_EQ(LOG4ZEBConfigurator::initialize("hostile.xml"), 0);
  EXPECT_EQ(Workplace::noted("hostile.xml: the file is larger than 4 MiB"), 1);
  EXPECT_LT(peakMemory(), 512) << "MiB";
}

#ifdef __linux__
TEST_F(HostileDocument, HasNothingOpenedButItself) {
  for (const char* const name : {"other.dtd", "secret.txt", "params.ent"}) {
    Workplace::write(name, "<!ENTITY e 'SECRET'>");
  }
  ASSERT_EQ(mkfifo("pipe", 0600), 0) << "whoever opens it waits for ever";
  const int watch = inotify_init1(IN_NONBLOCK);
  ASSERT_GE(inotify_add_watch(watch, ".", IN_OPEN | IN_ACCESS), 0);
  const std::string here = std::filesystem::current_path().string();
  const std::string body = document("<root a='x'/>");
  std::string attacks;
  for (const std::string& file : {"other.dtd"s, "pipe"s, here + "/secret.txt",
                                  "file://" + here + "/pipe", "http://localhost/x.dtd"s}) {
    for (const std::string& text :
         {"<!DOCTYPE a SYSTEM '" + file + "'>" + body,
          "<!DOCTYPE a PUBLIC 'p' '" + file + "'>" + body,
          "<!DOCTYPE a [<!ENTITY % p SYSTEM '" + file + "'> %p;]>" + body,
          "<!DOCTYPE a [<!ENTITY e SYSTEM '" + file + "'>]>" + document("&e;"),
          "<!DOCTYPE a [<!ENTITY e SYSTEM '" + file + "'>]>" + document("<root a='&e;'/>"),
          "<!DOCTYPE a [<!NOTATION n SYSTEM '" + file + "'><!ENTITY u SYSTEM '" + file +
              "' NDATA n><!ATTLIST root a ENTITY #IMPLIED>]>" + document("<root a='u'/>"),
          "<?xml-stylesheet href='" + file + "'?>" +
              document("<xi:include href='" + file + "'/>")}) {
      Workplace::write("hostile.xml", text);
      LOG4ZEBConfigurator::initialize("hostile.xml");
    }
  }
  std::set<std::string> opened;
  alignas(inotify_event) char events[65536];
  for (ssize_t size = read(watch, events, sizeof events); size > 0;
       size = read(watch, events, sizeof events)) {
    for (char* at = events; at < events + size;) {
      const auto* const event = reinterpret_cast<const inotify_event*>(at);
      opened.insert(event->len == 0 ? "." : event->name);
      at += sizeof(inotify_event) + event->len;
    }
  }
  close(watch);
  EXPECT_EQ(opened.count("hostile.xml"), 1U) << "the watch sees what is opened";
  for (const char* const name : {"other.dtd", "pipe", "secret.txt", "params.ent"}) {
    EXPECT_EQ(opened.count(name), 0U) << name;
  }
}
#endif

TEST_F(HostileDocument, CannotMakeLoggersAndAppendersTakeAllMemoryAndTime) {
  const std::string deep = repeated("a.", 30000);
  const std::string appenders = numbered("<appender name='A#' class='LOGConsoleAppender'/>", 20000);
  const std::string references = numbered("<appender-ref ref='A#'/>", 20000) +
                                 repeated("<appender-ref ref='missing'/>", 30000);
  ASSERT_EQ(Workplace::configure(
                "<logger name='" + deep + "'/><logger name='" + std::string(60000, 'n') + "'/>" +
                appenders + "<logger name='last' additivity='false'>" + references + "</logger>"),
            1);
  EXPECT_EQ(Workplace::noted(
                "A logger's name is longer than 1024 characters or has more than 64 dots: ["),
            2);
  EXPECT_EQ(LOGManager::exists("a"), nullptr);
  EXPECT_EQ(Workplace::noted("no more than 1000 appenders in use; left out is [A1"), 11000);
  EXPECT_EQ(LOGManager::exists("last")->snapshotOfAppenders().size(), 1000U);
  EXPECT_EQ(Workplace::noted("No appender named [missing] could be found."), 30000);
}

TEST_F(HostileDocument, CannotFillMemoryWithNumbers) {
  for (const char* const width : {"1000000000", "-2147483647", "0000099999999999999"}) {
    Workplace::configure(appender("%"s + width + "m%n"));
    info("x");
    EXPECT_EQ(Workplace::lines("f.log").back().size(), 4096U) << width;
    EXPECT_EQ(Workplace::noted("A minimum width in a conversion pattern is larger than 4096: [%" +
                               std::string(width) + "m]"),
              1);
  }
  Workplace::configure(appender("%4096.2147483647m%n"));
  for (const char* const index : {"2147483647", "99999999999999999999", "-99999999999"}) {
    for (const char* const size : {"0", "1", "-1", "99999999999999999999"}) {
      Workplace::configure(appender("%m%n", documents::param("MaxBackupIndex", index) +
                                                documents::param("MaximumFileSize", size)));
      for (int i = 0; i < 3; ++i) {
        info("line");
      }
      LOG4ZEBConfigurator::shutdown();
    }
  }
  EXPECT_EQ(Workplace::noted("ERROR"), 3) << "the widths above";
  // Any character may follow, also those that take more than a byte, and braces that never close.
  Workplace::configure(appender(repeated("\xC3\xA9%m%d{", 6000)));
}

namespace {

/// What a message may hold: the ends of lines, sections and texts, escape sequences, no text at
/// all.
const std::string HOSTILE =
    "a\r\n2026-11-21 08:26:05,900 FATAL [1] root - forged\n\x1B[2J\x1B]0;title\x07 \b\x7F\0 "
    "<script>&amp;</td> ]]> \xC2\x85 \xE2\x80\xA8 \xE2\x80\xAE \xEF\xBF\xBE"s;

int wellFormed(const I18NString& elements) {
  Workplace::write("layout.xml", "<log>" + elements.toStdString() + "</log>");
  ZEBIDOM_Document parsed = ZEBIDOM_DOMImplementation::getInstance().createDocument();
  return ZEBIDOM_Parser(0).parse("layout.xml", parsed);
}

}  // namespace

TEST(HostileMessage, IsWrittenAsItIsExceptForTagsInHtml) {
  const Workplace workplace;
  LOGLayout simple;
  LOGTTCCLayout ttcc;
  LOGPatternLayout pattern("%m");
  LOGXMLLayout xml;
  LOGHTMLLayout html;
  TestEvent event("db", "INFO", HOSTILE);
  for (LOGLayout* const layout :
       {&simple, static_cast<LOGLayout*>(&ttcc), static_cast<LOGLayout*>(&pattern),
        static_cast<LOGLayout*>(&xml)}) {
    EXPECT_NE(layout->format(&event).toStdString().find(HOSTILE), std::string::npos)
        << layout->instanceOf();
  }
  EXPECT_EQ(pattern.format(&event), I18NString::fromUtf8(HOSTILE));
  const std::string row = html.format(&event).toStdString();
  EXPECT_NE(row.find("&lt;script&gt;&amp;&lt;/td&gt; ]]&gt;"), std::string::npos) << row;
  TestEvent harmless("db", "INFO", "x");
  const std::string plain = html.format(&harmless).toStdString();
  EXPECT_EQ(std::count(row.begin(), row.end(), '<'), std::count(plain.begin(), plain.end(), '<'));
  EXPECT_EQ(wellFormed(xml.format(&harmless)), 1);
  EXPECT_EQ(wellFormed(xml.format(&event)), 0) << "deliberate: a message may end its section";
}

TEST(UntrustedText, IsOneLineOfPlainCharacters) {
  const std::pair<std::string, std::string> CASES[] = {
      {"", ""},
      {"plain \xC3\xA9 \xF0\x9F\x98\x80 \xEF\xBF\xBD a > b [x]!",
       "plain \xC3\xA9 "
       "\xF0\x9F\x98\x80 \xEF\xBF\xBD a > b [x]!"},
      {"C:\\new\r\n\tx", "C:\\\\new\\r\\n\\tx"},
      {"\x1B[2J\x07\0\x7F"s, "\\u001B[2J\\u0007\\u0000\\u007F"},
      {"\xC2\x9B"
       "1m\xC2\x85\xE2\x80\xA8\xE2\x80\xA9",
       "\\u009B1m\\u0085\\u2028\\u2029"},
      {"\xE2\x80\xAE"
       "cod.exe\xE2\x81\xA9\xD8\x9C\xEF\xBB\xBF\xEF\xBF\xBF",
       "\\u202Ecod.exe\\u2069\\u061C\\uFEFF\\uFFFF"},
      {"x]]>y]", "x]]\\u003Ey\\u005D"},
      {">", "\\u003E"},
      {"\xE9 \xC0\x80 \xED\xA0\x80 \xF0\x9F", "\\xE9 \\xC0\\x80 \\xED\\xA0\\x80 \\xF0\\x9F"},
  };
  for (const auto& [text, expected] : CASES) {
    EXPECT_EQ(LOGUntrustedText::escaped(text), I18NString(expected)) << expected;
  }
  EXPECT_EQ(LOGUntrustedText::escaped(static_cast<const char*>(nullptr)), "");
  EXPECT_EQ(LOGUntrustedText::escaped("a\nb"), "a\\nb");
  const char16_t units[] = {0xD83D, 0xDE00, 0xD83D, u'\n', 0xDC00};
  EXPECT_EQ(LOGUntrustedText::escaped(I18NString(units, 5)), "\xF0\x9F\x98\x80\\uD83D\\n\\uDC00");
}
