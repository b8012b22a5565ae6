#include "config/LOGDocumentReader.h"

#include <string>

#include "appenders/LOGRollingFileAppender.h"
#include "config/LOGComponentFactory.h"
#include "config/LOGParameterTable.h"
#include "core/LOGManager.h"
#include "filters/LOGDenyAllFilter.h"
#include "platform/I18NLocale.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBIDOM_NodeList.h"
#include "platform/ZEBSharedLibrary.h"
#include "platform/ZEBUtConvert.h"
#include "rendering/LOGRendererMap.h"
#include "rendering/LOGRendererSupport.h"

namespace {

constexpr const char* SOURCE = "LOGDOMConfigurator";

using Tags = LOGDOMConfigurator;

/// Reports a name that a document may not give a logger. Returns whether it may.
bool reportUnlessReasonable(const I18NString& name) {
  const bool isReasonable = LOGDOMConfigurator::isReasonableLoggerName(name);
  if (!isReasonable) {
    LOGLogLog::error("A logger's name is longer than 1024 characters or has more than 64 dots: [" +
                     name.substring(0, 80) + "...]");
  }
  return isReasonable;
}

void reportUnlessBaseName(const I18NString& library) {
  if (!library.isEmpty() && !ZEBSharedLibrary::isBaseName(library)) {
    LOGLogLog::error("The library [" + library +
                     "] is not loaded: a document names libraries without their path.");
  }
}

/// The function of that name in a library, which makes something. Throws ZEBAssertError when it has
/// none.
template <typename Made>
Made* (*makerIn(const ZEBSharedLibrary& library, const std::string& name))() {
  const auto function = reinterpret_cast<Made* (*)()>(library.getSymbol(name.c_str()));
  if (function == nullptr) {
    const std::string text = "ZEB_ASSERT_NAMED(function != NULL, \"" + name + "\");";
    ZEBAssertError::fail(text.c_str(), SOURCE, __LINE__);
  }
  return function;
}

/// The class attribute, without what stands before its last dot.
I18NString classOf(const ZEBIDOM_Element& element) {
  const I18NString text = element.getAttribute(Tags::CLASS_ATTR);
  const auto after = static_cast<std::size_t>(text.lastIndexOf(".") + 1);
  return after == text.length() ? text : text.substring(after);
}

I18NString addProcIDToFileName(const I18NString& name, int processId) {
  const I18NString number = ZEBUtConvert::handleCvt(processId);
  // Deliberate: a dot in a directory's name counts, too.
  const long dot = name.lastIndexOf(".");
  const auto end = dot == I18NString::NOT_FOUND ? name.length() : static_cast<std::size_t>(dot);
  return dot == 0 ? number + name : name.substring(0, end) + "_" + number + name.substring(end);
}

/// Calls `visit` with each element among the children, in document order.
template <typename Visitor>
void forEachChildElement(const ZEBIDOM_Element& parent, Visitor visit) {
  const ZEBIDOM_NodeList children = parent.getChildNodes();
  for (std::size_t i = 0; i < children.getLength(); ++i) {
    const ZEBIDOM_Node child = children.item(i);
    if (child.getNodeType() == ZEBIDOM_Node::ELEMENT_NODE) {
      visit(ZEBIDOM_Element(child));
    }
  }
}

LOGLogger* findLogger(const I18NString& name, const I18NString& className,
                      LOGLoggerFactory* loggerFactory) {
  if (!reportUnlessReasonable(name)) {
    return nullptr;
  }
  if (className.isEmpty()) {
    LOGLogLog::debug("Retrieving an instance of LOGLogger: " + name);
    return LOGManager::getLogger(name);
  }
  LOGLogLog::debug("Desired logger sub-class: [" + className + "]");
  if (loggerFactory == nullptr) {
    LOGLogLog::error("Logger Factory missing from config document; please add and restart");
    return nullptr;
  }
  LOGLogger* const logger = LOGManager::getLogger(name, loggerFactory);
  if (logger == nullptr) {
    LOGLogLog::error("Could not retrieve logger [" + name + "]. Reported error follows.");
  }
  return logger;
}

void parseLevel(const ZEBIDOM_Element& element, LOGLogger& logger, bool isRoot) {
  const I18NString value = element.getAttribute(Tags::VALUE_ATTR);
  const std::string failed =
      ("Could not create level [" + value + "] Reported error follows.").toStdString();
  const LOGFailureTexts texts{
      failed.c_str(), failed.c_str(),
      "LOGDOMConfigurator::parseLevel --- An unknown exception has occurred."};
  logContainingFailures(texts, [&] {
    const I18NString name = isRoot ? I18NString("root") : logger.getName();
    LOGLogLog::debug("Level value for " + name + " is  [" + value + "]");
    if (value != "inherited" && value != "null") {
      const I18NString className = classOf(element);
      if (!className.isEmpty()) {
        // Deliberate: the class is noted and never changes the result.
        LOGLogLog::debug("Desired LOGLevel sub-class: [" + className + "]");
      }
      logger.setLevel(LOGLevel::toLevel(value));
    } else if (isRoot) {
      LOGLogLog::error("Root level cannot be inherited. Ignoring directive.");
    } else {
      logger.setLevel(nullptr);
    }
    // Deliberate: a logger that inherits fails here and is reported; it inherits all the same.
    const LOGLevel* const logLevel = logger.getLevel();
    ZEB_ASSERT(logLevel, SOURCE, __LINE__);
    LOGLogLog::debug(name + " level set to " + logLevel->toString());
  });
}

}  // namespace

