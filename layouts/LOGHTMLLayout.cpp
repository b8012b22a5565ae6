#include "layouts/LOGHTMLLayout.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "core/LOGLevel.h"
#include "core/LOGLogLog.h"
#include "core/LOGLoggingEvent.h"
#include "layouts/LOGDate.h"
#include "layouts/LOGLocationInfo.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBUtConvert.h"

using namespace std::string_view_literals;

namespace {

constexpr const char* SOURCE = "LOGHTMLLayout";
constexpr const char* DEFAULT_TITLE = "Log4J Log Messages";
constexpr std::int64_t MILLISECONDS_PER_SECOND = 1000;
/// Before each line of a throwable but the first.
constexpr std::string_view TRACE_PREFIX = "<br>&nbsp;&nbsp;&nbsp;&nbsp;";

I18NString millisecondsSinceStart(const LOGLoggingEvent& event) {
  return ZEBUtConvert::handleCvt((event.getTimeStamp() - LOGLoggingEvent::getStartTime()) *
                                 MILLISECONDS_PER_SECOND);
}

/// The name of the level in its colour: green for DEBUG, bold red from WARN on.
I18NString levelCell(const LOGLevel& level) {
  const std::string_view name = level.toString();
  I18NString cell;
  if (name == "DEBUG") {
    return cell.append("<font color=\"#339933\">"sv).append(name).append("</font>"sv);
  }
  if (level.toInt() >= LOGLevel::WARN_RANK) {
    return cell.append("<font color=\"#993300\"><strong>"sv)
        .append(name)
        .append("</strong></font>"sv);
  }
  return cell.append(name);
}

}  // namespace

const I18NString LOGHTMLLayout::TITLE_OPTION = "Title";
const I18NString LOGHTMLLayout::LOCATION_INFO_OPTION = "LocationInfo";

LOGHTMLLayout::LOGHTMLLayout() : m_title(DEFAULT_TITLE) { instance(SOURCE); }

template <typename... Pieces>
void LOGHTMLLayout::appendLine(I18NString& text, const Pieces&... pieces) const {
  (text.append(pieces), ...);
  text.append(getLineSeparator());
}

void LOGHTMLLayout::appendLines(I18NString& text,
                                std::initializer_list<std::string_view> lines) const {
  for (const std::string_view line : lines) {
    appendLine(text, line);
  }
}

const I18NString& LOGHTMLLayout::getHeader() {
  I18NString text;
  appendLines(text, {"<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01 Transitional//EN\" "
                     "\"http://www.w3.org/TR/html4/loose.dtd\">",
                     "<html>", "<head>"});
  appendLine(text, "<title>"sv, m_title, "</title>"sv);
  appendLines(text,
              {"<style type=\"text/css\">", "<!--",
               "body, table {font-family: arial,sans-serif; font-size: x-small;}",
               "th {background: #336699; color: #FFFFFF; text-align: left;}", "-->", "</style>",
               "</head>", "<body bgcolor=\"#FFFFFF\" topmargin=\"6\" leftmargin=\"6\">",
               "<hr size=\"1\" noshade>", "<br>"});
  appendLine(text, "Log session start time "sv, LOGDate().toString(), "<br>"sv);
  appendLines(text,
              {"<table cellspacing=\"0\" cellpadding=\"4\" border=\"1\" "
               "bordercolor=\"#224466\" width=\"100%\">",
               "<tr>", "<th>Time</th>", "<th>Thread</th>", "<th>Level</th>", "<th>Category</th>"});
  if (m_locationInfo != 0) {
    appendLine(text, "<th>File:Line</th>"sv);
  }
  appendLines(text, {"<th>Message</th>", "</tr>"});
  m_header = std::move(text);
  return m_header;
}

const I18NString& LOGHTMLLayout::getFooter() {
  I18NString text;
  appendLines(text, {"</table>", "<br>", "</body></html>"});
  return keep(std::move(text));
}

