#include "config/LOGDOMConfigurator.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <utility>

#include "appenders/LOGAppenderClaim.h"
#include "appenders/LOGAppenderPin.h"
#include "appenders/LOGAppenderSkeleton.h"
#include "appenders/LOGAsyncAppender.h"
#include "appenders/LOGRollingFileAppender.h"
#include "config/LOGComponentFactory.h"
#include "config/LOGParameterTable.h"
#include "core/LOGConfiguratorHook.h"
#include "core/LOGFailures.h"
#include "core/LOGHierarchy.h"
#include "core/LOGLogger.h"
#include "core/LOGManager.h"
#include "filters/LOGDenyAllFilter.h"
#include "layouts/LOGLayout.h"
#include "net/LOGLocalUDPAppender.h"
#include "platform/I18NLocale.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBIDOM_DOMImplementation.h"
#include "platform/ZEBIDOM_Document.h"
#include "platform/ZEBIDOM_Element.h"
#include "platform/ZEBIDOM_NodeList.h"
#include "platform/ZEBIDOM_Parser.h"
#include "platform/ZEBSharedLibrary.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBThreadOuterGuard.h"
#include "platform/ZEBTranslate.h"
#include "platform/ZEBUtConvert.h"
#include "platform/ZEBUtProcess.h"
#include "rendering/LOGRendererMap.h"
#include "rendering/LOGRendererSupport.h"

const I18NString LOGDOMConfigurator::CONFIGURATION_TAG = "log4j:configuration";
const I18NString LOGDOMConfigurator::OLD_CONFIGURATION_TAG = "configuration";
const I18NString LOGDOMConfigurator::CATEGORY_FACTORY_TAG = "categoryFactory";
const I18NString LOGDOMConfigurator::LOGGER = "logger";
const I18NString LOGDOMConfigurator::CATEGORY = "category";
const I18NString LOGDOMConfigurator::ROOT_TAG = "root";
const I18NString LOGDOMConfigurator::RENDERER_TAG = "renderer";
const I18NString LOGDOMConfigurator::APPENDER_TAG = "appender";
const I18NString LOGDOMConfigurator::APPENDER_REF_TAG = "appender-ref";
const I18NString LOGDOMConfigurator::PARAM_TAG = "param";
const I18NString LOGDOMConfigurator::LAYOUT_TAG = "layout";
const I18NString LOGDOMConfigurator::FILTER_TAG = "filter";
const I18NString LOGDOMConfigurator::ERROR_HANDLER_TAG = "errorHandler";
const I18NString LOGDOMConfigurator::LEVEL_TAG = "level";
const I18NString LOGDOMConfigurator::PRIORITY_TAG = "priority";
const I18NString LOGDOMConfigurator::LOGGER_REF = "logger-ref";
const I18NString LOGDOMConfigurator::ROOT_REF = "root-ref";
const I18NString LOGDOMConfigurator::LOG4ZEB_NAME_ATTR = "name";
const I18NString LOGDOMConfigurator::VALUE_ATTR = "value";
const I18NString LOGDOMConfigurator::CLASS_ATTR = "class";
const I18NString LOGDOMConfigurator::REF_ATTR = "ref";
const I18NString LOGDOMConfigurator::ADDITIVITY_ATTR = "additivity";
const I18NString LOGDOMConfigurator::THRESHOLD_ATTR = "threshold";
const I18NString LOGDOMConfigurator::INTERNAL_DEBUG_ATTR = "debug";
const I18NString LOGDOMConfigurator::CONFIG_DEBUG_ATTR = "configDebug";
const I18NString LOGDOMConfigurator::RENDERING_CLASS_ATTR = "renderingClass";
const I18NString LOGDOMConfigurator::RENDERED_CLASS_ATTR = "renderedClass";
const I18NString LOGDOMConfigurator::ADDPROCID_ATTR = "addProcID";
const I18NString LOGDOMConfigurator::dbfKey = "LOGDocumentBuilderFactory";
const I18NString LOGDOMConfigurator::EMPTY_STR;

LOGDOMConfigurator* LOGDOMConfigurator::m_domConfig = nullptr;
LOGLoggerFactory* LOGDOMConfigurator::m_loggerFactory = nullptr;
ZEBSharedLibrary& LOGDOMConfigurator::m_hFactInst = *new ZEBSharedLibrary;
ZEBSharedLibrary& LOGDOMConfigurator::m_hDyeTraceFilterInst = *new ZEBSharedLibrary;

namespace {

constexpr const char* SOURCE = "LOGDOMConfigurator";
constexpr const char* NULL_WORD = "null";
constexpr const char* INHERITED_WORD = "inherited";
constexpr int ELEMENT_NODE = 1;
// Appenders refer to others two or three deep; a document that goes on and on would overflow the
// stack.
constexpr std::size_t DEEPEST_REFERENCES = 64;

// Each is compared with all others of its logger.
constexpr std::size_t MOST_APPENDERS = 1000;

/// The first lock of all: it serialises runs and shutdowns.
ZEBThreadCriticalSection g_runLock;

constexpr LOGFailureTexts DO_CONFIGURE_TEXTS{
    "LOGDOMConfigurator::doConfigure -- some i18nstring exception occurred",
    "LOGDOMConfigurator::doConfigure -- some ZEBThrowable exception occurred",
    "LOGDOMConfigurator::doConfigure -- An unknown exception has occurred."};

bool isAsynchronous(const LOGAppenderSkeleton& appender) {
  return dynamic_cast<const LOGAsyncAppender*>(&appender) != nullptr;
}

/// Runs one step of taking appenders out of use.
template <typename Operation>
void contained(Operation operation) noexcept {
  logContainingFailures(
      LOGFailureTexts::same("LOGDOMConfigurator -- an appender could not be taken out of use"),
      operation);
}

/// Whether this thread is in a run, and so is whatever it calls.
thread_local bool t_isRunning = false;

class Running {
 public:
  Running() { t_isRunning = true; }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;
  ~Running() { t_isRunning = false; }
};

/// Reports that `what` is refused, if this is within a run. Returns whether it is.
bool isRefused(const char* what) {
  if (t_isRunning) {
    LOGLogLog::error(I18NString(what) +
                     " -- refused, because this thread is reading a configuration document");
  }
  return t_isRunning;
}

bool isSet(const I18NString& attribute) { return !attribute.isEmpty() && attribute != NULL_WORD; }

I18NString quoted(const I18NString& text) { return "\"" + text + "\""; }

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

/// The file and, where the parser knows them, the line and column.
I18NString placeOfError(const I18NString& fileName, const ZEBIDOM_Parser& parser) {
  if (parser.getErrorLine() == 0) {
    return fileName;
  }
  return fileName + ":" + ZEBUtConvert::handleCvt(parser.getErrorLine()) + ":" +
         ZEBUtConvert::handleCvt(parser.getErrorColumn());
}

/// Calls `visit` with each element among the children, in document order.
template <typename Visitor>
void forEachChildElement(const ZEBIDOM_Element& parent, Visitor visit) {
  const ZEBIDOM_NodeList children = parent.getChildNodes();
  for (std::size_t i = 0; i < children.getLength(); ++i) {
    const ZEBIDOM_Node child = children.item(i);
    if (child.getNodeType() == ELEMENT_NODE) {
      visit(ZEBIDOM_Element(child));
    }
  }
}

}  // namespace