LOGDocumentReader::LOGDocumentReader(LOGDOMConfigurator& configurator,
                                     LOGLoggerRepository& repository, const ZEBIDOM_Element& root)
    : m_configurator(configurator),
      m_repository(repository),
      m_root(root),
      m_plan(*configurator.m_store, root,
             [this](const ZEBIDOM_Element& element) { return parseAppender(element); }) {}

void LOGDocumentReader::read() {
  const auto parse = [](const char* ofLibrary, const char* other, auto operation) {
    logContainingFailures({ofLibrary, ofLibrary, other}, operation);
  };
  // Logger factories first, wherever they stand, because loggers may need them.
  forEachChildElement(m_root, [&](const ZEBIDOM_Element& child) {
    if (child.getTagName() == Tags::CATEGORY_FACTORY_TAG) {
      constexpr const char* FAILED =
          "LOGDOMConfigurator::parseCategoryFactory -- An unknown exception has occurred";
      parse(FAILED, FAILED, [&] { parseCategoryFactory(child); });
    }
  });
  forEachChildElement(m_root, [&](const ZEBIDOM_Element& child) {
    const I18NString tag = child.getTagName();
    if (tag == Tags::LOGGER || tag == Tags::CATEGORY) {
      parse("LOGDOMConfigurator::parseLogger -- unable to lock mutex",
            "LOGDOMConfigurator::parseLogger -- An unknown exception has occurred",
            [&] { parseLogger(child); });
    } else if (tag == Tags::ROOT_TAG) {
      parse("LOGDOMConfigurator::parseRoot -- unable to lock mutex",
            "LOGDOMConfigurator::parseRoot -- An unknown exception has occurred",
            [&] { parseChildrenOfLoggerElement(child, m_repository.getRootLogger(), true, {}); });
    } else if (tag == Tags::RENDERER_TAG) {
      parse("LOGDOMConfigurator::parseRenderer -- unable to lock mutex",
            "LOGDOMConfigurator::parseRenderer -- An unknown exception has occurred",
            [&] { parseRenderer(child); });
    }
  });
  m_plan.carryOut(m_repository);
}

