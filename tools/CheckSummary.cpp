#include "tools/CheckSummary.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "appenders/LOGAsyncAppender.h"
#include "appenders/LOGConsoleAppender.h"
#include "appenders/LOGRollingFileAppender.h"
#include "core/LOGLevel.h"
#include "core/LOGLogger.h"
#include "core/LOGLoggerRepository.h"
#include "core/LOGLoggingEvent.h"
#include "core/LOGManager.h"
#include "filters/LOGFilter.h"
#include "layouts/LOGLayout.h"
#include "layouts/LOGPatternLayout.h"
#include "net/LOGLocalUDPAppender.h"
#include "net/LOGSyslogAppender.h"
#include "net/LOGTCPSocketAppender.h"
#include "tools/FilterView.h"

namespace {

using Json = nlohmann::ordered_json;
using Delivery = CheckRehearsal::Delivery;

Json textOrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

std::string nameOf(const LOGAppenderSkeleton& appender) { return appender.getName().toStdString(); }

std::string destinationOf(LOGFileAppender& appender) {
  if (appender.getFile().isEmpty()) {
    return "nowhere: it has no File";
  }
  std::string text = "the file " + appender.getFile().toStdString() + ", which is " +
                     (appender.getAppend() == 1 ? "appended to" : "emptied when it is opened");
  if (const auto* const rolling = dynamic_cast<const LOGRollingFileAppender*>(&appender)) {
    const int backups = rolling->getMaxBackupIndex();
    text += "; at " + std::to_string(rolling->getMaximumFileSize()) + " bytes " +
            (backups < 1 ? "it is emptied" : "it becomes backup 1 of " + std::to_string(backups));
    text += rolling->getAddProcID() != 1
                ? ""
                : "; the process id goes into the name when the program configures with process "
                  "ids";
  }
  return text;
}

std::string destinationOf(LOGAsyncAppender& appender) {
  std::string names;
  for (const LOGAppenderSkeleton* const attached : appender.getAAI()->snapshot()) {
    names += (names.empty() ? "" : ", ") + nameOf(*attached);
  }
  return "a queue of " + std::to_string(LOGAsyncAppender::DEFAULT_BUFFER_SIZE) +
         " events, from which a thread passes them on to " + (names.empty() ? "nobody" : names);
}

std::string destinationOf(const CheckRehearsal::Appender& known) {
  LOGAppenderSkeleton& appender = *known.appender;
  if (auto* const file = dynamic_cast<LOGFileAppender*>(&appender)) {
    return destinationOf(*file);
  }
  if (auto* const async = dynamic_cast<LOGAsyncAppender*>(&appender)) {
    return destinationOf(*async);
  }
  if (const auto* const syslog = dynamic_cast<const LOGSyslogAppender*>(&appender)) {
    const std::string facility = syslog->getFacility().toStdString();
    // The host stands in the document only, because setting it would look it up.
    const CheckElement host = known.element.param("Host");
    return "the syslog daemon at UDP port 514 of " +
           (host.isNull() ? "this machine" : host.get("value")) + ", facility " +
           facility.substr(0, facility.size() - 1);
  }
  if (const auto* const udp = dynamic_cast<const LOGLocalUDPAppender*>(&appender)) {
    return "a listener at UDP port " + std::to_string(udp->getPort()) +
           " of this machine, as records of logger and message";
  }
  if (dynamic_cast<const LOGTCPSocketAppender*>(&appender) != nullptr) {
    return "nowhere: it only keeps its options";
  }
  return "standard output";
}

std::string layoutOf(const CheckRehearsal::Appender& known) {
  const LOGLayout* const layout = known.appender->getLayout();
  if (layout == nullptr || known.element.children("layout").empty()) {
    return "";
  }
  // The simple layout has the class of the base.
  const std::string name = layout->instanceOf().toStdString();
  const auto* const pattern = dynamic_cast<const LOGPatternLayout*>(layout);
  return name == "LOGLayout"  ? "LOGSimpleLayout"
         : pattern == nullptr ? name
                              : name + " \"" + pattern->getConversionPattern().toStdString() + "\"";
}

std::string inWords(const Delivery& delivery) {
  std::string text;
  for (const LOGAppenderSkeleton* const appender : delivery.path) {
    text += (text.empty() ? "" : " > ") + nameOf(*appender);
  }
  return delivery.condition.empty() ? text : text + " if " + delivery.condition;
}

class Summary {
 public:
  explicit Summary(const CheckRehearsal& rehearsal) : m_rehearsal(rehearsal) {}

  Json loggers() {
    Json loggers = Json::array();
    for (const CheckRehearsal::Logger& known : m_rehearsal.loggers()) {
      loggers.push_back(toJson(known));
    }
    std::sort(loggers.begin(), loggers.end(), [](const Json& a, const Json& b) {
      return a["root"] != b["root"] ? a["root"].get<bool>() : a["name"] < b["name"];
    });
    return loggers;
  }

