// The XML and the HTML layout, to the character.

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <thread>

#include "core/LOGNDC.h"
#include "layouts/LOGDate.h"
#include "layouts/LOGHTMLLayout.h"
#include "layouts/LOGXMLLayout.h"
#include "platform/ZEBAssertError.h"
#include "support/TestEvent.h"
#include "support/Workplace.h"

namespace {

const std::string NO_CONTEXT = "<log4j:NDC><![CDATA[]]></log4j:NDC>\r\n";

/// What the XML layout writes of an event of the logger "db" with that between message and end.
std::string element(LOGLoggingEvent& event, const std::string& message, const std::string& rest,
                    const std::string& level = "\" level=\"INFO") {
  return "<log4j:event category=\"db\" timestamp=\"" + std::to_string(event.getTimeStamp()) +
         "000" + level + "\" thread=\"" + event.getThreadName().toStdString() +
         "\">\r\n<log4j:message><![CDATA[" + message + "]]></log4j:message>\r\n" + rest +
         "</log4j:event>\r\n\r\n";
}

/// The row of an event of the logger "db<1>" that the HTML layout writes.
std::string row(LOGLoggingEvent& event, const std::string& level, const std::string& message,
                const std::string& location = "") {
  const std::string thread = event.getThreadName().toStdString();
  const auto time = (event.getTimeStamp() - LOGLoggingEvent::getStartTime()) * 1000;
  return "\r\n<tr>\r\n<td>" + std::to_string(time) + "</td>\r\n<td title=\"" + thread +
         " thread\">" + thread + "</td>\r\n<td title=\"Level\">" + level +
         "</td>\r\n<td title=\"db&lt;1&gt; category\">db&lt;1&gt;</td>\r\n" + location +
         "<td title=\"Message\">" + message + "</td>\r\n</tr>\r\n";
}

const std::string THROWABLE_BEGIN =
    "<tr><td bgcolor=\"#993300\" style=\"color:White; font-size : xx-small;\" colspan=\"6\">";
const std::string NEXT_LINE = "\r\n<br>&nbsp;&nbsp;&nbsp;&nbsp;";

std::string header(const std::string& title, const std::string& date, const std::string& location) {
  return "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01 Transitional//EN\" "
         "\"http://www.w3.org/TR/html4/loose.dtd\">\r\n<html>\r\n<head>\r\n<title>" +
         title +
         "</title>\r\n<style type=\"text/css\">\r\n<!--\r\n"
         "body, table {font-family: arial,sans-serif; font-size: x-small;}\r\n"
         "th {background: #336699; color: #FFFFFF; text-align: left;}\r\n-->\r\n</style>\r\n"
         "</head>\r\n<body bgcolor=\"#FFFFFF\" topmargin=\"6\" leftmargin=\"6\">\r\n"
         "<hr size=\"1\" noshade>\r\n<br>\r\nLog session start time " +
         date +
         "<br>\r\n<table cellspacing=\"0\" cellpadding=\"4\" border=\"1\" bordercolor=\"#224466\" "
         "width=\"100%\">\r\n<tr>\r\n<th>Time</th>\r\n<th>Thread</th>\r\n<th>Level</th>\r\n"
         "<th>Category</th>\r\n" +
         location + "<th>Message</th>\r\n</tr>\r\n";
}

}  // namespace

TEST(XMLLayout, WritesOneElementForAnEvent) {
  LOGXMLLayout layout;
  TestEvent event("db", "INFO", "<a> ]]> & b");
  EXPECT_EQ(layout.format(&event), element(event, "<a> ]]> & b", NO_CONTEXT)) << "not escaped";
  event.setLevel(nullptr);
  EXPECT_EQ(layout.format(&event), element(event, "<a> ]]> & b", NO_CONTEXT, ""));
  EXPECT_EQ(layout.format(nullptr), "");
  EXPECT_EQ(layout.ignoresThrowable(), 0);
  EXPECT_EQ(layout.getContentType(), "text/plain");
  EXPECT_EQ(layout.getHeader(), "");
  EXPECT_EQ(layout.getFooter(), "");
}

TEST(XMLLayout, WritesTheContextElementOnlyWithoutAContext) {
  LOGXMLLayout layout;
  LOGNDC::push("request 7");
  TestEvent event("db", "INFO", "hi");
  EXPECT_EQ(layout.format(&event), element(event, "hi", ""));
  LOGNDC::remove();
}

TEST(XMLLayout, WritesThrowableAndLocationInThisOrder) {
  LOGXMLLayout layout;
  layout.setOption("LocationInfo", "TRUE");
  TestEvent event("db", "INFO", "hi");
  event.setThrowableStrRep("first\n<second>");
  EXPECT_EQ(layout.format(&event),
            element(event, "hi",
                    NO_CONTEXT + "<log4j:throwable><![CDATA[first\n<second>]]></log4j:throwable>"
                                 "\r\n<log4j:locationInfo class=\"?\" method=\"?\" file=\"?\" "
                                 "line=\"?\"/>\r\n"));
}

