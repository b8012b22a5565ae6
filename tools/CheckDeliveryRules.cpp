#include <algorithm>
#include <memory>
#include <set>

#include "appenders/LOGAsyncAppender.h"
#include "config/LOGComponentFactory.h"
#include "core/LOGLevel.h"
#include "core/LOGLogger.h"
#include "core/LOGLoggerRepository.h"
#include "core/LOGManager.h"
#include "filters/LOGDenyAllFilter.h"
#include "filters/LOGLevelMatchFilter.h"
#include "filters/LOGLevelRangeFilter.h"
#include "tools/CheckPattern.h"
#include "tools/CheckRules.h"
#include "tools/CheckWords.h"
#include "tools/FilterView.h"

namespace {

using Logger = CheckRehearsal::Logger;
using Appender = CheckRehearsal::Appender;
using Delivery = CheckRehearsal::Delivery;
using Passes = CheckRehearsal::Passes;
using Levels = std::vector<LOGLevel*>;

std::string nameOf(const Logger& logger) {
  return logger.isRoot ? "the root logger"
                       : "the logger \"" + logger.logger->getName().toStdString() + "\"";
}

bool isOff(const LOGLogger& logger) {
  return logger.isEnabledFor(CheckRehearsal::levels().back()) == 0;
}

/// The loggers above this one that its events go to, the nearest first.
std::vector<const LOGLogger*> stagesAbove(const LOGLogger& logger) {
  std::vector<const LOGLogger*> stages;
  for (const LOGLogger* stage = &logger;
       stage->getAdditivity() != 0 && stage->getParent() != nullptr;) {
    stage = stage->getParent();
    stages.push_back(stage);
  }
  return stages;
}

bool reachesAny(const LOGLogger& logger) {
  const auto stages = stagesAbove(logger);
  return !logger.snapshotOfAppenders().empty() ||
         std::any_of(stages.begin(), stages.end(),
                     [](const LOGLogger* stage) { return !stage->snapshotOfAppenders().empty(); });
}

class DeliveryRules : CheckRuleSet {
 public:
  DeliveryRules(const CheckRehearsal& rehearsal, CheckFindings& findings)
      : CheckRuleSet(findings), m_rehearsal(rehearsal) {}

