#include "tools/CheckSummary.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "appenders/LOGAsyncAppender.h"
#include "appenders/LOGConsoleAppender.h"
#include "appenders/LOGRollingFileAppender.h"
#include "core/LOGLevel.h"
#include "core/LOGLogger.h"
#include "core/LOGLoggerRepository.h"
#include "core/LOGManager.h"
#include "filters/LOGDenyAllFilter.h"
#include "filters/LOGLevelMatchFilter.h"
#include "filters/LOGLevelRangeFilter.h"
#include "filters/LOGStringMatchFilter.h"
#include "layouts/LOGLayout.h"
#include "layouts/LOGPatternLayout.h"
#include "net/LOGLocalUDPAppender.h"
#include "net/LOGSyslogAppender.h"
#include "net/LOGTCPSocketAppender.h"
#include "tools/CheckWords.h"

namespace {

using Passes = CheckRehearsal::Passes;

std::string nameOf(const LOGAppenderSkeleton& appender) { return appender.getName().toStdString(); }

std::string destinationOf(LOGRollingFileAppender& appender) {
  const std::string size = std::to_string(appender.getMaximumFileSize());
  const int backups = appender.getMaxBackupIndex();
  std::string text = "; at " + size + " bytes ";
  text += backups < 1 ? "it is emptied" : "it becomes backup 1 of " + std::to_string(backups);
  if (appender.getAddProcID() == 1) {
    text += "; the process id goes into the name when the program configures with process ids";
  }
  return text;
}

std::string destinationOf(LOGFileAppender& appender) {
  if (appender.getFile().isEmpty()) {
    return "nowhere: it has no File";
  }
  std::string text = "the file " + appender.getFile().toStdString() + ", which is " +
                     (appender.getAppend() == 1 ? "appended to" : "emptied when it is opened");
  auto* const rolling = dynamic_cast<LOGRollingFileAppender*>(&appender);
  return rolling == nullptr ? text : text + destinationOf(*rolling);
}

std::string destinationOf(LOGAsyncAppender& appender) {
  std::vector<std::string> names;
  for (const LOGAppenderSkeleton* const attached : appender.getAAI()->snapshot()) {
    names.push_back(nameOf(*attached));
  }
  std::string text;
  for (const std::string& name : names) {
    text += (text.empty() ? "" : ", ") + name;
  }
  return "a queue of " + std::to_string(LOGAsyncAppender::DEFAULT_BUFFER_SIZE) +
         " events, from which a thread passes them on to " + (names.empty() ? "nobody" : text);
}

/// The host stands in the document only, because setting it would look it up.
std::string hostOf(const ZEBIDOM_Element& appender) {
  std::string host;
  for (const ZEBIDOM_Element& param : CheckedDocument::children(appender, "param")) {
    const std::string value = CheckedDocument::attribute(param, "value");
    if (CheckedDocument::attribute(param, "name") == "Host" && !value.empty()) {
      host = value;
    }
  }
  return host.empty() ? "this machine" : host;
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
    return "the syslog daemon at UDP port 514 of " + hostOf(known.element) + ", facility " +
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

std::string layoutOf(const LOGAppenderSkeleton& appender, const ZEBIDOM_Element& element) {
  const auto layouts = CheckedDocument::children(element, "layout");
  const LOGLayout* const layout = appender.getLayout();
  if (layout == nullptr || layouts.empty()) {
    return "";
  }
  // The simple layout has the class of the base.
  std::string name = layout->instanceOf().toStdString();
  name = name == "LOGLayout" ? "LOGSimpleLayout" : name;
  const auto* const pattern = dynamic_cast<const LOGPatternLayout*>(layout);
  return pattern == nullptr
             ? name
             : name + " " + CheckWords::quoted(pattern->getConversionPattern().toStdString());
}

std::string inWords(LOGFilter* filter) {
  if (filter == nullptr) {
    return "LOGLogUVDDyeTraceFilter: decides by the code of its library";
  }
  const std::string name = filter->instanceOf().toStdString() + ": ";
  if (const auto* const range = dynamic_cast<const LOGLevelRangeFilter*>(filter)) {
    const LOGLevel* const least = range->getLevelMin();
    const LOGLevel* const most = range->getLevelMax();
    std::vector<std::string> denied;
    if (least != nullptr) {
      denied.push_back(std::string("below ") + least->toString());
    }
    if (most != nullptr) {
      denied.push_back(std::string("above ") + most->toString());
    }
    return name +
           (denied.empty() ? "decides nothing" : "denies what is " + CheckWords::either(denied));
  }
  if (const auto* const level = dynamic_cast<const LOGLevelMatchFilter*>(filter)) {
    const std::unique_ptr<I18NString> wanted(level->getLevelToMatch());
    return name + (wanted == nullptr ? "decides nothing" : "accepts " + wanted->toStdString());
  }
  if (const auto* const text = dynamic_cast<const LOGStringMatchFilter*>(filter)) {
    const std::string wanted = text->getStringToMatch().toStdString();
    return name + (wanted.empty() ? "decides nothing"
                                  : "accepts messages that contain " + CheckWords::quoted(wanted));
  }
  return name + "denies everything";
}

std::string inWords(const CheckRehearsal::Delivery& delivery) {
  std::string text;
  for (const LOGAppenderSkeleton* const appender : delivery.path) {
    text += (text.empty() ? "" : " > ") + nameOf(*appender);
  }
  return delivery.condition.empty() ? text : text + " if " + delivery.condition;
}

}  // namespace

CheckSummary::CheckSummary(const CheckedDocument& document, const CheckRehearsal& rehearsal) {
  const LOGLevel* const threshold = LOGManager::getLoggerRepository()->getThreshold();
  m_threshold = threshold == nullptr ? "ALL" : threshold->toString();
  addLoggers(rehearsal);
  std::map<std::pair<int, int>, const CheckRehearsal::Appender*> built;
  for (const CheckRehearsal::Appender& known : rehearsal.appenders()) {
    built[{known.element.getLine(), known.element.getColumn()}] = &known;
  }
  for (const ZEBIDOM_Element& element : document.elements("appender")) {
    const auto known = built.find({element.getLine(), element.getColumn()});
    addAppender(element, known == built.end() ? nullptr : known->second);
  }
}

void CheckSummary::addLoggers(const CheckRehearsal& rehearsal) {
  for (const CheckRehearsal::Logger& known : rehearsal.loggers()) {
    Logger logger{};
    logger.isRoot = known.isRoot;
    logger.name = known.isRoot ? "root" : known.logger->getName().toStdString();
    logger.line = known.element.isNull() ? 0 : known.element.getLine();
    const LOGLogger* owner = known.logger;
    while (owner->getLevel() == nullptr && owner->getParent() != nullptr) {
      owner = owner->getParent();
    }
    const LOGLevel* const level = known.logger->getChainedLevel();
    logger.level = level == nullptr ? "" : level->toString();
    if (owner != known.logger) {
      logger.inheritedFrom =
          owner->getParent() == nullptr ? "root" : owner->getName().toStdString();
    }
    for (const LOGLogger* stage = known.logger->getParent(); stage != nullptr;
         stage = stage->getParent()) {
      ++logger.depth;
    }
    logger.isAdditive = known.logger->getAdditivity() != 0;
    logger.routes = routesOf(*known.logger, rehearsal);
    m_loggers.push_back(std::move(logger));
  }
  std::sort(m_loggers.begin(), m_loggers.end(), [](const Logger& a, const Logger& b) {
    return a.isRoot != b.isRoot ? a.isRoot : a.name < b.name;
  });
}

std::vector<CheckSummary::Route> CheckSummary::routesOf(LOGLogger& logger,
                                                        const CheckRehearsal& rehearsal) {
  std::vector<Route> routes;
  for (const std::string& name : CheckWords::eventLevels()) {
    LOGLevel& level = CheckRehearsal::level(name);
    Route route{{name}, {}, logger.isEnabledFor(&level) != 0};
    for (const CheckRehearsal::Delivery& delivery : rehearsal.deliveries(logger, level)) {
      route.destinations.push_back(inWords(delivery));
      proposeSample(delivery, logger, level);
    }
    const bool isAsBefore = !routes.empty() && routes.back().destinations == route.destinations &&
                            routes.back().isEnabled == route.isEnabled;
    if (isAsBefore) {
      routes.back().levels.push_back(name);
    } else {
      routes.push_back(std::move(route));
    }
  }
  return routes;
}

/// An event that certainly arrives, of a logger with a name and of the level INFO, shows best what
/// a layout does.
void CheckSummary::proposeSample(const CheckRehearsal::Delivery& delivery, LOGLogger& logger,
                                 LOGLevel& level) {
  const int fitness = (delivery.passes == Passes::Yes ? 4 : 0) +
                      (logger.getParent() == nullptr ? 0 : 2) +
                      (level.toInt() == LOGLevel::INFO_RANK ? 1 : 0);
  Sample& chosen = m_samples[delivery.path.back()];
  if (fitness > chosen.fitness) {
    chosen = {&logger, &level, fitness};
  }
}

void CheckSummary::addAppender(const ZEBIDOM_Element& element,
                               const CheckRehearsal::Appender* known) {
  Appender appender{};
  appender.name = CheckedDocument::attribute(element, "name");
  appender.className = CheckedDocument::classOf(element);
  appender.line = element.getLine();
  if (known != nullptr) {
    appender.isBuilt = true;
    appender.destination = destinationOf(*known);
    appender.layout = layoutOf(*known->appender, element);
    const Sample& sample = m_samples[known->appender];
    if (sample.logger != nullptr) {
      appender.sample = CheckRehearsal::sample(*known->appender, *sample.logger, *sample.level);
    }
    for (LOGFilter* const filter : CheckRehearsal::filters(*known)) {
      appender.filters.push_back(inWords(filter));
    }
    const LOGLevel* const threshold = known->appender->getThreshold();
    appender.threshold = threshold == nullptr ? "" : threshold->toString();
  }
  m_appenders.push_back(std::move(appender));
}