void LOGDocumentReader::parseCategoryFactory(const ZEBIDOM_Element& element) {
  const I18NString className = classOf(element);
  if (className.isEmpty()) {
    LOGLogLog::error("Category Factory tag " + Tags::CLASS_ATTR + " attribute not found.");
    LOGLogLog::debug("No Category Factory configured.");
    return;
  }
  LOGLogLog::debug("Desired category factory: [" + className + "]");
  reportUnlessBaseName(className);
  // The element's params are accepted and mean nothing.
  ZEBSharedLibrary& library = LOGDOMConfigurator::m_hFactInst;
  if (library.load(className) == 0) {
    return;
  }
  LOGLoggerFactory* const factory = makerIn<LOGLoggerFactory>(library, "getLoggerFactory")();
  if (factory == nullptr) {
    LOGLogLog::debug("The library [" + className + "] has made no logger factory.");
  } else {
    LOGDOMConfigurator::m_loggerFactory = factory;
  }
}

void LOGDocumentReader::parseLogger(const ZEBIDOM_Element& element) {
  LOGLogger* const logger = findLogger(element.getAttribute(Tags::LOG4ZEB_NAME_ATTR),
                                       classOf(element), LOGDOMConfigurator::m_loggerFactory);
  if (logger == nullptr) {
    return;
  }
  const bool additive =
      !I18NLocale::equalIgnoreCase(element.getAttribute(Tags::ADDITIVITY_ATTR), "false");
  LOGLogLog::debug("Setting [" + logger->getName() + "] additivity to [" +
                   (additive ? "true" : "false") + "]");
  // Set with the appenders, so that no event meets the old ones with the new additivity.
  try {
    parseChildrenOfLoggerElement(element, logger, false, additive ? 1 : 0);
  } catch (...) {
    logger->setAdditivity(additive ? 1 : 0);
    throw;
  }
}

void LOGDocumentReader::parseChildrenOfLoggerElement(const ZEBIDOM_Element& element,
                                                     LOGLogger* logger, bool isRoot,
                                                     std::optional<int> additive) {
  constexpr const char* PREFIX = "LOGDOMConfigurator::parseChildrenOfLoggerElement : ";
  ZEB_ASSERT(logger, SOURCE, __LINE__);
  LOGLogLog::debug(PREFIX + ("remove all appenders from logger " + logger->getName()));
  m_plan.retireAppendersOf(*logger);
  std::vector<LOGAppenderSkeleton*> appenders;
  forEachChildElement(element, [&](const ZEBIDOM_Element& child) {
    const I18NString tag = child.getTagName();
    if (tag == Tags::APPENDER_REF_TAG) {
      const I18NString name = child.getAttribute(Tags::REF_ATTR);
      if (LOGAppenderSkeleton* const appender = m_plan.findAppenderByName(name)) {
        LOGLogLog::debug(PREFIX + ("Adding appender named [" + name) + "] to logger [" +
                         logger->getName() + "]");
        appenders.push_back(appender);
      } else {
        LOGLogLog::debug(PREFIX + ("Appender named [" + name) + "] not found.");
      }
    } else if (tag == Tags::LEVEL_TAG || tag == Tags::PRIORITY_TAG) {
      parseLevel(child, *logger, isRoot);
    } else if (tag == Tags::PARAM_TAG) {
      setParameter(child, *logger);
    }
  });
  // Only now, and all together: until here the logger had its old appenders, still open.
  logger->replaceAppenders(appenders, additive);
  m_plan.keepAppendersThatStayedAt(*logger);
  for (LOGAppenderSkeleton* const appender : appenders) {
    m_repository.fireAddAppenderEvent(logger, appender);
  }
}

void LOGDocumentReader::parseRenderer(const ZEBIDOM_Element& element) {
  const I18NString library = element.getAttribute(Tags::RENDERING_CLASS_ATTR);
  reportUnlessBaseName(library);
  if (auto* const renderers = dynamic_cast<LOGRendererSupport*>(&m_repository)) {
    renderers->getRendererMap()->load(element.getAttribute(Tags::RENDERED_CLASS_ATTR), library);
  }
}

