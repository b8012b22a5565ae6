#include "tools/CheckJsonReport.h"

#include <cstdio>
#include <vector>

#include "platform/I18NString.h"

namespace {

std::string text(const std::string& value) {
  std::string quoted = "\"";
  for (const char c : value) {
    if (c == '"' || c == '\\') {
      quoted += '\\';
      quoted += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned int>(c));
      quoted += escape;
    } else {
      quoted += c;
    }
  }
  return quoted + '"';
}

std::string textOrNull(const std::string& value) { return value.empty() ? "null" : text(value); }

std::string truth(bool value) { return value ? "true" : "false"; }

template <typename Item, typename Function>
std::string list(const std::vector<Item>& items, Function toJson) {
  std::string json = "[";
  for (const Item& item : items) {
    json += (json.size() == 1 ? "" : ",") + toJson(item);
  }
  return json + "]";
}

std::string toJson(const CheckFinding& finding) {
  const bool isError = finding.severity == CheckFinding::Severity::Error;
  return "\n{\"line\":" + std::to_string(finding.place.line) +
         ",\"column\":" + std::to_string(finding.place.column) +
         ",\"severity\":" + text(isError ? "error" : "warning") +
         ",\"rule\":" + text(finding.rule) + ",\"text\":" + text(finding.text) +
         ",\"instead\":" + textOrNull(finding.instead) + "}";
}

std::string toJson(const CheckSummary::Route& route) {
  return "{\"levels\":" + list(route.levels, text) + ",\"enabled\":" + truth(route.isEnabled) +
         ",\"to\":" + list(route.destinations, text) + "}";
}

std::string toJson(const CheckSummary::Logger& logger) {
  return "\n{\"name\":" + text(logger.name) + ",\"root\":" + truth(logger.isRoot) +
         ",\"line\":" + std::to_string(logger.line) + ",\"level\":" + textOrNull(logger.level) +
         ",\"inheritedFrom\":" + textOrNull(logger.inheritedFrom) +
         ",\"additivity\":" + truth(logger.isAdditive) + ",\"routes\":" +
         list(logger.routes, [](const CheckSummary::Route& route) { return toJson(route); }) + "}";
}

std::string toJson(const CheckSummary::Appender& appender) {
  return "\n{\"name\":" + text(appender.name) + ",\"class\":" + text(appender.className) +
         ",\"line\":" + std::to_string(appender.line) + ",\"built\":" + truth(appender.isBuilt) +
         ",\"destination\":" + textOrNull(appender.destination) +
         ",\"layout\":" + textOrNull(appender.layout) +
         ",\"sample\":" + textOrNull(appender.sample) +
         ",\"filters\":" + list(appender.filters, text) +
         ",\"threshold\":" + textOrNull(appender.threshold) + "}";
}

}  // namespace

std::string CheckJsonReport::make(const std::string& fileName, const CheckFindings& findings,
                                  int exitCode, const CheckSummary* summary) {
  // The name is what the user typed; all else comes from parsed text.
  std::string json = "{\"document\":" + text(I18NString::fromUtf8(fileName).toStdString()) +
                     ",\"exitCode\":" + std::to_string(exitCode) + ",\"findings\":" +
                     list(findings.all(), [](const CheckFinding& item) { return toJson(item); });
  if (summary != nullptr) {
    json +=
        ",\n\"threshold\":" + text(summary->threshold()) + ",\"loggers\":" +
        list(summary->loggers(), [](const CheckSummary::Logger& item) { return toJson(item); }) +
        ",\n\"appenders\":" +
        list(summary->appenders(), [](const CheckSummary::Appender& item) { return toJson(item); });
  }
  return json + "}\n";
}