LOGDOMConfigurator::LOGDOMConfigurator() : m_appenderBag(std::make_unique<LOGHashtable>()) {}

LOGDOMConfigurator::~LOGDOMConfigurator() {
  // Asynchronous ones first: they end threads that use the others.
  for (const bool isAsync : {true, false}) {
    forEachAppender([isAsync](LOGAppenderSkeleton& appender) {
      if (isAsynchronous(appender) == isAsync) {
        contained([&] { appender.close(); });
      }
    });
  }
  forEachAppender(
      [this](LOGAppenderSkeleton& appender) { contained([&] { detachFromLoggers(&appender); }); });
  m_appenderBag->forget();
  m_objectTable.forget();
  // Asynchronous ones again: destroying one waits for its thread, which a close() need not have
  // done.
  for (auto* const appenders : {&m_appenders, &m_staleAppenders}) {
    for (auto& appender : *appenders) {
      LOGAppenderPin::awaitOthers(nullptr, appender.get());
      if (isAsynchronous(*appender)) {
        appender.reset();
      }
    }
  }
}

template <typename Operation>
void LOGDOMConfigurator::forEachAppender(Operation operation) const {
  for (const auto* const appenders : {&m_appenders, &m_staleAppenders}) {
    for (const auto& appender : *appenders) {
      operation(*appender);
    }
  }
}

void LOGDOMConfigurator::initialize() {
  const ZEBThreadOuterGuard guard(g_runLock);
  if (m_domConfig == nullptr) {
    m_domConfig = zebTranslate(SOURCE, __LINE__, [] { return new LOGDOMConfigurator; });
    LOGConfiguratorHook::registerConfigurator(&LOGDOMConfigurator::shutdown,
                                              &LOGDOMConfigurator::runExclusively,
                                              &LOGDOMConfigurator::forgetRepository);
  }
}

void LOGDOMConfigurator::shutdown() {
  runExclusively([] { delete std::exchange(m_domConfig, nullptr); });
}

bool LOGDOMConfigurator::runExclusively(const std::function<void()>& operation) {
  if (isRefused("LOGDOMConfigurator::shutdown")) {
    return false;
  }
  const ZEBThreadOuterGuard guard(g_runLock);
  operation();
  return true;
}

template <typename Operation>
int LOGDOMConfigurator::run(Operation operation) {
  int configured = 0;
  logContainingFailures(DO_CONFIGURE_TEXTS, [&] {
    if (isRefused("LOGDOMConfigurator::doConfigure")) {
      return;
    }
    const ZEBThreadOuterGuard guard(g_runLock);
    const Running running;
    initialize();
    configured = operation();
  });
  return configured;
}

int LOGDOMConfigurator::configure(const I18NString& fileName) {
  return run([&] { return m_domConfig->doConfigure(fileName, LOGManager::getLoggerRepository()); });
}

int LOGDOMConfigurator::configureWithProcID(const I18NString& fileName) {
  return run([&] {
    applyProcIDtoFileAppender(1);
    const int configured = m_domConfig->doConfigure(fileName, LOGManager::getLoggerRepository());
    applyProcIDtoFileAppender(0);
    return configured;
  });
}

int LOGDOMConfigurator::configure(const ZEBIDOM_Element& root) {
  return run([&] { return m_domConfig->doConfigure(root, LOGManager::getLoggerRepository()); });
}

void LOGDOMConfigurator::configureAndWatch(const I18NString&) {}

void LOGDOMConfigurator::configureAndWatch(const I18NString&, unsigned int) {}

bool LOGDOMConfigurator::isReasonableLoggerName(const I18NString& name) {
  // The table of loggers keeps each beginning of a name that ends before a dot.
  constexpr std::size_t LONGEST = 1024;
  constexpr std::ptrdiff_t MOST_DOTS = 64;
  const std::string bytes = name.toStdString();
  return name.length() <= LONGEST && std::count(bytes.begin(), bytes.end(), '.') <= MOST_DOTS;
}

void LOGDOMConfigurator::applyProcIDtoFileAppender(int on) {
  const ZEBThreadOuterGuard guard(g_runLock);
  initialize();
  m_domConfig->m_procIdFlag = on;
  if (on == 1) {
    m_domConfig->m_procId = ZEBUtProcess::currentProcessId();
  }
}

int LOGDOMConfigurator::doConfigure(const I18NString& fileName, LOGLoggerRepository* repository) {
  int configured = 0;
  logContainingFailures(DO_CONFIGURE_TEXTS, [&] {
    std::string bytes = fileName.toStdString();
    configured = doConfigure(bytes.data(), repository);
  });
  return configured;
}

int LOGDOMConfigurator::doConfigure(char* fileName, LOGLoggerRepository* repository) {
  int configured = 0;
  logContainingFailures(DO_CONFIGURE_TEXTS, [&] {
    const ZEBThreadOuterGuard guard(g_runLock);
    use(repository);
    configured = parseFile(fileName) ? 1 : 0;
  });
  return configured;
}

