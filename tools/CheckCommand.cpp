#include <CLI/CLI.hpp>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>

#include "platform/ZEBUtTerminal.h"
#include "tools/CheckRules.h"
#include "tools/CheckSummary.h"
#include "tools/CheckTextReport.h"
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
      findings.fail("unreadable", document.errorPlace(), document.errorReason(), "");
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
      CheckTextReport report(std::cout, wantsColours());
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
