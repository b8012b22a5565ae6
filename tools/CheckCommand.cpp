#include "tools/CheckCommand.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <exception>
#include <iostream>

#include "platform/ZEBUtTerminal.h"
#include "tools/CheckComponentRules.h"
#include "tools/CheckDeliveryRules.h"
#include "tools/CheckFileRules.h"
#include "tools/CheckFindings.h"
#include "tools/CheckJsonReport.h"
#include "tools/CheckRehearsal.h"
#include "tools/CheckStructureRules.h"
#include "tools/CheckSummary.h"
#include "tools/CheckTextReport.h"
#include "tools/CheckedDocument.h"
#include "tools/CommandSupport.h"

namespace {

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

}  // namespace

CheckCommand::CheckCommand(CLI::App& app) {
  CLI::App* const command = app.add_subcommand(
      "check", "Tell what a configuration document will do, and what is odd in it");
  command
      ->add_option("--directory", m_directory,
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

int CheckCommand::run() const {
  try {
    return check();
  } catch (const std::exception& failure) {
    CommandSupport::say(failure.what());
    return UNUSABLE;  // 1 would say that the document is fine but for warnings
  }
}

int CheckCommand::check() const {
  const CheckedDocument document(m_document);
  CheckFindings findings(document);
  if (!document.isParsed()) {
    findings.fail("unreadable", document.errorPlace(), document.errorReason(), "");
    report(findings, UNUSABLE, nullptr);
    return UNUSABLE;
  }
  CheckStructureRules structure(document, findings);
  if (!structure.checkRoot()) {
    report(findings, UNUSABLE, nullptr);
    return UNUSABLE;
  }
  structure.checkAll();
  CheckComponentRules(document, findings).checkAll();
  CheckFileRules(document, m_directory, findings).checkAll();
  const CheckRehearsal rehearsal(document);
  CheckDeliveryRules(document, rehearsal, findings).checkAll();
  findings.sort();
  const CheckSummary summary(document, rehearsal);
  const int exitCode = findings.all().empty() ? 0 : WARNINGS;
  report(findings, exitCode, m_quiet ? nullptr : &summary);
  return exitCode;
}

void CheckCommand::report(const CheckFindings& findings, int exitCode,
                          const CheckSummary* summary) const {
  if (m_json) {
    std::cout << CheckJsonReport::make(m_document, findings, exitCode, summary) << std::flush;
    return;
  }
  CheckTextReport report(std::cout, wantsColours());
  if (!m_quiet || !findings.all().empty()) {
    report.write(m_document, findings);
  }
  if (summary != nullptr) {
    report.write(*summary);
  }
  std::cout << std::flush;
}