int LOGDOMConfigurator::doConfigure(const ZEBIDOM_Element& root, LOGLoggerRepository* repository) {
  int configured = 0;
  logContainingFailures(DO_CONFIGURE_TEXTS, [&] {
    const ZEBThreadOuterGuard guard(g_runLock);
    use(repository);
    configured = parse(root) ? 1 : 0;
  });
  return configured;
}

bool LOGDOMConfigurator::parseFile(const I18NString& fileName) {
  ZEBIDOM_Document document = ZEBIDOM_DOMImplementation::getInstance().createDocument();
  ZEBIDOM_Parser parser(0);
  parser.setLoadExternalDTD(0);
  if (parser.parse(fileName, document) == 0) {
    LOGLogLog::error("Could not parse the document");
    LOGLogLog::error(placeOfError(fileName, parser) + ": " + parser.getErrorReason());
    return false;
  }
  return parse(document.getDocumentElement());
}

bool LOGDOMConfigurator::parse(const ZEBIDOM_Element& root) {
  ZEB_ASSERT(m_repository, SOURCE, __LINE__);
  if (!hasConfigurationTag(root)) {
    return false;
  }
  const unsigned memoryFailures = logMemoryFailures();
  applyRootAttributes(root);
  beginRun(root);
  // Logger factories first, wherever they stand, because loggers may need them.
  forEachChildElement(root, [this](const ZEBIDOM_Element& child) {
    if (child.getTagName() == CATEGORY_FACTORY_TAG) {
      logContainingFailures(
          LOGFailureTexts::same(
              "LOGDOMConfigurator::parseCategoryFactory -- An unknown exception has occurred"),
          [&] { parseCategoryFactory(child); });
    }
  });
  forEachChildElement(root, [this](const ZEBIDOM_Element& child) {
    const I18NString tag = child.getTagName();
    if (tag == LOGGER || tag == CATEGORY) {
      parseLogger(child);
    } else if (tag == ROOT_TAG) {
      parseRoot(child);
    } else if (tag == RENDERER_TAG) {
      parseRenderer(child);
    }
  });
  endRun();
  if (logMemoryFailures() != memoryFailures) {
    return false;
  }
  m_doubtful.clear();
  return true;
}

bool LOGDOMConfigurator::hasConfigurationTag(const ZEBIDOM_Element& root) const {
  const I18NString tag = root.getTagName();
  if (tag == CONFIGURATION_TAG) {
    return true;
  }
  if (tag == OLD_CONFIGURATION_TAG) {
    LOGLogLog::warn("The <" + OLD_CONFIGURATION_TAG + "> element has been deprecated.");
    LOGLogLog::warn("Use the <" + CONFIGURATION_TAG + "> element instead.");
    return true;
  }
  LOGLogLog::error("DOM element is - not a <" + CONFIGURATION_TAG + "> element.");
  return false;
}

void LOGDOMConfigurator::applyRootAttributes(const ZEBIDOM_Element& root) {
  const I18NString debug = root.getAttribute(INTERNAL_DEBUG_ATTR);
  LOGLogLog::debug("debug attributes= " + quoted(debug));
  // Any value switches debugging on, "false" included: only an empty one and "null" do not.
  if (isSet(debug)) {
    LOGLogLog::setInternalDebugging(1);
  } else {
    LOGLogLog::debug("Ignoring " + INTERNAL_DEBUG_ATTR + " attribute.");
  }
  if (isSet(root.getAttribute(CONFIG_DEBUG_ATTR))) {
    LOGLogLog::warn("The " + quoted(CONFIG_DEBUG_ATTR) + " attribute is deprecated.");
    LOGLogLog::warn("Use the " + quoted(INTERNAL_DEBUG_ATTR) + " attribute instead.");
    LOGLogLog::setInternalDebugging(1);
  }
  const I18NString threshold = root.getAttribute(THRESHOLD_ATTR);
  LOGLogLog::debug("Threshold =" + quoted(threshold));
  if (isSet(threshold)) {
    m_repository->setThreshold(threshold);
  }
}

void LOGDOMConfigurator::parseCategoryFactory(const ZEBIDOM_Element& element) {
  const I18NString className = classOf(element);
  if (className.isEmpty()) {
    LOGLogLog::error("Category Factory tag " + CLASS_ATTR + " attribute not found.");
    LOGLogLog::debug("No Category Factory configured.");
    return;
  }
  LOGLogLog::debug("Desired category factory: [" + className + "]");
  reportUnlessBaseName(className);
  // The element's params are accepted and mean nothing.
  if (m_hFactInst.load(className) == 0) {
    return;
  }
  const auto function =
      reinterpret_cast<LOGLoggerFactory* (*)()>(m_hFactInst.getSymbol("getLoggerFactory"));
  if (function == nullptr) {
    ZEBAssertError::fail("ZEB_ASSERT_NAMED(function != NULL, \"getLoggerFactory\");", SOURCE,
                         __LINE__);
  }
  LOGLoggerFactory* const factory = function();
  if (factory == nullptr) {
    LOGLogLog::debug("The library [" + className + "] has made no logger factory.");
    return;
  }
  m_loggerFactory = factory;
}

void LOGDOMConfigurator::parseLogger(const ZEBIDOM_Element& element) {
  constexpr const char* LOCK_TEXT = "LOGDOMConfigurator::parseLogger -- unable to lock mutex";
  constexpr LOGFailureTexts TEXTS{
      LOCK_TEXT, LOCK_TEXT, "LOGDOMConfigurator::parseLogger -- An unknown exception has occurred"};
  logContainingFailures(TEXTS, [&] {
    const ZEBThreadOuterGuard guard(*this);
    LOGLogger* const logger = findLogger(element.getAttribute(LOG4ZEB_NAME_ATTR), classOf(element));
    if (logger == nullptr) {
      return;
    }
    const bool additive =
        !I18NLocale::equalIgnoreCase(element.getAttribute(ADDITIVITY_ATTR), "false");
    LOGLogLog::debug("Setting [" + logger->getName() + "] additivity to [" +
                     (additive ? "true" : "false") + "]");
    // Set with the appenders, so that no event meets the old ones with the new additivity.
    try {
      parseChildrenOfLoggerElement(element, logger, false, additive ? 1 : 0);
    } catch (...) {
      logger->setAdditivity(additive ? 1 : 0);
      throw;
    }
  });
}