  /// After loggers(), which chooses the samples.
  Json appenders(const CheckedDocument& document) {
    Json appenders = Json::array();
    for (const CheckElement& element : document.elements("appender")) {
      const auto& built = m_rehearsal.appenders();
      const auto known = std::find_if(
          built.begin(), built.end(),
          [&](const CheckRehearsal::Appender& appender) { return appender.element == element; });
      appenders.push_back(toJson(element, known == built.end() ? nullptr : &*known));
    }
    return appenders;
  }

 private:
  /// The event that shows what an appender's layout writes.
  struct Sample {
    LOGLogger* logger = nullptr;
    LOGLevel* level = nullptr;
    int fitness = -1;
  };

  Json toJson(const CheckRehearsal::Logger& known) {
    const LOGLogger* owner = known.logger;  // of the level
    while (owner->getLevel() == nullptr && owner->getParent() != nullptr) {
      owner = owner->getParent();
    }
    const auto name = [](const LOGLogger& logger) {
      return logger.getParent() == nullptr ? "root" : logger.getName().toStdString();
    };
    const LOGLevel* const level = known.logger->getChainedLevel();
    return {{"name", name(*known.logger)},
            {"root", known.isRoot},
            {"line", known.element.line()},
            {"level", level == nullptr ? Json() : Json(level->toString())},
            {"inheritedFrom", owner == known.logger ? Json() : Json(name(*owner))},
            {"additivity", known.logger->getAdditivity() != 0},
            {"routes", routesOf(*known.logger)}};
  }

  /// Levels whose events go to the same places are one route.
  Json routesOf(LOGLogger& logger) {
    Json routes = Json::array();
    for (LOGLevel* const level : CheckRehearsal::levels()) {
      Json destinations = Json::array();
      for (const Delivery& delivery : m_rehearsal.deliveries(logger, *level)) {
        destinations.push_back(inWords(delivery));
        proposeSample(delivery, logger, *level);
      }
      const bool isEnabled = logger.isEnabledFor(level) != 0;
      if (routes.empty() || routes.back()["to"] != destinations ||
          routes.back()["enabled"] != isEnabled) {
        routes.push_back({{"levels", Json::array()}, {"enabled", isEnabled}, {"to", destinations}});
      }
      routes.back()["levels"].push_back(level->toString());
    }
    return routes;
  }

  /// An event that certainly arrives, of a logger with a name and of the level INFO, shows best
  /// what a layout does.
  void proposeSample(const Delivery& delivery, LOGLogger& logger, LOGLevel& level) {
    const int fitness = (delivery.passes == CheckRehearsal::Passes::Yes ? 4 : 0) +
                        (logger.getParent() == nullptr ? 0 : 2) +
                        (level.toInt() == LOGLevel::INFO_RANK ? 1 : 0);
    Sample& chosen = m_samples[delivery.path.back()];
    if (fitness > chosen.fitness) {
      chosen = {&logger, &level, fitness};
    }
  }

  std::string sampleOf(LOGAppenderSkeleton& appender) {
    const Sample& sample = m_samples[&appender];
    auto* const layout = const_cast<LOGLayout*>(appender.getLayout());
    if (layout == nullptr || sample.logger == nullptr) {
      return "";
    }
    const I18NString message("an example message");
    LOGLoggingEvent event(sample.logger, sample.level, LOGMessageText{message});
    return layout->format(&event).toStdString();
  }

  Json toJson(const CheckElement& element, const CheckRehearsal::Appender* known) {
    Json appender{
        {"name", element.get("name")}, {"class", element.className()}, {"line", element.line()},
        {"built", known != nullptr},   {"destination", nullptr},       {"layout", nullptr},
        {"sample", nullptr},           {"filters", Json::array()},     {"threshold", nullptr}};
    if (known == nullptr) {
      return appender;
    }
    appender["destination"] = destinationOf(*known);
    appender["layout"] = textOrNull(layoutOf(*known));
    appender["sample"] = textOrNull(sampleOf(*known->appender));
    for (LOGFilter* const filter : CheckRehearsal::filters(*known)) {
      const std::string name =
          filter == nullptr ? FilterView::LOADED_FILTER : filter->instanceOf().toStdString();
      const std::string action = FilterView(filter).action();
      appender["filters"].push_back(name + ": " + (action.empty() ? "decides nothing" : action));
    }
    if (const LOGLevel* const threshold = known->appender->getThreshold()) {
      appender["threshold"] = threshold->toString();
    }
    return appender;
  }

  const CheckRehearsal& m_rehearsal;
  std::map<const LOGAppenderSkeleton*, Sample> m_samples;
};

}  // namespace

Json CheckSummary::of(const CheckedDocument& document, const CheckRehearsal& rehearsal) {
  const LOGLevel* const threshold = LOGManager::getLoggerRepository()->getThreshold();
  Summary summary(rehearsal);
  Json members;
  members["threshold"] = threshold == nullptr ? "ALL" : threshold->toString();
  members["loggers"] = summary.loggers();
  members["appenders"] = summary.appenders(document);
  return members;
}
