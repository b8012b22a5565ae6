#include "tools/CheckDeliveryRules.h"

#include <algorithm>
#include <memory>
#include <set>
#include <utility>

#include "appenders/LOGAppenderSkeleton.h"
#include "appenders/LOGAsyncAppender.h"
#include "config/LOGComponentFactory.h"
#include "core/LOGLevel.h"
#include "core/LOGLogger.h"
#include "core/LOGLoggerRepository.h"
#include "core/LOGManager.h"
#include "filters/LOGDenyAllFilter.h"
#include "filters/LOGLevelMatchFilter.h"
#include "filters/LOGLevelRangeFilter.h"
#include "filters/LOGStringMatchFilter.h"
#include "tools/CheckPattern.h"
#include "tools/CheckWords.h"

namespace {

using Passes = CheckRehearsal::Passes;

std::string nameOf(const CheckRehearsal::Logger& logger) {
  return logger.isRoot ? "the root logger"
                       : "the logger " + CheckWords::quoted(logger.logger->getName().toStdString());
}

bool isOff(const LOGLogger& logger) {
  return logger.isEnabledFor(&CheckRehearsal::level(CheckWords::eventLevels().back())) == 0;
}

/// The nearest logger from here on whose events go no further up, if not the root logger.
const LOGLogger& lastStage(const LOGLogger& logger) {
  const LOGLogger* stage = &logger;
  while (stage->getAdditivity() != 0 && stage->getParent() != nullptr) {
    stage = stage->getParent();
  }
  return *stage;
}

bool reachesAny(const LOGLogger& logger) {
  for (const LOGLogger* stage = &logger; stage != nullptr; stage = stage->getParent()) {
    if (!stage->snapshotOfAppenders().empty()) {
      return true;
    }
    if (stage->getAdditivity() == 0) {
      return false;
    }
  }
  return false;
}

}  // namespace

void CheckDeliveryRules::checkAll() {
  checkLoggersWithoutAppender();
  for (const Logger& logger : m_rehearsal.loggers()) {
    checkThreshold(logger);
    checkDuplicates(logger);
  }
  checkCircles();
  for (const Appender& appender : m_rehearsal.appenders()) {
    checkFilters(appender);
  }
  checkReached();
  checkWidths();
}

void CheckDeliveryRules::checkLoggersWithoutAppender() {
  const bool rootHasNone = LOGManager::getRootLogger()->snapshotOfAppenders().empty();
  const std::vector<Logger>& loggers = m_rehearsal.loggers();
  const bool areAnyLost = std::any_of(loggers.begin(), loggers.end(), [](const Logger& logger) {
    return !reachesAny(*logger.logger) && !isOff(*logger.logger);
  });
  for (const Logger& logger : loggers) {
    if (reachesAny(*logger.logger) || (logger.isRoot ? !areAnyLost : isOff(*logger.logger))) {
      continue;
    }
    if (logger.isRoot) {
      m_findings.warn(
          "no-appender", logger.element.isNull() ? m_document.root() : logger.element, "",
          "the root logger has no appender: events of loggers that have none of their own are lost",
          "<appender-ref ref=\"...\"/> in <root>");
    } else if (const LOGLogger& last = lastStage(*logger.logger);
               &last == logger.logger || !rootHasNone) {
      const std::string name = CheckWords::quoted(last.getName().toStdString());
      m_findings.warn("no-appender", logger.element, "",
                      "events of " + nameOf(logger) + " reach no appender: it has none, and " +
                          (&last == logger.logger
                               ? "its additivity is off"
                               : "the additivity of the logger " + name + " above it is off"),
                      "an <appender-ref>, or additivity=\"true\"");
    }
  }
}

void CheckDeliveryRules::checkThreshold(const Logger& logger) {
  const LOGLevel* const threshold = LOGManager::getLoggerRepository()->getThreshold();
  const LOGLevel* const level = logger.logger->getLevel();
  if (logger.element.isNull() || threshold == nullptr || level == nullptr ||
      level->toInt() >= threshold->toInt()) {
    return;
  }
  for (const ZEBIDOM_Element& child : CheckedDocument::children(logger.element)) {
    const std::string tag = CheckedDocument::tag(child);
    // ALL sets no bound of its own, so that it contradicts nothing.
    if ((tag == "level" || tag == "priority") && level->toInt() != LOGLevel::ALL_RANK) {
      m_findings.warn("below-threshold", child, "value",
                      std::string("the level ") + level->toString() + " of " + nameOf(logger) +
                          " is below the threshold " + threshold->toString() +
                          " of the document, which no event below passes",
                      std::string("threshold=\"") + level->toString() + "\" in the root element");
      return;
    }
  }
}