LOGLogger* LOGDOMConfigurator::findLogger(const I18NString& name, const I18NString& className) {
  if (!reportUnlessReasonable(name)) {
    return nullptr;
  }
  if (className.isEmpty()) {
    LOGLogLog::debug("Retrieving an instance of LOGLogger: " + name);
    return LOGManager::getLogger(name);
  }
  LOGLogLog::debug("Desired logger sub-class: [" + className + "]");
  if (m_loggerFactory == nullptr) {
    LOGLogLog::error("Logger Factory missing from config document; please add and restart");
    return nullptr;
  }
  LOGLogger* const logger = LOGManager::getLogger(name, m_loggerFactory);
  if (logger == nullptr) {
    LOGLogLog::error("Could not retrieve logger [" + name + "]. Reported error follows.");
  }
  return logger;
}

void LOGDOMConfigurator::parseRoot(const ZEBIDOM_Element& element) {
  constexpr const char* LOCK_TEXT = "LOGDOMConfigurator::parseRoot -- unable to lock mutex";
  constexpr LOGFailureTexts TEXTS{
      LOCK_TEXT, LOCK_TEXT, "LOGDOMConfigurator::parseRoot -- An unknown exception has occurred"};
  logContainingFailures(TEXTS, [&] {
    const ZEBThreadOuterGuard guard(*this);
    parseChildrenOfLoggerElement(element, m_repository->getRootLogger(), true, std::nullopt);
  });
}

void LOGDOMConfigurator::parseChildrenOfLoggerElement(const ZEBIDOM_Element& element,
                                                      LOGLogger* logger, bool isRoot,
                                                      std::optional<int> additive) {
  ZEB_ASSERT(logger, SOURCE, __LINE__);
  LOGLogLog::debug(
      "LOGDOMConfigurator::parseChildrenOfLoggerElement : remove all appenders from logger " +
      logger->getName());
  retireAppendersOf(*logger);
  std::vector<LOGAppenderSkeleton*> appenders;
  forEachChildElement(element, [&](const ZEBIDOM_Element& child) {
    const I18NString tag = child.getTagName();
    if (tag == APPENDER_REF_TAG) {
      LOGAppenderSkeleton* const appender = referencedAppender(child, *logger);
      if (appender != nullptr) {
        appenders.push_back(appender);
      }
    } else if (tag == LEVEL_TAG || tag == PRIORITY_TAG) {
      parseLevel(child, *logger, isRoot);
    } else if (tag == PARAM_TAG) {
      setParameter(child, logger);
    }
  });
  // Only now, and all together: until here the logger had its old appenders, still open.
  logger->replaceAppenders(appenders, nullptr, additive);
  keepAppendersThatStayedAt(*logger);
  for (LOGAppenderSkeleton* const appender : appenders) {
    m_repository->fireAddAppenderEvent(logger, appender);
  }
}

LOGAppenderSkeleton* LOGDOMConfigurator::referencedAppender(const ZEBIDOM_Element& reference,
                                                            const LOGLogger& logger) {
  const I18NString name = reference.getAttribute(REF_ATTR);
  LOGAppenderSkeleton* const appender = findAppenderByReference(reference);
  if (appender == nullptr) {
    LOGLogLog::debug("LOGDOMConfigurator::parseChildrenOfLoggerElement : Appender named [" + name +
                     "] not found.");
  } else {
    LOGLogLog::debug("LOGDOMConfigurator::parseChildrenOfLoggerElement : Adding appender named [" +
                     name + "] to logger [" + logger.getName() + "]");
  }
  return appender;
}

void LOGDOMConfigurator::parseLevel(const ZEBIDOM_Element& element, LOGLogger& logger,
                                    bool isRoot) {
  const I18NString value = element.getAttribute(VALUE_ATTR);
  const std::string failed =
      ("Could not create level [" + value + "] Reported error follows.").toStdString();
  const LOGFailureTexts texts{
      failed.c_str(), failed.c_str(),
      "LOGDOMConfigurator::parseLevel --- An unknown exception has occurred."};
  logContainingFailures(texts, [&] {
    const I18NString name = isRoot ? I18NString("root") : logger.getName();
    LOGLogLog::debug("Level value for " + name + " is  [" + value + "]");
    if (value == INHERITED_WORD || value == NULL_WORD) {
      if (isRoot) {
        LOGLogLog::error("Root level cannot be inherited. Ignoring directive.");
      } else {
        logger.setLevel(nullptr);
      }
    } else {
      const I18NString className = classOf(element);
      if (!className.isEmpty()) {
        // The class is noted and never changes the result.
        LOGLogLog::debug("Desired LOGLevel sub-class: [" + className + "]");
      }
      logger.setLevel(LOGLevel::toLevel(value));
    }
    // A logger that inherits fails here and is reported, on purpose; it inherits all the same.
    const LOGLevel* const logLevel = logger.getLevel();
    ZEB_ASSERT(logLevel, SOURCE, __LINE__);
    LOGLogLog::debug(name + " level set to " + logLevel->toString());
  });
}

void LOGDOMConfigurator::parseRenderer(const ZEBIDOM_Element& element) {
  constexpr const char* LOCK_TEXT = "LOGDOMConfigurator::parseRenderer -- unable to lock mutex";
  constexpr LOGFailureTexts TEXTS{
      LOCK_TEXT, LOCK_TEXT,
      "LOGDOMConfigurator::parseRenderer -- An unknown exception has occurred"};
  logContainingFailures(TEXTS, [&] {
    const ZEBThreadOuterGuard guard(*this);
    reportUnlessBaseName(element.getAttribute(RENDERING_CLASS_ATTR));
    auto* const renderers = dynamic_cast<LOGRendererSupport*>(m_repository);
    if (renderers != nullptr) {
      renderers->getRendererMap()->load(element.getAttribute(RENDERED_CLASS_ATTR),
                                        element.getAttribute(RENDERING_CLASS_ATTR));
    }
  });
}

LOGAppenderSkeleton* LOGDOMConfigurator::findAppenderByReference(const ZEBIDOM_Element& reference) {
  return findAppenderByName(reference.getAttribute(REF_ATTR));
}