const I18NString& LOGHTMLLayout::format(LOGLoggingEvent* event) {
  I18NString text = takeBuffer();
  if (event == nullptr) {
    return keep(std::move(text));
  }
  const LOGLevel* const logLevel = event->getLevel();
  ZEB_ASSERT(logLevel, SOURCE, __LINE__);
  appendLine(text);
  appendLine(text, "<tr>"sv);
  appendCells(text, *event);
  appendLine(text, "</tr>"sv);
  // Deliberate: the rows of context and throwable span six columns, also where there are five.
  if (const I18NString& context = event->getNDC(); !context.isEmpty()) {
    appendLine(text,
               "<tr><td bgcolor=\"#EEEEEE\" style=\"font-size : xx-small;\" colspan=\"6\" "
               "title=\"Nested Diagnostic Context\">NDC: "sv,
               escapeHTMLTags(context), "</td></tr>"sv);
  }
  if (const I18NString& throwable = event->getThrowableStrRep(); !throwable.isEmpty()) {
    text.append(
        "<tr><td bgcolor=\"#993300\" style=\"color:White; font-size : xx-small;\" colspan=\"6\">"sv);
    appendThrowableAsHTML(throwable, text);
    appendLine(text, "</td></tr>"sv);
  }
  return keep(std::move(text));
}

void LOGHTMLLayout::appendCells(I18NString& text, LOGLoggingEvent& event) const {
  const I18NString thread = escapeHTMLTags(event.getThreadName());
  const I18NString category = escapeHTMLTags(event.getLoggerName());
  appendLine(text, "<td>"sv, millisecondsSinceStart(event), "</td>"sv);
  appendLine(text, "<td title=\""sv, thread, " thread\">"sv, thread, "</td>"sv);
  appendLine(text, "<td title=\"Level\">"sv, levelCell(*event.getLevel()), "</td>"sv);
  appendLine(text, "<td title=\""sv, category, " category\">"sv, category, "</td>"sv);
  if (m_locationInfo != 0) {
    const LOGLocationInfo& location = *event.getLocationInformation();
    appendLine(text, "<td>"sv, escapeHTMLTags(location.getFileName()), ":"sv,
               location.getLineNumber(), "</td>"sv);
  }
  const std::unique_ptr<I18NString> message(event.getRenderedMessage());
  if (message == nullptr) {
    LOGLogLog::debug("LOGHTMLLayout::format ---- getRenderedMessage returned NULL\n");
  }
  appendLine(text, "<td title=\"Message\">"sv,
             message == nullptr ? I18NString() : escapeHTMLTags(*message), "</td>"sv);
}

/// Each line of the throwable stands on a line of its own. A line ends with LF, CR LF or CR; the
/// end of the last one is left out.
void LOGHTMLLayout::appendThrowableAsHTML(const I18NString& trace, I18NString& buf) const {
  const std::u16string units = trace.toUtf16();
  std::size_t begin = 0;
  while (true) {
    const std::size_t end = std::min(units.find_first_of(u"\r\n", begin), units.size());
    buf.append(escapeHTMLTags(I18NString(units.data() + begin, end - begin)));
    begin = end + (units.compare(end, 2, u"\r\n") == 0 ? 2 : 1);
    if (begin >= units.size()) {
      return;
    }
    appendLine(buf);
    buf.append(TRACE_PREFIX);
  }
}

/// Deliberate: only the brackets of tags are replaced; ampersands and quotes stay as they are.
I18NString LOGHTMLLayout::escapeHTMLTags(const I18NString& text) const {
  if (text.indexOf("<") == I18NString::NOT_FOUND && text.indexOf(">") == I18NString::NOT_FOUND) {
    return text;
  }
  std::u16string escaped;
  for (const char16_t unit : text.toUtf16()) {
    escaped += unit == u'<' ? u"&lt;" : unit == u'>' ? u"&gt;" : std::u16string(1, unit);
  }
  return I18NString(escaped.data(), escaped.size());
}