/// Whether one event can come to the appender on two ways, past the filters on them.
bool CheckDeliveryRules::arrivesTwice(const Logger& logger,
                                      const LOGAppenderSkeleton* appender) const {
  const std::vector<std::string>& levels = CheckWords::eventLevels();
  return std::any_of(levels.begin(), levels.end(), [&](const std::string& level) {
    const auto deliveries = m_rehearsal.deliveries(*logger.logger, CheckRehearsal::level(level));
    return std::count_if(deliveries.begin(), deliveries.end(), [&](const auto& delivery) {
             return delivery.path.back() == appender;
           }) > 1;
  });
}

void CheckDeliveryRules::checkDuplicates(const Logger& logger) {
  if (logger.element.isNull()) {
    return;
  }
  // What the ancestors reach, then what the logger's own references add, one by one.
  std::set<LOGAppenderSkeleton*> reached;
  const LOGLogger* stage = logger.logger;
  while (stage->getAdditivity() != 0 && stage->getParent() != nullptr) {
    stage = stage->getParent();
    for (const CheckRehearsal::Delivery& way : CheckRehearsal::ways(*stage)) {
      reached.insert(way.path.back());
    }
  }
  std::set<LOGAppenderSkeleton*> own;
  for (const CheckRehearsal::Delivery& way : CheckRehearsal::ways(*logger.logger)) {
    const bool isTwiceHere = !own.insert(way.path.back()).second;
    if ((!isTwiceHere && reached.count(way.path.back()) == 0) ||
        !arrivesTwice(logger, way.path.back())) {
      continue;
    }
    const std::string first = way.path.front()->getName().toStdString();
    ZEBIDOM_Element reference = logger.element;
    for (const ZEBIDOM_Element& child : CheckedDocument::children(logger.element, "appender-ref")) {
      reference = CheckedDocument::attribute(child, "ref") == first ? child : reference;
    }
    m_findings.warn(
        "twice", reference, "ref",
        "events of " + nameOf(logger) + " reach the appender " +
            CheckWords::quoted(way.path.back()->getName().toStdString()) + " twice: " +
            (isTwiceHere ? "by two references here" : "here, and through a logger above it"),
        isTwiceHere ? "one reference" : "additivity=\"false\", or no reference here");
  }
}

void CheckDeliveryRules::checkCircles() {
  std::set<std::string> built;
  for (const Appender& appender : m_rehearsal.appenders()) {
    built.insert(appender.name);
  }
  for (const Logger& logger : m_rehearsal.loggers()) {
    checkLeftOut(logger.element, built);
  }
  for (const Appender& appender : m_rehearsal.appenders()) {
    auto* const async = dynamic_cast<LOGAsyncAppender*>(appender.appender);
    if (async != nullptr) {
      checkLeftOut(appender.element, built);
    }
    for (const ZEBIDOM_Element& reference :
         CheckedDocument::children(appender.element, "appender-ref")) {
      const std::string name = CheckedDocument::attribute(reference, "ref");
      // One that was built and is not there was being built when this reference was read.
      if (async != nullptr && built.count(name) > 0 && async->getAppender(name) == nullptr) {
        m_findings.warn("circle", reference, "ref",
                        "the appender " + CheckWords::quoted(name) +
                            " leads back to this one, so the reference is left out",
                        "no reference in a circle");
      }
    }
  }
}

/// References to appenders that could be built and are not, because there is too much of them.
void CheckDeliveryRules::checkLeftOut(const ZEBIDOM_Element& holder,
                                      const std::set<std::string>& built) {
  const std::vector<std::string> classes = LOGComponentFactory::appenderClasses();
  for (const ZEBIDOM_Element& reference : CheckedDocument::children(holder, "appender-ref")) {
    const std::string name = CheckedDocument::attribute(reference, "ref");
    const ZEBIDOM_Element appender = m_document.appender(name);
    if (!appender.isNull() && built.count(name) == 0 &&
        std::count(classes.begin(), classes.end(), CheckedDocument::classOf(appender)) > 0) {
      m_findings.warn("too-many", reference, "ref",
                      "the appender " + CheckWords::quoted(name) +
                          " is left out: a document has no more than 1000 in use, and they refer "
                          "to others no more than 64 deep",
                      "fewer appenders");
    }
  }
}