LOGAppenderSkeleton* LOGDOMConfigurator::findAppenderByName(const I18NString& name) {
  constexpr const char* PREFIX = "LOGDOMConfigurator::findAppenderByName : ";
  const auto found = m_appenderElements.find(name);
  if (LOGAppenderSkeleton* const known = usableAppender(name)) {
    LOGLogLog::debug(PREFIX + ("The appender " + name) +
                     " already exists in appender bag, return it.");
    if (found != m_appenderElements.end()) {
      found->second.isInUse = true;
    }
    return known;
  }
  LOGLogLog::debug(PREFIX + ("The appender " + name) +
                   " doesn't exist in appender bag or is already stale, parse from dom.");
  // An appender that is being built refers to itself, directly or through others.
  const bool isCircle =
      std::find(m_appendersUnderConstruction.begin(), m_appendersUnderConstruction.end(), name) !=
      m_appendersUnderConstruction.end();
  if (found == m_appenderElements.end() || isCircle ||
      m_appendersUnderConstruction.size() == DEEPEST_REFERENCES) {
    LOGLogLog::error(PREFIX + ("No appender named [" + name) + "] could be found.");
    return nullptr;
  }
  if (m_appendersOfRun == MOST_APPENDERS) {
    LOGLogLog::error("A document has no more than 1000 appenders in use; left out is [" + name +
                     "]");
    return nullptr;
  }
  m_appendersUnderConstruction.push_back(name);
  LOGAppenderSkeleton* const appender = parseAppender(found->second.element);
  m_appendersUnderConstruction.pop_back();
  if (appender != nullptr) {
    succeedRetired(*appender);
    ++m_appendersOfRun;
    found->second.isInUse = true;
    LOGLogLog::debug(PREFIX + ("Put appender " + name) + " into the appender bag.");
    m_appenderBag->put(name, appender);
  }
  return appender;
}

LOGAppenderSkeleton* LOGDOMConfigurator::parseAppender(const ZEBIDOM_Element& element) {
  constexpr LOGFailureTexts TEXTS{
      "LOGDOMConfigurator::parseAppender -- some i18nstring error occurred",
      "LOGDOMConfigurator::parseAppender -- unable to lock mutex",
      "LOGDOMConfigurator::parseAppender -- An unknown exception has occured."};
  LOGAppenderSkeleton* appender = nullptr;
  logContainingFailures(TEXTS, [&] {
    const ZEBThreadOuterGuard guard(*this);
    appender = newAppender(element);
    if (appender != nullptr) {
      forEachChildElement(element, [&](const ZEBIDOM_Element& child) {
        logContainingFailures(TEXTS, [&] { parseAppenderChild(child, *appender); });
      });
    }
  });
  return appender;
}

LOGAppenderSkeleton* LOGDOMConfigurator::newAppender(const ZEBIDOM_Element& element) {
  I18NString className = classOf(element);
  if (className == "LogLocalUDPAppender" || className == "LogTCPSocketAppender") {
    className = "LOG" + className.substring(3);
  }
  LOGLogLog::debug("Class name: [" + className + "]");
  std::unique_ptr<LOGAppenderSkeleton> appender = LOGComponentFactory::newAppender(className);
  if (appender == nullptr) {
    LOGLogLog::warn("Could not find the appropriate class for Appenders");
    return nullptr;
  }
  if (auto* const rolling = dynamic_cast<LOGRollingFileAppender*>(appender.get())) {
    const I18NString addProcId = element.getAttribute(ADDPROCID_ATTR);
    rolling->setAddProcID(addProcId == "false" ? 0 : 1);
  }
  appender->setName(element.getAttribute(LOG4ZEB_NAME_ATTR));
  m_doubtful.push_back(appender.get());
  try {
    m_own.insert(appender.get());
    m_appenders.push_back(std::move(appender));
  } catch (...) {
    m_own.erase(appender.get());
    m_doubtful.pop_back();
    throw;
  }
  return m_appenders.back().get();
}

void LOGDOMConfigurator::parseAppenderChild(const ZEBIDOM_Element& child,
                                            LOGAppenderSkeleton& appender) {
  const I18NString tag = child.getTagName();
  if (tag == PARAM_TAG) {
    setParameter(child, &appender);
  } else if (tag == LAYOUT_TAG) {
    LOGLayout* const layout = parseLayout(child);
    if (layout != nullptr) {
      m_objectTable.put(layout->instanceOf(), layout);
      appender.setLayout(layout);
    }
  } else if (tag == FILTER_TAG) {
    parseFilters(child, &appender);
  } else if (tag == ERROR_HANDLER_TAG) {
    parseErrorHandler(child, &appender);
  } else if (tag == APPENDER_REF_TAG) {
    requestAttachment(child, appender);
  }
}

void LOGDOMConfigurator::requestAttachment(const ZEBIDOM_Element& reference,
                                           LOGAppenderSkeleton& appender) {
  const I18NString name = reference.getAttribute(REF_ATTR);
  auto* const attachable = dynamic_cast<LOGAppenderAttachable*>(&appender);
  if (attachable == nullptr) {
    LOGLogLog::debug("Requesting attachment of appender named [" + name + "] to appender named [" +
                     appender.getName() + "] which does not implement LOGAppenderAttachable.");
    return;
  }
  LOGLogLog::debug("Attaching appender named [" + name + "] to appender named [" +
                   appender.getName() + "]");
  LOGAppenderSkeleton* const referenced = findAppenderByReference(reference);
  if (referenced != nullptr) {
    attachable->addAppender(referenced);
  }
}

LOGLayout* LOGDOMConfigurator::parseLayout(const ZEBIDOM_Element& element) {
  constexpr const char* FAILED = "Could not create the LOGLayout. Reported error follows.";
  constexpr LOGFailureTexts TEXTS{
      FAILED, FAILED, "LOGDOMConfigurator::parseLayout --- An unknown exception has occurred."};
  LOGLayout* made = nullptr;
  logContainingFailures(TEXTS, [&] {
    const I18NString className = classOf(element);
    LOGLogLog::debug("Parsing layout of class: " + quoted(className));
    std::unique_ptr<LOGLayout> layout = LOGComponentFactory::newLayout(className);
    if (layout == nullptr) {
      LOGLogLog::error(FAILED);
      LOGLogLog::error("LOGDOMConfigurator::parseLayout --- There is no layout of class " +
                       quoted(className));
      return;
    }
    setParameters(element, *layout);
    m_layouts.push_back(std::move(layout));
    made = m_layouts.back().get();
  });
  return made;
}