TEST(XMLLayout, TakesItsOptionByItsExactNameOnly) {
  LOGXMLLayout layout;
  layout.setOption("locationinfo", "true");
  EXPECT_EQ(layout.getLocationInfo(), 0);
  layout.setOption("LocationInfo", "True");
  for (const char* const ignored : {"", "1", "no"}) {
    layout.setOption("LocationInfo", ignored);
    EXPECT_EQ(layout.getLocationInfo(), 1) << ignored;
  }
  layout.setOption("LocationInfo", "FALSE");
  EXPECT_EQ(layout.getLocationInfo(), 0);
  std::string names;
  for (const I18NString& name : layout.getOptionStrings()) {
    names += name.toStdString() + ";";
  }
  EXPECT_EQ(names, "m_LOCATION_INFO_OPTION;");
}

TEST(HTMLLayout, WritesARowWithTheLevelInItsColour) {
  // So that the time since the start is not 0.
  while (std::time(nullptr) <= LOGLoggingEvent::getStartTime()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  LOGHTMLLayout layout;
  const std::string red = "<font color=\"#993300\"><strong>";
  const std::string redEnd = "</strong></font>";
  const std::pair<const char*, std::string> LEVELS[] = {
      {"DEBUG", "<font color=\"#339933\">DEBUG</font>"},
      {"INFO", "INFO"},
      {"WARN", red + "WARN" + redEnd},
      {"ERROR", red + "ERROR" + redEnd},
      {"FATAL", red + "FATAL" + redEnd},
      {"ALL", "ALL"}};
  for (const auto& [name, cell] : LEVELS) {
    TestEvent event("db<1>", name, "a<b> & \"c\"");
    EXPECT_EQ(layout.format(&event), row(event, cell, "a&lt;b&gt; & \"c\""));
  }
  EXPECT_EQ(layout.format(nullptr), "");
  EXPECT_EQ(layout.ignoresThrowable(), 0);
  EXPECT_EQ(layout.getContentType(), "text/html");
}

TEST(HTMLLayout, AddsRowsForContextAndThrowable) {
  LOGHTMLLayout layout;
  layout.setLocationInfo(1);
  LOGNDC::push("request <7>");
  TestEvent event("db<1>", "INFO", "hi");
  event.setThrowableStrRep("first <a>\r\n at x\n\n at y\r");
  EXPECT_EQ(layout.format(&event),
            row(event, "INFO", "hi", "<td>?:?</td>\r\n") +
                "<tr><td bgcolor=\"#EEEEEE\" style=\"font-size : xx-small;\" colspan=\"6\" "
                "title=\"Nested Diagnostic Context\">NDC: request &lt;7&gt;</td></tr>\r\n" +
                THROWABLE_BEGIN + "first &lt;a&gt;" + NEXT_LINE + " at x" + NEXT_LINE + NEXT_LINE +
                " at y</td></tr>\r\n");
  LOGNDC::remove();
}

TEST(HTMLLayout, RefusesAnEventWithoutALevel) {
  LOGHTMLLayout layout;
  TestEvent event("db<1>", "INFO", "hi");
  event.setLevel(nullptr);
  EXPECT_THROW(layout.format(&event), ZEBAssertError);
}

TEST(HTMLLayout, WritesHeaderAndFooterOfAPage) {
  LOGHTMLLayout layout;
  std::string date;
  std::string dateAfter = LOGDate().toString().toStdString();
  std::string text;
  do {  // once more only when the second changed in between
    date = dateAfter;
    text = layout.getHeader().toStdString();
    dateAfter = LOGDate().toString().toStdString();
  } while (date != dateAfter);
  EXPECT_EQ(text, header("Log4J Log Messages", date, ""));

  layout.setTitle("orders");
  layout.setLocationInfo(1);
  TestEvent event("db<1>", "INFO", "hi");
  const I18NString& formatted = layout.format(&event);
  const std::string other = layout.getHeader().toStdString();
  EXPECT_EQ(formatted, row(event, "INFO", "hi", "<td>?:?</td>\r\n")) << "the header has its buffer";
  const std::string marker = "start time ";
  const std::size_t at = other.find(marker) + marker.size();
  EXPECT_EQ(other, header("orders", other.substr(at, date.size()), "<th>File:Line</th>\r\n"));
  EXPECT_EQ(layout.getFooter(), "</table>\r\n<br>\r\n</body></html>\r\n");
}

TEST(MarkupLayouts, NoteAMissingMessageAndLeaveItsPlaceEmpty) {
  const Workplace workplace;
  LOGXMLLayout xml;
  LOGHTMLLayout html;
  TestEvent inXml("db", "INFO", static_cast<LOGObject*>(nullptr));
  TestEvent inHtml("db<1>", "INFO", static_cast<LOGObject*>(nullptr));
  EXPECT_EQ(xml.format(&inXml), element(inXml, "", NO_CONTEXT));
  EXPECT_EQ(html.format(&inHtml), row(inHtml, "INFO", ""));
  for (const char* const name : {"XML", "HTML"}) {
    EXPECT_EQ(Workplace::noted("LOG" + std::string(name) +
                               "Layout::format ---- "
                               "getRenderedMessage returned NULL"),
              1);
  }
}