LOGAppenderSkeleton* LOGDocumentReader::parseAppender(const ZEBIDOM_Element& element) {
  constexpr LOGFailureTexts TEXTS{
      "LOGDOMConfigurator::parseAppender -- some i18nstring error occurred",
      "LOGDOMConfigurator::parseAppender -- unable to lock mutex",
      "LOGDOMConfigurator::parseAppender -- An unknown exception has occured."};
  LOGAppenderSkeleton* appender = nullptr;
  logContainingFailures(TEXTS, [&] {
    appender = newAppender(element);
    if (appender != nullptr) {
      forEachChildElement(element, [&](const ZEBIDOM_Element& child) {
        logContainingFailures(TEXTS, [&] { parseAppenderChild(child, *appender); });
      });
    }
  });
  return appender;
}

LOGAppenderSkeleton* LOGDocumentReader::newAppender(const ZEBIDOM_Element& element) {
  I18NString className = classOf(element);
  if (className == "LogLocalUDPAppender" || className == "LogTCPSocketAppender") {
    className = "LOG" + className.substring(3);
  }
  LOGLogLog::debug("Class name: [" + className + "]");
  auto appender = LOGComponentFactory::make<LOGAppenderSkeleton>(Tags::APPENDER_TAG, className);
  if (appender == nullptr) {
    LOGLogLog::warn("Could not find the appropriate class for Appenders");
    return nullptr;
  }
  if (auto* const rolling = dynamic_cast<LOGRollingFileAppender*>(appender.get())) {
    rolling->setAddProcID(element.getAttribute(Tags::ADDPROCID_ATTR) == "false" ? 0 : 1);
  }
  appender->setName(element.getAttribute(Tags::LOG4ZEB_NAME_ATTR));
  return m_configurator.m_store->add(std::move(appender));
}

void LOGDocumentReader::parseAppenderChild(const ZEBIDOM_Element& child,
                                           LOGAppenderSkeleton& appender) {
  const I18NString tag = child.getTagName();
  if (tag == Tags::PARAM_TAG) {
    setParameter(child, appender);
  } else if (tag == Tags::LAYOUT_TAG) {
    appender.setLayout(parseLayout(child));
  } else if (tag == Tags::FILTER_TAG) {
    parseFilter(child, appender);
  } else if (tag == Tags::ERROR_HANDLER_TAG) {
    parseErrorHandler(child, appender);
  } else if (tag == Tags::APPENDER_REF_TAG) {
    requestAttachment(child.getAttribute(Tags::REF_ATTR), appender);
  }
}

void LOGDocumentReader::requestAttachment(const I18NString& name, LOGAppenderSkeleton& appender) {
  auto* const attachable = dynamic_cast<LOGAppenderAttachable*>(&appender);
  if (attachable == nullptr) {
    LOGLogLog::debug("Requesting attachment of appender named [" + name + "] to appender named [" +
                     appender.getName() + "] which does not implement LOGAppenderAttachable.");
    return;
  }
  LOGLogLog::debug("Attaching appender named [" + name + "] to appender named [" +
                   appender.getName() + "]");
  if (LOGAppenderSkeleton* const referenced = m_plan.findAppenderByName(name)) {
    attachable->addAppender(referenced);
  }
}

LOGLayout* LOGDocumentReader::parseLayout(const ZEBIDOM_Element& element) {
  constexpr const char* FAILED = "Could not create the LOGLayout. Reported error follows.";
  constexpr LOGFailureTexts TEXTS{
      FAILED, FAILED, "LOGDOMConfigurator::parseLayout --- An unknown exception has occurred."};
  LOGLayout* made = nullptr;
  logContainingFailures(TEXTS, [&] {
    const I18NString className = classOf(element);
    LOGLogLog::debug("Parsing layout of class: \"" + className + "\"");
    auto layout = LOGComponentFactory::make<LOGLayout>(Tags::LAYOUT_TAG, className);
    if (layout == nullptr) {
      LOGLogLog::error(FAILED);
      LOGLogLog::error("LOGDOMConfigurator::parseLayout --- There is no layout of class \"" +
                       className + "\"");
      return;
    }
    setParameters(element, *layout);
    made = m_configurator.m_store->add(std::move(layout));
  });
  return made;
}