void LOGDOMConfigurator::parseFilters(const ZEBIDOM_Element& element,
                                      LOGAppenderSkeleton* appender) {
  const I18NString className = classOf(element);
  // The wording is that of the layouts, on purpose.
  LOGLogLog::debug("Parsing layout of class: " + quoted(className));
  LOGFilter* const filter = newFilter(className);
  if (filter == nullptr) {
    return;
  }
  setParameters(element, *filter);
  m_objectTable.put(filter->instanceOf(), filter);
  ZEB_ASSERT(appender, SOURCE, __LINE__);
  appender->addFilter(filter);
}

LOGFilter* LOGDOMConfigurator::newFilter(const I18NString& className) {
  if (className == "LOGLogUVDDyeTraceFilter") {
    return newDyeTraceFilter();
  }
  std::unique_ptr<LOGFilter> filter = LOGComponentFactory::newFilter(className);
  if (filter == nullptr) {
    // A class that is not known blocks all events of the appender, on purpose.
    filter = std::make_unique<LOGDenyAllFilter>();
  }
  m_filters.push_back(std::move(filter));
  return m_filters.back().get();
}

LOGFilter* LOGDOMConfigurator::newDyeTraceFilter() {
  if (m_hDyeTraceFilterInst.isLoaded() == 0) {
    LOGLogLog::debug("load LOGLogUVDDyeTraceFilter library.");
    if (m_hDyeTraceFilterInst.load("LOGLogUVDDyeTraceFilter") == 0) {
      return nullptr;
    }
  }
  const auto function =
      reinterpret_cast<LOGFilter* (*)()>(m_hDyeTraceFilterInst.getSymbol("getUVDDyeTraceFilter"));
  if (function == nullptr) {
    ZEBAssertError::fail("ZEB_ASSERT_NAMED(function != NULL, \"getUVDDyeTraceFilter\");", SOURCE,
                         __LINE__);
  }
  LOGLogLog::debug("the LOGLogUVDDyeTraceFilter library is loaded, create the filter");
  LOGFilter* const filter = function();
  const bool isKnown = std::any_of(m_filters.begin(), m_filters.end(),
                                   [&](const auto& known) { return known.get() == filter; });
  if (filter != nullptr && !isKnown) {
    m_filters.push_back(std::unique_ptr<LOGFilter>(filter));
  }
  return filter;
}

void LOGDOMConfigurator::parseErrorHandler(const ZEBIDOM_Element& element,
                                           LOGAppenderSkeleton* appender) {
  std::unique_ptr<LOGErrorHandler> handler = LOGComponentFactory::newErrorHandler(classOf(element));
  if (handler == nullptr) {
    LOGLogLog::warn("Creating generic error handler");
    handler = std::make_unique<LOGErrorHandler>();
  }
  forEachChildElement(
      element, [&](const ZEBIDOM_Element& child) { parseErrorHandlerChild(child, *handler); });
  m_objectTable.put(handler->instanceOf(), handler.get());
  ZEB_ASSERT(appender, SOURCE, __LINE__);
  appender->setErrorHandler(handler.release());
}

void LOGDOMConfigurator::parseErrorHandlerChild(const ZEBIDOM_Element& child,
                                                LOGErrorHandler& handler) {
  const I18NString tag = child.getTagName();
  if (tag == PARAM_TAG) {
    setParameter(child, &handler);
  } else if (tag == APPENDER_REF_TAG) {
    handler.setBackupAppender(findAppenderByReference(child));
  } else if (tag == LOGGER_REF) {
    ZEB_ASSERT(m_repository, SOURCE, __LINE__);
    const I18NString name = child.getAttribute(REF_ATTR);
    if (reportUnlessReasonable(name)) {
      handler.setLogger(m_repository->getLogger(name));
    }
  } else if (tag == ROOT_REF) {
    ZEB_ASSERT(m_repository, SOURCE, __LINE__);
    handler.setLogger(m_repository->getRootLogger());
  }
}

void LOGDOMConfigurator::setParameters(const ZEBIDOM_Element& parent, LOGObject& object) {
  forEachChildElement(parent, [&](const ZEBIDOM_Element& child) {
    if (child.getTagName() == PARAM_TAG) {
      setParameter(child, &object);
    }
  });
}

void LOGDOMConfigurator::setParameter(const ZEBIDOM_Element& element, LOGObject* object) {
  if (object != nullptr) {
    LOGParameterTable::apply(*object, element.getAttribute(LOG4ZEB_NAME_ATTR),
                             element.getAttribute(VALUE_ATTR),
                             [this](const I18NString& name) { return resolveFileName(name); });
  }
}

I18NString LOGDOMConfigurator::classOf(const ZEBIDOM_Element& element) const {
  return subst(element.getAttribute(CLASS_ATTR));
}

I18NString LOGDOMConfigurator::subst(const I18NString& text) {
  const long dot = text.lastIndexOf(".");
  const auto after = static_cast<std::size_t>(dot + 1);
  return dot == I18NString::NOT_FOUND || after == text.length() ? text : text.substring(after);
}

I18NString LOGDOMConfigurator::resolveFileName(const I18NString& name) const {
  return m_procIdFlag == 1 ? addProcIDToFileName(name, m_procId) : name;
}

I18NString LOGDOMConfigurator::addProcIDToFileName(const I18NString& name, int processId) {
  const I18NString number = ZEBUtConvert::handleCvt(processId);
  // The search does not stop at a path separator, on purpose: a dot in a directory counts too.
  const long dot = name.lastIndexOf(".");
  if (dot == I18NString::NOT_FOUND) {
    return name + "_" + number;
  }
  if (dot == 0) {
    return number + name;
  }
  const auto position = static_cast<std::size_t>(dot);
  return name.substring(0, position) + "_" + number + name.substring(position);
}

void LOGDOMConfigurator::use(LOGLoggerRepository* repository) {
  m_repository = repository;
  if (repository != nullptr) {
    m_repositories.insert(repository);
  }
}

