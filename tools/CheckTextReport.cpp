#include "tools/CheckTextReport.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "core/LOGLogger.h"
#include "core/LOGManager.h"

namespace {

using Json = nlohmann::ordered_json;

std::string joined(const Json& words) {
  std::string text;
  for (const Json& word : words) {
    text += (text.empty() ? "" : ", ") + word.get<std::string>();
  }
  return text;
}

std::string counted(std::size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

/// Without what a terminal would act on, and without empty lines around.
std::vector<std::string> printableLines(const std::string& text) {
  std::vector<std::string> lines(1);
  char before = '\0';
  for (const char c : text) {
    // The control characters from U+0080 to U+009F.
    const bool isHighControl = before == '\xC2' && static_cast<unsigned char>(c) < 0xA0;
    before = c;
    if (isHighControl) {
      lines.back().back() = '?';
    } else if (c == '\n') {
      lines.emplace_back();
    } else if (c == '\t' || static_cast<unsigned char>(c) >= 0x20) {
      lines.back() += c == '\x7F' ? '?' : c;
    } else if (c != '\r') {
      lines.back() += '?';
    }
  }
  while (lines.size() > 1 && lines.back().empty()) {
    lines.pop_back();
  }
  while (lines.size() > 1 && lines.front().empty()) {
    lines.erase(lines.begin());
  }
  return lines;
}

std::string printable(const std::string& text) {
  std::string line;
  for (const std::string& part : printableLines(text)) {
    line += (line.empty() ? "" : " ") + part;
  }
  return line;
}

}  // namespace

std::string CheckTextReport::styled(Style style, const std::string& text) const {
  if (!m_hasColours) {
    return text;
  }
  const char* const code = style == Style::Bold      ? "1"
                           : style == Style::Warning ? "1;33"
                           : style == Style::Error   ? "1;31"
                                                     : "2";
  return "\x1B[" + std::string(code) + "m" + text + "\x1B[0m";
}

void CheckTextReport::write(const std::string& fileName, const CheckFindings& findings) {
  for (const CheckFinding& finding : findings.all()) {
    std::string place = fileName;
    if (finding.place.line > 0) {
      place +=
          ":" + std::to_string(finding.place.line) + ":" + std::to_string(finding.place.column);
    }
    m_out << styled(Style::Bold, printable(place) + ":") << ' '
          << (finding.isError ? styled(Style::Error, "error:") : styled(Style::Warning, "warning:"))
          << ' ' << printable(finding.text) << " [" << finding.rule << "]\n";
    if (!finding.instead.empty()) {
      m_out << "    instead: " << printable(finding.instead) << '\n';
    }
  }
  const std::vector<CheckFinding>& all = findings.all();
  m_out << styled(Style::Bold, printable(fileName) + ":") << ' '
        << (all.empty()          ? "nothing to complain of"
            : all.back().isError ? "cannot be used"
                                 : counted(all.size(), "warning"))
        << '\n';
}

void CheckTextReport::write(const Json& summary) {
  m_out << '\n' << styled(Style::Bold, "Loggers, and where their events go") << '\n';
  if (summary["threshold"] != "ALL") {
    m_out << "  nothing below " << summary["threshold"].get<std::string>()
          << " is logged by any of them\n";
  }
  for (const Json& logger : summary["loggers"]) {
    writeLogger(logger);
  }
  m_out << '\n' << styled(Style::Bold, "Appenders") << '\n';
  for (const Json& appender : summary["appenders"]) {
    writeAppender(appender);
  }
}

void CheckTextReport::writeLogger(const Json& logger) {
  const LOGLogger* above =
      logger["root"] ? nullptr : LOGManager::exists(logger["name"].get<std::string>());
  std::string indent = "  ";
  while (above != nullptr && (above = above->getParent()) != nullptr) {
    indent += "  ";
  }
  m_out << indent << styled(Style::Bold, printable(logger["name"])) << "  "
        << (logger["level"].is_null() ? "" : logger["level"].get<std::string>());
  if (!logger["inheritedFrom"].is_null()) {
    m_out << " from " << printable(logger["inheritedFrom"]);
  }
  if (!logger["additivity"]) {
    m_out << ", not to the appenders of loggers above";
  }
  m_out << (logger["line"] == 0 ? "  (not in the document)"
                                : "  (line " + logger["line"].dump() + ")")
        << '\n';
  for (const Json& route : logger["routes"]) {
    const std::string where = !route["enabled"]     ? "off"
                              : route["to"].empty() ? "nowhere"
                                                    : joined(route["to"]);
    const std::string line = indent + "    " + joined(route["levels"]) + ": " + printable(where);
    m_out << (route["enabled"] ? line : styled(Style::Quiet, line)) << '\n';
  }
}

void CheckTextReport::writeAppender(const Json& appender) {
  m_out << "  " << styled(Style::Bold, printable(appender["name"])) << "  "
        << printable(appender["class"]) << "  (line " << appender["line"] << ")\n";
  if (!appender["built"]) {
    writeField("writes to", "nowhere: it is not built");
    return;
  }
  writeField("writes to", appender["destination"]);
  writeField("layout", appender["layout"]);
  writeField("sample", appender["sample"]);
  int number = 0;
  for (const Json& filter : appender["filters"]) {
    ++number;
    writeField(number == 1 ? "filters" : "",
               std::to_string(number) + ". " + filter.get<std::string>());
  }
  if (!appender["threshold"].is_null()) {
    writeField("threshold",
               "nothing above " + appender["threshold"].get<std::string>() + " passes");
  }
}

void CheckTextReport::writeField(const char* name, const Json& text) {
  constexpr std::size_t WIDTH = 12;
  std::string label = name;
  for (const std::string& line :
       text.is_null() ? std::vector<std::string>() : printableLines(text)) {
    label.resize(WIDTH, ' ');
    m_out << "      " << styled(Style::Quiet, label) << line << '\n';
    label.clear();
  }
}
