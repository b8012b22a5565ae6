#include "tools/CheckRehearsal.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "appenders/LOGAsyncAppender.h"
#include "config/LOGComponentFactory.h"
#include "config/LOGDOMConfigurator.h"
#include "core/LOGLevel.h"
#include "core/LOGLogger.h"
#include "core/LOGLoggingEvent.h"
#include "core/LOGManager.h"
#include "filters/LOGFilter.h"
#include "filters/LOGStringMatchFilter.h"
#include "layouts/LOGLayout.h"
#include "platform/ZEBIDOM_DocumentData.h"
#include "platform/ZEBIDOM_NamedNodeMap.h"
#include "tools/CheckWords.h"

namespace {

constexpr const char* LOADED_FILTER = "LOGLogUVDDyeTraceFilter";
constexpr const char* SAMPLE_MESSAGE = "an example message";
constexpr std::size_t MOST_WAYS = 1000;

bool isLogger(const std::string& tag) { return tag == "logger" || tag == "category"; }

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
    ways.push_back({std::move(path), CheckRehearsal::Passes::Yes, ""});
    return;
  }
  for (LOGAppenderSkeleton* const next : attached) {
    addWays(*next, path, ways);
  }
}

}  // namespace

CheckRehearsal::CheckRehearsal(const CheckedDocument& document)
    : m_hasFactory(!CheckedDocument::children(document.root(), "categoryFactory").empty()) {
  auto data = std::make_shared<ZEBIDOM_DocumentData>();
  data->entries.emplace_back();
  data->entries.back().type = ZEBIDOM_Node::DOCUMENT_NODE;
  copyHarmless(document.root(), *data, ZEBIDOM_DocumentData::ROOT);
  data->entries.front().end = static_cast<std::uint32_t>(data->entries.size());
  LOGDOMConfigurator::configure(ZEBIDOM_Document(std::move(data)).getDocumentElement());
  collectLoggers(document);
}

/// Copies an element without what acts outside of the process: factories, renderers and filters
/// from libraries, the look-up of a host, and the switch of the library's own debugging.
void CheckRehearsal::copyHarmless(const ZEBIDOM_Element& element, ZEBIDOM_DocumentData& copy,
                                  std::size_t parent) const {
  const std::string tag = CheckedDocument::tag(element);
  const std::string className = CheckedDocument::classOf(element);
  const bool isLoadedFilter = tag == "filter" && className == LOADED_FILTER;
  const bool isHost = tag == "param" && CheckedDocument::attribute(element, "name") == "Host";
  if (tag == "categoryFactory" || tag == "renderer" || isLoadedFilter || isHost) {
    return;
  }
  const std::size_t index = copy.entries.size();
  copy.entries.emplace_back();
  copy.entries.back().type = ZEBIDOM_Node::ELEMENT_NODE;
  copy.entries.back().parent = static_cast<std::uint32_t>(parent);
  copy.entries.back().name = element.getTagName();
  const ZEBIDOM_NamedNodeMap attributes = element.getAttributes();
  for (std::size_t i = 0; i < attributes.getLength(); ++i) {
    const std::string name = attributes.item(i).getNodeName().toStdString();
    const bool isFactoryMade = isLogger(tag) && name == "class" && m_hasFactory;
    if (isFactoryMade || name == "debug" || name == "configDebug") {
      continue;
    }
    copy.entries.emplace_back();
    ZEBIDOM_DocumentData::Entry& attribute = copy.entries.back();
    attribute.type = ZEBIDOM_Node::ATTRIBUTE_NODE;
    attribute.parent = static_cast<std::uint32_t>(index);
    attribute.end = static_cast<std::uint32_t>(copy.entries.size());
    attribute.name = attributes.item(i).getNodeName();
    attribute.value = attributes.item(i).getNodeValue();
    ++copy.entries[index].attributeCount;
  }
  for (const ZEBIDOM_Element& child : CheckedDocument::children(element)) {
    copyHarmless(child, copy, index);
  }
  copy.entries[index].end = static_cast<std::uint32_t>(copy.entries.size());
}

