#include "tools/CheckTextReport.h"

#include <ostream>

namespace {

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) {
    text += (text.empty() ? "" : ", ") + word;
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
    const bool isError = finding.severity == CheckFinding::Severity::Error;
    m_out << styled(Style::Bold, printable(place) + ":") << ' '
          << (isError ? styled(Style::Error, "error:") : styled(Style::Warning, "warning:")) << ' '
          << printable(finding.text) << " [" << finding.rule << "]\n";
    if (!finding.instead.empty()) {
      m_out << "    instead: " << printable(finding.instead) << '\n';
    }
  }
  const std::size_t errors = findings.count(CheckFinding::Severity::Error);
  const std::size_t warnings = findings.count(CheckFinding::Severity::Warning);
  m_out << styled(Style::Bold, printable(fileName) + ":") << ' '
        << (errors > 0     ? "cannot be used"
            : warnings > 0 ? counted(warnings, "warning")
                           : "nothing to complain of")
        << '\n';
}

void CheckTextReport::write(const CheckSummary& summary) {
  m_out << '\n' << styled(Style::Bold, "Loggers, and where their events go") << '\n';
  if (summary.threshold() != "ALL") {
    m_out << "  nothing below " << summary.threshold() << " is logged by any of them\n";
  }
  for (const CheckSummary::Logger& logger : summary.loggers()) {
    writeLogger(logger);
  }
  m_out << '\n' << styled(Style::Bold, "Appenders") << '\n';
  for (const CheckSummary::Appender& appender : summary.appenders()) {
    writeAppender(appender);
  }
}

void CheckTextReport::writeLogger(const CheckSummary::Logger& logger) {
  const std::string indent(2 + 2 * static_cast<std::size_t>(logger.depth), ' ');
  m_out << indent << styled(Style::Bold, printable(logger.name)) << "  " << logger.level;
  if (!logger.inheritedFrom.empty()) {
    m_out << " from " << printable(logger.inheritedFrom);
  }
  if (!logger.isAdditive) {
    m_out << ", not to the appenders of loggers above";
  }
  m_out << (logger.line == 0 ? "  (not in the document)"
                             : "  (line " + std::to_string(logger.line) + ")")
        << '\n';
  for (const CheckSummary::Route& route : logger.routes) {
    const std::string where = !route.isEnabled             ? "off"
                              : route.destinations.empty() ? "nowhere"
                                                           : joined(route.destinations);
    const std::string line = indent + "    " + joined(route.levels) + ": " + printable(where);
    m_out << (route.isEnabled ? line : styled(Style::Quiet, line)) << '\n';
  }
}

void CheckTextReport::writeAppender(const CheckSummary::Appender& appender) {
  m_out << "  " << styled(Style::Bold, printable(appender.name)) << "  "
        << printable(appender.className) << "  (line " << appender.line << ")\n";
  if (!appender.isBuilt) {
    writeField("writes to", "nowhere: it is not built");
    return;
  }
  writeField("writes to", appender.destination);
  if (!appender.layout.empty()) {
    writeField("layout", appender.layout);
  }
  if (!appender.sample.empty()) {
    writeField("sample", appender.sample);
  }
  for (std::size_t i = 0; i < appender.filters.size(); ++i) {
    writeField(i == 0 ? "filters" : "", std::to_string(i + 1) + ". " + appender.filters[i]);
  }
  if (!appender.threshold.empty()) {
    writeField("threshold", "nothing above " + appender.threshold + " passes");
  }
}

void CheckTextReport::writeField(const char* name, const std::string& text) {
  constexpr std::size_t WIDTH = 12;
  std::string label = name;
  for (const std::string& line : printableLines(text)) {
    label.resize(WIDTH, ' ');
    m_out << "      " << styled(Style::Quiet, label) << line << '\n';
    label.clear();
  }
}
