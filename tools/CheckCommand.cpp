#include <CLI/CLI.hpp>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>

#include "core/LOGLogger.h"
#include "core/LOGManager.h"
#include "platform/ZEBUtTerminal.h"
#include "tools/CheckRules.h"
#include "tools/CheckSummary.h"
#include "tools/CommandSupport.h"
#include "tools/Subcommand.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* NOTES =
    R"(Nothing that DOCUMENT names is opened, made, loaded or looked up. What is shown is what the
library itself has made of it: loggers, levels, filters, and samples that the layouts wrote.

Exit codes:
  0  nothing to complain of
  1  warnings: legal, but probably not meant
  2  the document cannot be used, or bad arguments
  5  the report cannot be written)";

/// Colours are for terminals, unless the user has asked for none.
bool wantsColours() {
  const char* const noColour = std::getenv("NO_COLOR");
  return ZEBUtTerminal::isStandardOutput() && (noColour == nullptr || *noColour == '\0');
}

Json jsonOf(const std::string& fileName, const CheckFindings& findings, int exitCode,
            const Json* summary) {
  // The name is what the user typed; all else comes from parsed text.
  Json report{{"document", I18NString::fromUtf8(fileName).toStdString()},
              {"exitCode", exitCode},
              {"findings", Json::array()}};
  for (const CheckFinding& finding : findings.all()) {
    report["findings"].push_back(
        {{"line", finding.place.line},
         {"column", finding.place.column},
         {"severity", finding.isError ? "error" : "warning"},
         {"rule", finding.rule},
         {"text", finding.text},
         {"instead", finding.instead.empty() ? Json() : Json(finding.instead)}});
  }
  if (summary != nullptr) {
    report.update(*summary);
  }
  return report;
}

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

/// Tells people what was found and what a document will do. With colours it uses the escape
/// sequences of terminals.
class TextReport {
 public:
  TextReport(std::ostream& out, bool hasColours) : m_out(out), m_hasColours(hasColours) {}

  void write(const std::string& fileName, const CheckFindings& findings) {
    for (const CheckFinding& finding : findings.all()) {
      std::string place = fileName;
      if (finding.place.line > 0) {
        place +=
            ":" + std::to_string(finding.place.line) + ":" + std::to_string(finding.place.column);
      }
      m_out << styled(Style::Bold, printable(place) + ":") << ' '
            << (finding.isError ? styled(Style::Error, "error:")
                                : styled(Style::Warning, "warning:"))
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

  /// The members of a CheckSummary.
  void write(const Json& summary) {
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

 private:
  enum class Style { Bold, Warning, Error, Quiet };

  std::string styled(Style style, const std::string& text) const {
    if (!m_hasColours) {
      return text;
    }
    const char* const code = style == Style::Bold      ? "1"
                             : style == Style::Warning ? "1;33"
                             : style == Style::Error   ? "1;31"
                                                       : "2";
    return "\x1B[" + std::string(code) + "m" + text + "\x1B[0m";
  }

  void writeLogger(const Json& logger) {
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

  void writeAppender(const Json& appender) {
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

  /// Nothing for null.
  void writeField(const char* name, const Json& text) {
    constexpr std::size_t WIDTH = 12;
    std::string label = name;
    for (const std::string& line :
         text.is_null() ? std::vector<std::string>() : printableLines(text)) {
      label.resize(WIDTH, ' ');
      m_out << "      " << styled(Style::Quiet, label) << line << '\n';
      label.clear();
    }
  }

  std::ostream& m_out;
  const bool m_hasColours;
};

class CheckCommand : public Subcommand {
 public:
  explicit CheckCommand(CLI::App& app) {
    CLI::App* const command = app.add_subcommand(
        "check", "Tell what a configuration document will do, and what is odd in it");
    command
        ->add_option(
            "--directory", m_directory,
            "Where the program will run, from which relative file names are taken; without "
            "it, here")
        ->type_name("DIRECTORY");
    command->add_flag("--json", m_json, "Print one JSON object");
    command->add_flag("--quiet", m_quiet, "Print what is odd and nothing else");
    command->add_option("DOCUMENT", m_document, "The configuration document; - is standard input")
        ->required()
        ->type_name("");
    command->footer(NOTES);
  }

  int run() const override {
    try {
      return check();
    } catch (const std::exception& failure) {
      CommandSupport::say(failure.what());
      return UNUSABLE_DOCUMENT;  // 1 would say that the document is fine but for warnings
    }
  }

 private:
  int check() const {
    const CheckedDocument document(m_document);
    CheckFindings findings(document);
    if (!document.isParsed()) {
      findings.add({true, "unreadable", document.errorPlace(), document.errorReason(), ""});
    }
    if (!document.isParsed() || !CheckRules::checkRoot(findings)) {
      report(findings, UNUSABLE_DOCUMENT, nullptr);
      return UNUSABLE_DOCUMENT;
    }
    CheckRules::checkStructure(findings);
    CheckRules::checkComponents(findings);
    CheckRules::checkFiles(m_directory, findings);
    const CheckRehearsal rehearsal(document);
    CheckRules::checkDelivery(rehearsal, findings);
    findings.sort();
    const Json summary = CheckSummary::of(document, rehearsal);
    const int exitCode = findings.all().empty() ? 0 : WARNINGS;
    report(findings, exitCode, m_quiet ? nullptr : &summary);
    return exitCode;
  }

  void report(const CheckFindings& findings, int exitCode, const Json* summary) const {
    if (m_json) {
      std::cout << jsonOf(m_document, findings, exitCode, summary) << '\n';
    } else {
      TextReport report(std::cout, wantsColours());
      if (!m_quiet || !findings.all().empty()) {
        report.write(m_document, findings);
      }
      if (summary != nullptr) {
        report.write(*summary);
      }
    }
    std::cout << std::flush;
  }

  std::string m_document;
  std::string m_directory = ".";
  bool m_json = false;
  bool m_quiet = false;
};

}  // namespace

std::unique_ptr<Subcommand> Subcommand::check(CLI::App& app) {
  return std::make_unique<CheckCommand>(app);
}