void CheckDeliveryRules::checkFilters(const Appender& appender) {
  const std::vector<ZEBIDOM_Element> elements =
      CheckedDocument::children(appender.element, "filter");
  const std::vector<LOGFilter*> chain = CheckRehearsal::filters(appender);
  std::vector<std::string> arriving = CheckWords::eventLevels();
  bool acceptsSome = false;
  for (std::size_t i = 0; i < chain.size(); ++i) {
    if (arriving.empty()) {
      m_findings.warn("filter-never-asked", elements[i], "",
                      "this filter is never asked: those before it decide about every event",
                      "leave it out, or put it before them");
      break;
    }
    acceptsSome = checkFilter(appender, i, elements[i], arriving) || acceptsSome;
  }
  const bool hasUnknown =
      std::any_of(elements.begin(), elements.end(), [this](const ZEBIDOM_Element& element) {
        return m_findings.has("unknown-class", element, "class");
      });
  if (arriving.empty() && !acceptsSome && !hasUnknown && !chain.empty()) {
    m_findings.warn(
        "denies-all", elements.front(), "",
        "the filters of the appender " + CheckWords::quoted(appender.name) + " deny every event",
        dynamic_cast<LOGDenyAllFilter*>(chain.back()) != nullptr
            ? "a filter before LOGDenyAllFilter that accepts what is to pass"
            : "bounds between which there are levels");
  }
}

/// Takes out of `arriving` the levels about which the filter decides, and returns whether it lets
/// an event pass that it is asked about.
bool CheckDeliveryRules::checkFilter(const Appender& appender, std::size_t index,
                                     const ZEBIDOM_Element& element,
                                     std::vector<std::string>& arriving) {
  LOGFilter* const filter = CheckRehearsal::filters(appender)[index];
  if (filter == nullptr) {
    return true;
  }
  if (dynamic_cast<LOGDenyAllFilter*>(filter) != nullptr) {
    arriving.clear();
    return false;
  }
  auto* const range = dynamic_cast<LOGLevelRangeFilter*>(filter);
  if (range == nullptr) {
    return checkMatch(appender, index, element, arriving);
  }
  const LOGLevel* const least = range->getLevelMin();
  const LOGLevel* const most = range->getLevelMax();
  const bool isEmpty = least != nullptr && most != nullptr && least->toInt() > most->toInt();
  if (least == nullptr && most == nullptr && !hasReportedParam(element)) {
    m_findings.warn("filter-without-effect", element, "",
                    "the filter has neither LevelMin nor LevelMax, so it lets every event through",
                    "<param name=\"LevelMin\" value=\"...\"/> inside of it");
  } else if (isEmpty) {
    m_findings.warn("empty-range", element, "",
                    std::string("LevelMin ") + least->toString() + " is above LevelMax " +
                        most->toString() + ": the filter denies every event",
                    "the two the other way round");
  }
  const auto isOutside = [&](const std::string& name) {
    const int rank = CheckRehearsal::level(name).toInt();
    return (least != nullptr && rank < least->toInt()) || (most != nullptr && rank > most->toInt());
  };
  arriving.erase(std::remove_if(arriving.begin(), arriving.end(), isOutside), arriving.end());
  return isEmpty;  // reported; it need not be said again of the chain
}

bool CheckDeliveryRules::checkMatch(const Appender& appender, std::size_t index,
                                    const ZEBIDOM_Element& element,
                                    std::vector<std::string>& arriving) {
  LOGFilter* const filter = CheckRehearsal::filters(appender)[index];
  const std::string className = CheckedDocument::classOf(element);
  const std::string param = className == "LOGLevelMatchFilter" ? "LevelToMatch" : "StringToMatch";
  std::vector<std::string> matching = arriving;
  bool isSet = false;
  if (const auto* const level = dynamic_cast<LOGLevelMatchFilter*>(filter)) {
    const std::unique_ptr<I18NString> name(level->getLevelToMatch());
    isSet = name != nullptr;
    matching = {isSet ? name->toStdString() : ""};
    const auto known = std::find(arriving.begin(), arriving.end(), matching.front());
    if (isSet && known == arriving.end()) {
      m_findings.warn("never-matches", element, "",
                      "no event of the level " + matching.front() + " comes to this filter",
                      "another level, or leave it out");
      return false;
    }
    if (isSet) {
      arriving.erase(known);
    }
  } else if (const auto* const text = dynamic_cast<LOGStringMatchFilter*>(filter)) {
    isSet = !text->getStringToMatch().isEmpty();
  }
  if (!isSet) {
    if (!hasReportedParam(element)) {
      m_findings.warn("filter-without-effect", element, "",
                      "the filter has no " + param + " that it knows, so it decides nothing",
                      "<param name=\"" + param + "\" value=\"...\"/> inside of it");
    }
    return false;
  }
  const bool isVain = std::all_of(matching.begin(), matching.end(), [&](const std::string& level) {
    return passesTheRest(appender, index + 1, level);
  });
  if (isVain) {
    m_findings.warn(
        "match-without-deny", element, "",
        "the filter accepts what would pass without it too: what does not match passes as well",
        "<filter class=\"LOGDenyAllFilter\"/> behind it");
  }
  return true;
}