void CheckRehearsal::collectLoggers(const CheckedDocument& document) {
  m_loggers.push_back({ZEBIDOM_Element(), LOGManager::getRootLogger(), true});
  for (const ZEBIDOM_Element& element : CheckedDocument::children(document.root())) {
    const std::string tag = CheckedDocument::tag(element);
    LOGLogger* logger = nullptr;
    if (tag == "root") {
      logger = LOGManager::getRootLogger();
    } else if (isLogger(tag)) {
      logger = LOGManager::exists(element.getAttribute("name"));
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

void CheckRehearsal::collectAppenders(const CheckedDocument& document,
                                      const ZEBIDOM_Element& holder,
                                      const std::vector<LOGAppenderSkeleton*>& attached) {
  for (const ZEBIDOM_Element& reference : CheckedDocument::children(holder, "appender-ref")) {
    const std::string name = CheckedDocument::attribute(reference, "ref");
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
  const ZEBIDOM_Element element = document.appender(name);
  const std::vector<std::string> classes = LOGComponentFactory::appenderClasses();
  if (element.isNull() || std::find(classes.begin(), classes.end(),
                                    CheckedDocument::classOf(element)) == classes.end()) {
    return;
  }
  const bool isNew = m_visited.insert(name).second;
  if (isNew) {
    for (const ZEBIDOM_Element& child : CheckedDocument::children(element)) {
      const std::string tag = CheckedDocument::tag(child);
      if (tag == "layout") {
        m_layouts.push_back(child);
      } else if (tag == "errorHandler") {
        collectAppenders(document, child, {});
      }
    }
  }
  if (appender == nullptr || !m_positions.emplace(appender, m_appenders.size()).second) {
    return;
  }
  m_appenders.push_back({element, appender, name});
  collectAppenders(document, element, attachedTo(*appender));
}

const CheckRehearsal::Appender* CheckRehearsal::find(const LOGAppenderSkeleton* appender) const {
  const auto found = m_positions.find(appender);
  return found == m_positions.end() ? nullptr : &m_appenders[found->second];
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
  if (logger.isEnabledFor(&level) == 0) {
    return found;
  }
  for (const LOGLogger* stage = &logger; stage != nullptr; stage = stage->getParent()) {
    for (Delivery& way : ways(*stage)) {
      for (LOGAppenderSkeleton* const appender : way.path) {
        const Appender* const known = find(appender);
        std::string condition;
        const Passes passes = known == nullptr ? Passes::No : decide(*known, 0, level, condition);
        way.passes = std::min(way.passes, passes);
        way.condition += (way.condition.empty() || condition.empty() ? "" : " and ") + condition;
      }
      if (way.passes != Passes::No) {
        found.push_back(std::move(way));
      }
    }
    if (stage->getAdditivity() == 0) {
      break;
    }
  }
  return found;
}

std::vector<LOGFilter*> CheckRehearsal::filters(const Appender& appender) {
  std::vector<LOGFilter*> found;
  LOGFilter* filter = appender.appender->getFirstFilter();
  for (const ZEBIDOM_Element& element : CheckedDocument::children(appender.element, "filter")) {
    if (CheckedDocument::classOf(element) == LOADED_FILTER) {
      found.push_back(nullptr);
    } else if (filter != nullptr) {
      found.push_back(filter);
      filter = filter->next;
    }
  }
  return found;
}

CheckRehearsal::Passes CheckRehearsal::decide(const Appender& appender, std::size_t firstFilter,
                                              LOGLevel& level, std::string& condition) const {
  if (appender.appender->isAsSevereAsThreshold(&level) == 0) {
    return Passes::No;
  }
  std::vector<std::string> accepting;  // if the event is denied in the end
  std::vector<std::string> passing;    // if it is not: up to the filter of a library
  const std::vector<LOGFilter*> chain = filters(appender);
  bool isDenied = false;
  const I18NString message(SAMPLE_MESSAGE);
  LOGLoggingEvent event(LOGManager::getRootLogger(), &level, LOGMessageText{message});
  for (std::size_t i = firstFilter; i < chain.size(); ++i) {
    const auto* const text = dynamic_cast<const LOGStringMatchFilter*>(chain[i]);
    if (chain[i] == nullptr) {
      accepting.push_back(std::string("the filter ") + LOADED_FILTER + " lets it");
      passing = passing.empty() ? accepting : passing;
      continue;
    }
    if (text != nullptr) {
      if (!text->getStringToMatch().isEmpty()) {
        accepting.push_back("the message contains " +
                            CheckWords::quoted(text->getStringToMatch().toStdString()));
      }
      continue;
    }
    const int decision = chain[i]->decide(&event);
    isDenied = decision == LOGFilter::m_DENY;
    if (decision != LOGFilter::m_NEUTRAL) {
      break;
    }
  }
  if (isDenied) {
    condition = CheckWords::either(accepting);
    return accepting.empty() ? Passes::No : Passes::Maybe;
  }
  condition = CheckWords::either(passing);
  return passing.empty() ? Passes::Yes : Passes::Maybe;
}

std::string CheckRehearsal::sample(LOGAppenderSkeleton& appender, LOGLogger& logger,
                                   LOGLevel& level) {
  auto* const layout = const_cast<LOGLayout*>(appender.getLayout());
  if (layout == nullptr) {
    return "";
  }
  const I18NString message(SAMPLE_MESSAGE);
  LOGLoggingEvent event(&logger, &level, LOGMessageText{message});
  return layout->format(&event).toStdString();
}

LOGLevel& CheckRehearsal::level(const std::string& name) { return *LOGLevel::toLevel(name); }