void LOGDocumentReader::parseFilter(const ZEBIDOM_Element& element, LOGAppenderSkeleton& appender) {
  const I18NString className = classOf(element);
  // Deliberate: the wording is that of the layouts.
  LOGLogLog::debug("Parsing layout of class: \"" + className + "\"");
  if (LOGFilter* const filter = newFilter(className)) {
    setParameters(element, *filter);
    appender.addFilter(filter);
  }
}

LOGFilter* LOGDocumentReader::newFilter(const I18NString& className) {
  const I18NString dyeTrace = "LOGLogUVDDyeTraceFilter";
  if (className != dyeTrace) {
    auto filter = LOGComponentFactory::make<LOGFilter>(Tags::FILTER_TAG, className);
    // Deliberate: a class that is not known blocks all events of the appender.
    return m_configurator.m_store->add(filter != nullptr ? std::move(filter)
                                                         : std::make_unique<LOGDenyAllFilter>());
  }
  ZEBSharedLibrary& library = LOGDOMConfigurator::m_hDyeTraceFilterInst;
  if (library.isLoaded() == 0) {
    LOGLogLog::debug("load LOGLogUVDDyeTraceFilter library.");
    if (library.load(dyeTrace) == 0) {
      return nullptr;
    }
  }
  const auto make = makerIn<LOGFilter>(library, "getUVDDyeTraceFilter");
  LOGLogLog::debug("the LOGLogUVDDyeTraceFilter library is loaded, create the filter");
  LOGFilter* const filter = make();
  return filter == nullptr ? nullptr
                           : m_configurator.m_store->add(std::unique_ptr<LOGFilter>(filter));
}

void LOGDocumentReader::parseErrorHandler(const ZEBIDOM_Element& element,
                                          LOGAppenderSkeleton& appender) {
  auto handler =
      LOGComponentFactory::make<LOGErrorHandler>(Tags::ERROR_HANDLER_TAG, classOf(element));
  if (handler == nullptr) {
    LOGLogLog::warn("Creating generic error handler");
    handler = std::make_unique<LOGErrorHandler>();
  }
  forEachChildElement(element, [&](const ZEBIDOM_Element& child) {
    const I18NString tag = child.getTagName();
    const I18NString name = child.getAttribute(Tags::REF_ATTR);
    if (tag == Tags::PARAM_TAG) {
      setParameter(child, *handler);
    } else if (tag == Tags::APPENDER_REF_TAG) {
      handler->setBackupAppender(m_plan.findAppenderByName(name));
    } else if (tag == Tags::LOGGER_REF && reportUnlessReasonable(name)) {
      handler->setLogger(m_repository.getLogger(name));
    } else if (tag == Tags::ROOT_REF) {
      handler->setLogger(m_repository.getRootLogger());
    }
  });
  appender.setErrorHandler(handler.release());
}

void LOGDocumentReader::setParameters(const ZEBIDOM_Element& parent, LOGObject& object) {
  forEachChildElement(parent, [&](const ZEBIDOM_Element& child) {
    if (child.getTagName() == Tags::PARAM_TAG) {
      setParameter(child, object);
    }
  });
}

void LOGDocumentReader::setParameter(const ZEBIDOM_Element& element, LOGObject& object) {
  LOGParameterTable::apply(object, element.getAttribute(Tags::LOG4ZEB_NAME_ATTR),
                           element.getAttribute(Tags::VALUE_ATTR), [this](const I18NString& name) {
                             return m_configurator.m_procIdFlag == 1
                                        ? addProcIDToFileName(name, m_configurator.m_procId)
                                        : name;
                           });
}