bool CheckDeliveryRules::hasReportedParam(const ZEBIDOM_Element& filter) const {
  const auto params = CheckedDocument::children(filter, "param");
  return std::any_of(params.begin(), params.end(), [this](const ZEBIDOM_Element& param) {
    return m_findings.has("ignored-param", param, "name") ||
           m_findings.has("empty-param", param, "") ||
           m_findings.has("unknown-level", param, "value");
  });
}

bool CheckDeliveryRules::passesTheRest(const Appender& appender, std::size_t index,
                                       const std::string& level) const {
  std::string ignored;
  return m_rehearsal.decide(appender, index, CheckRehearsal::level(level), ignored) == Passes::Yes;
}

void CheckDeliveryRules::checkReached() {
  std::set<const LOGAppenderSkeleton*> reached;
  for (const Logger& logger : m_rehearsal.loggers()) {
    for (const std::string& name : CheckWords::eventLevels()) {
      LOGLevel& level = CheckRehearsal::level(name);
      for (const CheckRehearsal::Delivery& way : m_rehearsal.deliveries(*logger.logger, level)) {
        reached.insert(way.path.begin(), way.path.end());
      }
    }
  }
  for (const Appender& appender : m_rehearsal.appenders()) {
    // Of an asynchronous appender it is said of those behind it, and one whose own filters deny
    // everything is reported for that.
    const bool passesOn = dynamic_cast<const LOGAsyncAppender*>(appender.appender) != nullptr &&
                          !CheckedDocument::children(appender.element, "appender-ref").empty();
    const std::vector<std::string>& levels = CheckWords::eventLevels();
    const bool passesAny = std::any_of(levels.begin(), levels.end(), [&](const std::string& level) {
      std::string ignored;
      return m_rehearsal.decide(appender, 0, CheckRehearsal::level(level), ignored) != Passes::No;
    });
    if (reached.count(appender.appender) == 0 && !passesOn && passesAny) {
      m_findings.warn("never-reached", appender.element, "",
                      "no event reaches the appender " + CheckWords::quoted(appender.name) +
                          ": the levels of its loggers and the filters have none in common",
                      "another level in the loggers that refer to it, or in the filters");
    }
  }
}

void CheckDeliveryRules::checkWidths() {
  struct Use {
    ZEBIDOM_Element param;
    CheckPattern::Specifier specifier;
  };
  std::vector<Use> uses;
  ZEBIDOM_Element last;
  for (const ZEBIDOM_Element& layout : m_rehearsal.layoutsInOrder()) {
    if (CheckedDocument::classOf(layout) != "LOGPatternLayout") {
      continue;
    }
    last = ZEBIDOM_Element();
    for (const ZEBIDOM_Element& param : CheckedDocument::children(layout, "param")) {
      const std::string name = CheckedDocument::attribute(param, "name");
      const CheckPattern pattern(CheckedDocument::attribute(param, "value"));
      if (CheckWords::lower(name) != "conversionpattern" || pattern.specifiers().empty()) {
        continue;
      }
      for (const CheckPattern::Specifier& specifier : pattern.specifiers()) {
        uses.push_back({param, specifier});
      }
      last = param;
    }
  }
  for (std::size_t i = 0; i < uses.size(); ++i) {
    const Use& use = uses[i];
    if (!use.specifier.hasWidths || uses.size() == 1) {
      continue;
    }
    const std::string text = CheckWords::quoted(use.specifier.text);
    const bool isInForce = i + 1 == uses.size() && !last.isNull();
    m_findings.warn(
        "widths", use.param, "value",
        isInForce ? "the width of " + text +
                        " is that of every specifier of every pattern in the process, because it "
                        "is the last that is read"
                  : "the width of " + text +
                        " is not used: the last specifier that is read sets the width of all, "
                        "which is " +
                        (last.isNull() ? "\"%m\" of a default pattern"
                                       : CheckWords::quoted(uses.back().specifier.text) +
                                             " in line " + std::to_string(last.getLine())),
        "\"%" + std::string(1, use.specifier.letter) + "\", without a width");
  }
}
