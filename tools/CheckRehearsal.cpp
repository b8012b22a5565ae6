#include "tools/CheckRehearsal.h"

#include <algorithm>
#include <memory>

#include "appenders/LOGAsyncAppender.h"
#include "config/LOGComponentFactory.h"
#include "config/LOGDOMConfigurator.h"
#include "core/LOGLevel.h"
#include "core/LOGLogger.h"
#include "core/LOGManager.h"
#include "filters/LOGFilter.h"
#include "platform/ZEBIDOM_DocumentData.h"
#include "tools/CheckWords.h"
#include "tools/FilterView.h"

namespace {

constexpr std::size_t MOST_WAYS = 1000;

bool isLogger(const std::string& tag) { return tag == "logger" || tag == "category"; }

/// Gets at what a node is a handle on.
class DocumentData : public ZEBIDOM_Node {
 public:
  static const auto& of(const ZEBIDOM_Node& node) { return node.*(&DocumentData::m_data); }
};

/// Whether the element acts outside of the process: factories, renderers and filters from
/// libraries, and the look-up of a host.
bool actsOutside(const CheckElement& element) {
  const std::string tag = element.tag();
  return tag == "categoryFactory" || tag == "renderer" ||
         (tag == "filter" && element.className() == FilterView::LOADED_FILTER) ||
         (tag == "param" && element.get("name") == "Host");
}

/// A copy in which elements that act outside have a name that means nothing, as have the switches
/// of the library's own debugging and the classes of loggers that a factory would make.
ZEBIDOM_Document harmlessCopy(const CheckElement& root) {
  const bool hasFactory = !root.children("categoryFactory").empty();
  const auto& data = DocumentData::of(root.dom());
  const auto copy = std::make_shared<ZEBIDOM_DocumentData>(*data);
  bool isFactoryMade = false;
  for (std::uint32_t i = 0; i < copy->entries.size(); ++i) {
    ZEBIDOM_DocumentData::Entry& entry = copy->entries[i];
    if (entry.type == ZEBIDOM_Node::ELEMENT_NODE) {
      const CheckElement element(ZEBIDOM_Node(data, i));
      isFactoryMade = hasFactory && isLogger(element.tag());
      entry.name = actsOutside(element) ? "" : entry.name;
    } else if (entry.type == ZEBIDOM_Node::ATTRIBUTE_NODE) {
      const bool isClass = isFactoryMade && entry.name == "class";
      entry.name =
          isClass || entry.name == "debug" || entry.name == "configDebug" ? "" : entry.name;
    }
  }
  return ZEBIDOM_Document(copy);
}

std::vector<LOGAppenderSkeleton*> attachedTo(LOGAppenderSkeleton& appender) {
  auto* const async = dynamic_cast<LOGAsyncAppender*>(&appender);
  return async == nullptr ? std::vector<LOGAppenderSkeleton*>() : async->getAAI()->snapshot();
}

void addWays(LOGAppenderSkeleton& appender, std::vector<LOGAppenderSkeleton*> path,
             std::vector<CheckRehearsal::Delivery>& ways) {
  if (ways.size() >= MOST_WAYS || std::find(path.begin(), path.end(), &appender) != path.end()) {
    return;
  }
  path.push_back(&appender);
  const std::vector<LOGAppenderSkeleton*> attached = attachedTo(appender);
  if (attached.empty()) {
    ways.emplace_back().path = std::move(path);
    return;
  }
  for (LOGAppenderSkeleton* const next : attached) {
    addWays(*next, path, ways);
  }
}

}  // namespace

CheckRehearsal::CheckRehearsal(const CheckedDocument& document) {
  LOGDOMConfigurator::configure(harmlessCopy(document.root()).getDocumentElement());
  collectLoggers(document);
}

void CheckRehearsal::collectLoggers(const CheckedDocument& document) {
  m_loggers.push_back({CheckElement(), LOGManager::getRootLogger(), true});
  for (const CheckElement& element : document.root().children()) {
    LOGLogger* logger = nullptr;
    if (element.tag() == "root") {
      logger = LOGManager::getRootLogger();
    } else if (isLogger(element.tag())) {
      logger = LOGManager::exists(element.get("name"));
    }
    if (logger == nullptr) {
      continue;
    }
    const auto known =
        std::find_if(m_loggers.begin(), m_loggers.end(),
                     [logger](const Logger& candidate) { return candidate.logger == logger; });
    if (known == m_loggers.end()) {
      m_loggers.push_back({element, logger, false});
    } else {
      known->element = element;
    }
    collectAppenders(document, element, logger->snapshotOfAppenders());
  }
}