void LOGDOMConfigurator::forgetRepository(LOGLoggerRepository* repository) {
  const ZEBThreadOuterGuard guard(g_runLock);
  if (m_domConfig == nullptr || m_domConfig->m_repositories.erase(repository) == 0) {
    return;
  }
  if (m_domConfig->m_repository == repository) {
    m_domConfig->m_repository = nullptr;
  }
  // The root may live on.
  if (LOGLogger* const root = repository->getRootLogger()) {
    m_domConfig->forEachAppender([root](LOGAppenderSkeleton& appender) {
      contained([&] { root->removeAppender(&appender); });
    });
  }
}

std::vector<LOGLogger*> LOGDOMConfigurator::allLoggersOf(LOGLoggerRepository* repository) {
  if (const auto* const hierarchy = dynamic_cast<const LOGHierarchy*>(repository)) {
    return hierarchy->getAllLoggers();
  }
  std::vector<LOGLogger*> loggers;
  if (repository != nullptr) {
    loggers.push_back(repository->getRootLogger());
    for (LOGObject* const logger : repository->getCurrentLoggers()) {
      loggers.push_back(static_cast<LOGLogger*>(logger));
    }
  }
  // A repository may have no root.
  loggers.erase(std::remove(loggers.begin(), loggers.end(), nullptr), loggers.end());
  return loggers;
}

void LOGDOMConfigurator::beginRun(const ZEBIDOM_Element& root) {
  // What a run that lacked memory has left to be closed is closed by this one; a program's own
  // appenders may be gone by now.
  m_retired.erase(std::remove_if(m_retired.begin(), m_retired.end(),
                                 [](const Retired& retired) { return retired.claim != nullptr; }),
                  m_retired.end());
  for (LOGAppenderSkeleton* const appender : m_doubtful) {
    if (!isRetired(*appender)) {
      m_retired.push_back({appender, nullptr});
      m_retiredQueues.add(*appender);
    }
  }
  m_appendersOfRun = 0;
  m_appenderElements.clear();
  const ZEBIDOM_NodeList elements = root.getOwnerDocument().getElementsByTagName(APPENDER_TAG);
  for (std::size_t i = 0; i < elements.getLength(); ++i) {
    const ZEBIDOM_Element element(elements.item(i));
    m_appenderElements.emplace(element.getAttribute(LOG4ZEB_NAME_ATTR), Described{element, false});
  }
  // With room for every name, because a table that grows loses some.
  const std::size_t names = m_appenders.size() + elements.getLength() + 1;
  auto bag = std::make_unique<LOGHashtable>(static_cast<int>(2 * names));
  try {
    const unsigned memoryFailures = logMemoryFailures();
    for (const auto& appender : m_appenders) {
      bag->put(appender->getName(), appender.get());
    }
    logRequireMemorySince(memoryFailures);
  } catch (...) {
    bag->forget();
    throw;
  }
  m_appenderBag->forget();
  m_appenderBag = std::move(bag);
  m_doubtful.clear();
}

void LOGDOMConfigurator::retireAppendersOf(const LOGLogger& logger) {
  const ZEBThreadGuard guard(logger.getCriticalSection());  // which a removal takes, too
  for (LOGAppenderSkeleton* const appender : logger.snapshotOfAppenders()) {
    if (!isRetired(*appender)) {
      const bool isOwn = std::any_of(m_appenders.begin(), m_appenders.end(),
                                     [&](const auto& own) { return own.get() == appender; });
      m_retired.push_back({appender, nullptr});
      if (!isOwn) {
        m_retired.back().claim = std::make_unique<LOGAppenderClaim>(logger.getAAI(), *appender);
      }
      m_retiredQueues.add(*appender);
    }
  }
}

void LOGDOMConfigurator::keepAppendersThatStayedAt(const LOGLogger& logger) {
  const std::vector<LOGAppenderSkeleton*> attached = logger.snapshotOfAppenders();
  m_retired.erase(std::remove_if(m_retired.begin(), m_retired.end(),
                                 [&](const Retired& retired) {
                                   return retired.claim != nullptr &&
                                          std::find(attached.begin(), attached.end(),
                                                    retired.appender) != attached.end();
                                 }),
                  m_retired.end());
}

void LOGDOMConfigurator::succeedRetired(LOGAppenderSkeleton& appender) const {
  auto* const known = static_cast<LOGAppenderSkeleton*>(m_appenderBag->get(appender.getName()));
  auto* const predecessor = dynamic_cast<LOGAsyncAppender*>(known);
  auto* const async = dynamic_cast<LOGAsyncAppender*>(&appender);
  if (async != nullptr && predecessor != nullptr && isRetired(*predecessor)) {
    async->succeed(*predecessor);
  }
}

bool LOGDOMConfigurator::isRetired(const LOGAppenderSkeleton& appender) const {
  return std::any_of(m_retired.begin(), m_retired.end(),
                     [&](const Retired& retired) { return retired.appender == &appender; });
}

LOGAppenderSkeleton* LOGDOMConfigurator::usableAppender(const I18NString& name) const {
  auto* const known = static_cast<LOGAppenderSkeleton*>(m_appenderBag->get(name));
  const bool isUsable =
      known != nullptr && known->isStale() == 0 && !isRetired(*known) && !known->isClosedForGood();
  return isUsable ? known : nullptr;
}

std::vector<LOGAppenderSkeleton*> LOGDOMConfigurator::ownAmong(
    std::vector<LOGAppenderSkeleton*> attached) const {
  attached.erase(std::remove_if(attached.begin(), attached.end(),
                                [this](const LOGAppenderSkeleton* appender) {
                                  return m_own.count(appender) == 0;
                                }),
                 attached.end());
  return attached;
}

LOGAppenderSkeleton* LOGDOMConfigurator::rebuilt(LOGAppenderSkeleton& appender) {
  const I18NString& name = appender.getName();
  const auto described = m_appenderElements.find(name);
  const bool isUsable = appender.isStale() == 0 && !isRetired(appender);
  // One without a name is never found again, so it is not built for this.
  if (isUsable || name.isEmpty() || described == m_appenderElements.end() ||
      !described->second.isInUse) {
    return &appender;
  }
  LOGAppenderSkeleton* const live = usableAppender(name);
  return live != nullptr ? live : findAppenderByName(name);
}