  void checkAll() {
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

 private:
  void checkLoggersWithoutAppender() {
    const std::vector<Logger>& loggers = m_rehearsal.loggers();
    const bool rootHasNone = LOGManager::getRootLogger()->snapshotOfAppenders().empty();
    const auto isLost = [](const Logger& logger) {
      return !reachesAny(*logger.logger) && !isOff(*logger.logger);
    };
    const bool areAnyLost = std::any_of(loggers.begin(), loggers.end(), isLost);
    for (const Logger& logger : loggers) {
      const auto above = stagesAbove(*logger.logger);
      if (logger.isRoot && areAnyLost && !reachesAny(*logger.logger)) {
        warn("no-appender", logger.element.isNull() ? m_document.root() : logger.element, "",
             "the root logger has no appender: events of loggers that have none of their own are "
             "lost",
             "<appender-ref ref=\"...\"/> in <root>");
      } else if (!logger.isRoot && isLost(logger) && (above.empty() || !rootHasNone)) {
        warn("no-appender", logger.element, "",
             "events of {} reach no appender: it has none, and {}",
             "an <appender-ref>, or additivity=\"true\"",
             {nameOf(logger), above.empty() ? "its additivity is off"
                                            : "the additivity of the logger \"" +
                                                  above.back()->getName().toStdString() +
                                                  "\" above it is off"});
      }
    }
  }

  void checkThreshold(const Logger& logger) {
    const LOGLevel* const threshold = LOGManager::getLoggerRepository()->getThreshold();
    const LOGLevel* const level = logger.logger->getLevel();
    // ALL sets no bound of its own, so that it contradicts nothing.
    if (threshold == nullptr || level == nullptr || level->toInt() >= threshold->toInt() ||
        level->toInt() == LOGLevel::ALL_RANK) {
      return;
    }
    for (const CheckElement& child : logger.element.children()) {
      if (CheckWords::contains({"level", "priority"}, child.tag())) {
        warn("below-threshold", child, "value",
             "the level {} of {} is below the threshold {} of the document, which no event below "
             "passes",
             "threshold=\"{}\" in the root element",
             {level->toString(), nameOf(logger), threshold->toString(), level->toString()});
        return;
      }
    }
  }

  /// Whether one event can come to the appender on two ways, past the filters on them.
  bool arrivesTwice(const Logger& logger, const LOGAppenderSkeleton* appender) const {
    const Levels& levels = CheckRehearsal::levels();
    return std::any_of(levels.begin(), levels.end(), [&](LOGLevel* level) {
      const auto deliveries = m_rehearsal.deliveries(*logger.logger, *level);
      return std::count_if(deliveries.begin(), deliveries.end(), [&](const Delivery& delivery) {
               return delivery.path.back() == appender;
             }) > 1;
    });
  }

  void checkDuplicates(const Logger& logger) {
    if (logger.element.isNull()) {
      return;
    }
    // What the ancestors reach, then what the logger's own references add, one by one.
    std::set<LOGAppenderSkeleton*> reached;
    for (const LOGLogger* const stage : stagesAbove(*logger.logger)) {
      for (const Delivery& way : CheckRehearsal::ways(*stage)) {
        reached.insert(way.path.back());
      }
    }
    std::set<LOGAppenderSkeleton*> own;
    for (const Delivery& way : CheckRehearsal::ways(*logger.logger)) {
      LOGAppenderSkeleton* const appender = way.path.back();
      const bool isTwiceHere = !own.insert(appender).second;
      if ((!isTwiceHere && reached.count(appender) == 0) || !arrivesTwice(logger, appender)) {
        continue;
      }
      CheckElement reference = logger.element;
      for (const CheckElement& child : logger.element.children("appender-ref")) {
        const bool isIt = child.get("ref") == way.path.front()->getName().toStdString();
        reference = isIt ? child : reference;
      }
      warn("twice", reference, "ref", "events of {} reach the appender \"{}\" twice: {}",
           isTwiceHere ? "one reference" : "additivity=\"false\", or no reference here",
           {nameOf(logger), appender->getName().toStdString(),
            isTwiceHere ? "by two references here" : "here, and through a logger above it"});
    }
  }

  void checkCircles() {
    std::set<std::string> built;
    for (const Appender& appender : m_rehearsal.appenders()) {
      built.insert(appender.name);
    }
    for (const Logger& logger : m_rehearsal.loggers()) {
      checkLeftOut(logger.element, built);
    }
    for (const Appender& appender : m_rehearsal.appenders()) {
      auto* const async = dynamic_cast<LOGAsyncAppender*>(appender.appender);
      if (async == nullptr) {
        continue;
      }
      checkLeftOut(appender.element, built);
      for (const CheckElement& reference : appender.element.children("appender-ref")) {
        const std::string name = reference.get("ref");
        // One that was built and is not there was being built when this reference was read.
        warnIf(built.count(name) > 0 && async->getAppender(name) == nullptr, "circle", reference,
               "ref", "the appender \"{}\" leads back to this one, so the reference is left out",
               "no reference in a circle", {name});
      }
    }
  }

  /// References to appenders that could be built and are not, because there is too much of them.
  void checkLeftOut(const CheckElement& holder, const std::set<std::string>& built) {
    for (const CheckElement& reference : holder.children("appender-ref")) {
      const std::string name = reference.get("ref");
      warnIf(
          built.count(name) == 0 && CheckWords::contains(LOGComponentFactory::classes("appender"),
                                                         m_document.appender(name).className()),
          "too-many", reference, "ref",
          "the appender \"{}\" is left out: a document has no more than 1000 in use, and they "
          "refer to others no more than 64 deep",
          "fewer appenders", {name});
    }
  }

  void checkFilters(const Appender& appender) {
    const std::vector<CheckElement> elements = appender.element.children("filter");
    const std::vector<LOGFilter*> chain = CheckRehearsal::filters(appender);
    Levels arriving = CheckRehearsal::levels();
    bool acceptsSome = false;
    for (std::size_t i = 0; i < chain.size(); ++i) {
      if (arriving.empty()) {
        warn("filter-never-asked", elements[i], "",
             "this filter is never asked: those before it decide about every event",
             "leave it out, or put it before them");
        break;
      }
      acceptsSome = checkFilter(appender, i, elements[i], arriving) || acceptsSome;
    }
    const bool hasUnknown =
        std::any_of(elements.begin(), elements.end(), [this](const CheckElement& element) {
          return m_findings.has("unknown-class", element, "class");
        });
    if (arriving.empty() && !acceptsSome && !hasUnknown && !chain.empty()) {
      warn("denies-all", elements.front(), "",
           "the filters of the appender \"{}\" deny every event",
           dynamic_cast<LOGDenyAllFilter*>(chain.back()) != nullptr
               ? "a filter before LOGDenyAllFilter that accepts what is to pass"
               : "bounds between which there are levels",
           {appender.name});
    }
  }

  /// Takes out of `arriving` the levels about which the filter decides, and returns whether it lets
  /// an event pass that it is asked about, or has been reported for letting none pass.
  bool checkFilter(const Appender& appender, std::size_t index, const CheckElement& element,
                   Levels& arriving) {
    LOGFilter* const filter = CheckRehearsal::filters(appender)[index];
    const FilterView view(filter);
    if (filter == nullptr) {
      return true;
    }
    Levels accepted;  // if only under a condition
    Levels left;
    for (LOGLevel* const level : arriving) {
      const auto decision = view.decision(*level);
      if (!decision || *decision == LOGFilter::m_ACCEPT) {
        accepted.push_back(level);
      }
      if (!decision || *decision == LOGFilter::m_NEUTRAL) {
        left.push_back(level);
      }
    }
    arriving = left;
    if (view.action().empty()) {
      warnOfUnset(element);
    } else if (const auto* const range = dynamic_cast<LOGLevelRangeFilter*>(filter)) {
      return isEmpty(*range, element);
    } else if (!accepted.empty()) {
      checkVain(appender, index, element, accepted);
    } else if (const auto* const match = dynamic_cast<LOGLevelMatchFilter*>(filter)) {
      const std::unique_ptr<I18NString> level(match->getLevelToMatch());
      warn("never-matches", element, "", "no event of the level {} comes to this filter",
           "another level, or leave it out", {level->toStdString()});
    }
    return !accepted.empty();
  }

  /// The filter knows nothing to look for, which may have been said of its params.
  void warnOfUnset(const CheckElement& element) {
    const auto params = element.children("param");
    const bool isReported =
        std::any_of(params.begin(), params.end(), [this](const CheckElement& param) {
          return m_findings.has("ignored-param", param, "name") ||
                 m_findings.has("empty-param", param, "") ||
                 m_findings.has("unknown-level", param, "value");
        });
    const std::string className = element.className();
    if (isReported) {
      return;
    }
    if (className == "LOGLevelRangeFilter") {
      warn("filter-without-effect", element, "",
           "the filter has neither LevelMin nor LevelMax, so it lets every event through",
           "<param name=\"LevelMin\" value=\"...\"/> inside of it");
    } else {
      const std::string param =
          className == "LOGLevelMatchFilter" ? "LevelToMatch" : "StringToMatch";
      warn("filter-without-effect", element, "",
           "the filter has no {} that it knows, so it decides nothing",
           "<param name=\"{}\" value=\"...\"/> inside of it", {param, param});
    }
  }

  bool isEmpty(const LOGLevelRangeFilter& range, const CheckElement& element) {
    const LOGLevel* const least = range.getLevelMin();
    const LOGLevel* const most = range.getLevelMax();
    if (least == nullptr || most == nullptr || least->toInt() <= most->toInt()) {
      return false;
    }
    warn("empty-range", element, "",
         "LevelMin {} is above LevelMax {}: the filter denies every event",
         "the two the other way round", {least->toString(), most->toString()});
    return true;
  }

  /// Whether the filter accepts what would pass anyway.
  void checkVain(const Appender& appender, std::size_t index, const CheckElement& element,
                 const Levels& accepted) {
    if (std::all_of(accepted.begin(), accepted.end(), [&](LOGLevel* level) {
          return CheckRehearsal::decide(appender, index + 1, *level).passes == Passes::Yes;
        })) {
      warn("match-without-deny", element, "",
           "the filter accepts what would pass without it too: what does not match passes as well",
           "<filter class=\"LOGDenyAllFilter\"/> behind it");
    }
  }

  void checkReached() {
    const Levels& levels = CheckRehearsal::levels();
    std::set<const LOGAppenderSkeleton*> reached;
    for (const Logger& logger : m_rehearsal.loggers()) {
      for (LOGLevel* const level : levels) {
        for (const Delivery& way : m_rehearsal.deliveries(*logger.logger, *level)) {
          reached.insert(way.path.begin(), way.path.end());
        }
      }
    }
    for (const Appender& appender : m_rehearsal.appenders()) {
      // Of an asynchronous appender it is said of those behind it, and one whose own filters deny
      // everything is reported for that.
      const bool passesOn = dynamic_cast<const LOGAsyncAppender*>(appender.appender) != nullptr &&
                            !appender.element.children("appender-ref").empty();
      const bool passesAny = std::any_of(levels.begin(), levels.end(), [&](LOGLevel* level) {
        return CheckRehearsal::decide(appender, 0, *level).passes != Passes::No;
      });
      warnIf(reached.count(appender.appender) == 0 && !passesOn && passesAny, "never-reached",
             appender.element, "",
             "no event reaches the appender \"{}\": the levels of its loggers and the filters have "
             "none in common",
             "another level in the loggers that refer to it, or in the filters", {appender.name});
    }
  }

  void checkWidths() {
    struct Use {
      CheckElement param;
      CheckPattern::Specifier specifier;
    };
    std::vector<Use> uses;
    CheckElement last;  // null where a default pattern is read after all others
    for (const CheckElement& layout : m_rehearsal.layoutsInOrder()) {
      if (layout.className() != "LOGPatternLayout") {
        continue;
      }
      last = CheckElement();
      for (const CheckElement& param : layout.children("param")) {
        if (CheckWords::lower(param.get("name")) != "conversionpattern") {
          continue;
        }
        const CheckPattern pattern(param.get("value"));
        for (const CheckPattern::Specifier& specifier : pattern.specifiers()) {
          uses.push_back({param, specifier});
          last = param;
        }
      }
    }
    for (std::size_t i = 0; uses.size() > 1 && i < uses.size(); ++i) {
      const CheckPattern::Specifier& specifier = uses[i].specifier;
      if (!specifier.hasWidths) {
        continue;
      }
      const bool isInForce = i + 1 == uses.size() && !last.isNull();
      warn("widths", uses[i].param, "value",
           isInForce ? "the width of \"{}\" is that of every specifier of every pattern in the "
                       "process, because it is the last that is read"
                     : "the width of \"{}\" is not used: the last specifier that is read sets the "
                       "width of all, which is " +
                           (last.isNull() ? "\"%m\" of a default pattern"
                                          : "\"" + uses.back().specifier.text + "\" in line " +
                                                std::to_string(last.line())),
           "\"%{}\", without a width", {specifier.text, std::string(1, specifier.letter)});
    }
  }

  const CheckRehearsal& m_rehearsal;
};

}  // namespace

void CheckRules::checkDelivery(const CheckRehearsal& rehearsal, CheckFindings& findings) {
  DeliveryRules(rehearsal, findings).checkAll();
}