void CheckRehearsal::collectAppenders(const CheckedDocument& document, const CheckElement& holder,
                                      const std::vector<LOGAppenderSkeleton*>& attached) {
  for (const CheckElement& reference : holder.children("appender-ref")) {
    const std::string name = reference.get("ref");
    const auto found =
        std::find_if(attached.begin(), attached.end(), [&](const LOGAppenderSkeleton* appender) {
          return appender->getName().toStdString() == name;
        });
    // An appender that another element of the same logger has replaced was made all the same.
    collectAppender(document, name, found == attached.end() ? nullptr : *found);
  }
}

void CheckRehearsal::collectAppender(const CheckedDocument& document, const std::string& name,
                                     LOGAppenderSkeleton* appender) {
  const CheckElement element = document.appender(name);
  if (!CheckWords::contains(LOGComponentFactory::classes("appender"), element.className())) {
    return;
  }
  if (m_visited.insert(name).second) {
    for (const CheckElement& child : element.children()) {
      if (child.tag() == "layout") {
        m_layouts.push_back(child);
      } else if (child.tag() == "errorHandler") {
        collectAppenders(document, child, {});
      }
    }
  }
  if (appender != nullptr && m_positions.emplace(appender, m_appenders.size()).second) {
    m_appenders.push_back({element, appender, name});
    collectAppenders(document, element, attachedTo(*appender));
  }
}

const std::vector<LOGLevel*>& CheckRehearsal::levels() {
  static const std::vector<LOGLevel*> levels{
      LOGLevel::toLevel(LOGLevel::DEBUG_RANK), LOGLevel::toLevel(LOGLevel::INFO_RANK),
      LOGLevel::toLevel(LOGLevel::WARN_RANK), LOGLevel::toLevel(LOGLevel::ERROR_RANK),
      LOGLevel::toLevel(LOGLevel::FATAL_RANK)};
  return levels;
}

std::vector<CheckRehearsal::Delivery> CheckRehearsal::ways(const LOGLogger& logger) {
  std::vector<Delivery> found;
  for (LOGAppenderSkeleton* const appender : logger.snapshotOfAppenders()) {
    addWays(*appender, {}, found);
  }
  return found;
}

std::vector<CheckRehearsal::Delivery> CheckRehearsal::deliveries(LOGLogger& logger,
                                                                 LOGLevel& level) const {
  std::vector<Delivery> found;
  const LOGLogger* stage = logger.isEnabledFor(&level) == 0 ? nullptr : &logger;
  for (; stage != nullptr; stage = stage->getAdditivity() == 0 ? nullptr : stage->getParent()) {
    for (Delivery& way : ways(*stage)) {
      for (LOGAppenderSkeleton* const appender : way.path) {
        const auto known = m_positions.find(appender);
        const Delivery here = known == m_positions.end()
                                  ? Delivery{{}, Passes::No, ""}
                                  : decide(m_appenders[known->second], 0, level);
        way.passes = std::min(way.passes, here.passes);
        way.condition +=
            (way.condition.empty() || here.condition.empty() ? "" : " and ") + here.condition;
      }
      if (way.passes != Passes::No) {
        found.push_back(std::move(way));
      }
    }
  }
  return found;
}

std::vector<LOGFilter*> CheckRehearsal::filters(const Appender& appender) {
  std::vector<LOGFilter*> found;
  LOGFilter* filter = appender.appender->getFirstFilter();
  for (const CheckElement& element : appender.element.children("filter")) {
    if (element.className() == FilterView::LOADED_FILTER) {
      found.push_back(nullptr);
    } else if (filter != nullptr) {
      found.push_back(filter);
      filter = filter->next;
    }
  }
  return found;
}

CheckRehearsal::Delivery CheckRehearsal::decide(const Appender& appender, std::size_t firstFilter,
                                                LOGLevel& level) {
  if (appender.appender->isAsSevereAsThreshold(&level) == 0) {
    return {{}, Passes::No, ""};
  }
  std::vector<std::string> accepting;  // if the event is denied in the end
  std::vector<std::string> passing;    // if it is not: up to the filter of a library
  const std::vector<LOGFilter*> chain = filters(appender);
  int decision = LOGFilter::m_NEUTRAL;
  for (std::size_t i = firstFilter; i < chain.size() && decision == LOGFilter::m_NEUTRAL; ++i) {
    const FilterView filter(chain[i]);
    if (const auto known = filter.decision(level)) {
      decision = *known;
      continue;
    }
    accepting.push_back(filter.condition());
    passing = chain[i] == nullptr && passing.empty() ? accepting : passing;
  }
  const bool isDenied = decision == LOGFilter::m_DENY;
  const std::vector<std::string>& conditions = isDenied ? accepting : passing;
  const Passes otherwise = isDenied ? Passes::No : Passes::Yes;
  return {{}, conditions.empty() ? otherwise : Passes::Maybe, CheckWords::either(conditions)};
}