void LOGDOMConfigurator::rebuildBehind(LOGAppenderSkeleton& holder,
                                       std::set<const LOGAppenderSkeleton*>& seen) {
  auto* const async = dynamic_cast<LOGAsyncAppender*>(&holder);
  if (async == nullptr || async->isStale() != 0 || isRetired(*async) ||
      !seen.insert(async).second) {
    return;
  }
  for (LOGAppenderSkeleton* attached : ownAmong(async->getAAI()->snapshot())) {
    const I18NString& name = attached->getName();
    if ((attached->isStale() != 0 || isRetired(*attached)) && m_appenderElements.count(name) != 0) {
      attached = findAppenderByName(name);
    }
    if (attached != nullptr) {
      rebuildBehind(*attached, seen);
    }
  }
}

void LOGDOMConfigurator::endRun() {
  contained([this] {
    std::set<const LOGAppenderSkeleton*> seen;
    for (const LOGLogger* const logger : allLoggersOf(m_repository)) {
      for (LOGAppenderSkeleton* appender : ownAmong(logger->snapshotOfAppenders())) {
        appender = rebuilt(*appender);
        if (appender != nullptr) {
          rebuildBehind(*appender, seen);
        }
      }
    }
  });
  m_appenderElements.clear();
  for (LOGLogger* const logger : allLoggersOf(m_repository)) {
    contained([&] {
      // Removal and addition under one lock, so that no event finds neither of them.
      const ZEBThreadGuard guard(logger->getCriticalSection());
      for (LOGAppenderSkeleton* const appender : logger->snapshotOfAppenders()) {
        if (LOGAppenderSkeleton* const live = replacementFor(*appender, nullptr)) {
          logger->removeAppender(appender);
          logger->addAppender(live);
        }
      }
    });
  }
  for (const auto& appender : m_appenders) {
    auto* const async = dynamic_cast<LOGAsyncAppender*>(appender.get());
    if (async != nullptr && async->isStale() == 0 && !isRetired(*async)) {
      contained([&] {
        const ZEBThreadGuard guard(async->getAAI()->getCriticalSection());
        for (LOGAppenderSkeleton* const attached : async->getAAI()->snapshot()) {
          if (LOGAppenderSkeleton* const live = replacementFor(*attached, async)) {
            async->getAAI()->replaceAppender(*attached, *live);
          }
        }
      });
    }
  }
  closeRetiredAppenders();
  m_staleAppenders.reserve(m_staleAppenders.size() + m_appenders.size());
  const auto firstStale =
      std::stable_partition(m_appenders.begin(), m_appenders.end(),
                            [](const auto& appender) { return appender->isStale() == 0; });
  std::move(firstStale, m_appenders.end(), std::back_inserter(m_staleAppenders));
  m_appenders.erase(firstStale, m_appenders.end());
}

LOGAppenderSkeleton* LOGDOMConfigurator::replacementFor(const LOGAppenderSkeleton& attached,
                                                        const LOGAsyncAppender* async) const {
  if (attached.isStale() == 0 && !isRetired(attached)) {
    return nullptr;
  }
  LOGAppenderSkeleton* const live = usableAppender(attached.getName());
  // An order that the document has turned round must not have events go round for ever.
  const bool isCircle =
      live != nullptr && async != nullptr && LOGAsyncAppender::reaches(*live, *async);
  return isCircle ? nullptr : live;
}

void LOGDOMConfigurator::closeOwn(LOGAppenderSkeleton& appender) {
  // A dispatcher that passes an event on may have come to it before it left the list.
  LOGAppenderPin::awaitOthers(nullptr, &appender);
  appender.markAsStale();
  appender.close();
  // What is stale is kept to the shutdown; without this, a socket would be for each reading.
  if (auto* const sender = dynamic_cast<LOGLocalUDPAppender*>(&appender)) {
    sender->release();
  }
  // Nor does it keep appenders of the program, which may be deleted.
  if (auto* const async = dynamic_cast<LOGAsyncAppender*>(&appender)) {
    LOGAppenderAttachableImpl& list = *async->getAAI();
    const ZEBThreadGuard guard(list.getCriticalSection());
    const LOGAppenderAttachableImpl::Replacement withoutClosing(list);
    list.removeAllAppenders();
  }
}

void LOGDOMConfigurator::closeRetiredAppenders() {
  contained([this] { m_retiredQueues.flush(LOGAsyncAppender::LONGEST_FINAL_FLUSH); });
  m_retiredQueues = {};
  // Asynchronous ones are closed before those that they pass events on to.
  for (const bool isAsync : {true, false}) {
    for (const Retired& retired : m_retired) {
      contained([&] {
        if (retired.claim != nullptr) {
          retired.claim->use([isAsync](LOGAppenderSkeleton& appender) {
            if (isAsynchronous(appender) == isAsync) {
              appender.close();
            }
          });
        } else if (isAsynchronous(*retired.appender) == isAsync) {
          closeOwn(*retired.appender);
        }
      });
    }
  }
  m_retired.clear();
}

void LOGDOMConfigurator::detachFromLoggers(LOGAppenderSkeleton* appender) const {
  const auto detachFrom = [appender](LOGLogger& logger) {
    const ZEBThreadGuard guard(logger.getCriticalSection());
    logger.removeAppender(appender);
    for (std::size_t i = 0; LOGAppenderSkeleton* const attached = logger.appenderAt(i); ++i) {
      if (auto* const holder = dynamic_cast<LOGAppenderAttachable*>(attached)) {
        holder->removeAppender(appender);
      }
    }
  };
  for (LOGLoggerRepository* const repository : m_repositories) {
    if (const auto* const hierarchy = dynamic_cast<const LOGHierarchy*>(repository)) {
      // Without a copy of the list: who still had the appender would use it after its end.
      for (std::size_t position = 0; LOGLogger* const logger = hierarchy->loggerAt(position);
           ++position) {
        detachFrom(*logger);
      }
    } else {
      for (LOGLogger* const logger : allLoggersOf(repository)) {
        detachFrom(*logger);
      }
    }
  }
}
