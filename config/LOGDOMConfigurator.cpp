#include "config/LOGDOMConfigurator.h"

#include <algorithm>
#include <string>
#include <utility>

#include "config/LOGComponentStore.h"
#include "config/LOGDocumentReader.h"
#include "core/LOGConfiguratorHook.h"
#include "core/LOGFailures.h"
#include "core/LOGManager.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBIDOM_DOMImplementation.h"
#include "platform/ZEBIDOM_Document.h"
#include "platform/ZEBIDOM_Parser.h"
#include "platform/ZEBSharedLibrary.h"
#include "platform/ZEBThreadOuterGuard.h"
#include "platform/ZEBTranslate.h"
#include "platform/ZEBUtConvert.h"
#include "platform/ZEBUtProcess.h"

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

/// The first lock of all: it serialises runs and shutdowns.
ZEBThreadCriticalSection g_runLock;

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

/// Runs `operation` under the run lock and returns what it returns; 0, with a report, when it
/// fails.
template <typename Operation>
int underRunLock(Operation operation) {
  constexpr LOGFailureTexts TEXTS{
      "LOGDOMConfigurator::doConfigure -- some i18nstring exception occurred",
      "LOGDOMConfigurator::doConfigure -- some ZEBThrowable exception occurred",
      "LOGDOMConfigurator::doConfigure -- An unknown exception has occurred."};
  int configured = 0;
  logContainingFailures(TEXTS, [&] {
    const ZEBThreadOuterGuard guard(g_runLock);
    configured = operation();
  });
  return configured;
}

bool isSet(const I18NString& attribute) { return !attribute.isEmpty() && attribute != "null"; }

I18NString quoted(const I18NString& text) { return "\"" + text + "\""; }

/// The file and, where the parser knows them, the line and column.
I18NString placeOfError(const I18NString& fileName, const ZEBIDOM_Parser& parser) {
  if (parser.getErrorLine() == 0) {
    return fileName;
  }
  return fileName + ":" + ZEBUtConvert::handleCvt(parser.getErrorLine()) + ":" +
         ZEBUtConvert::handleCvt(parser.getErrorColumn());
}

bool hasConfigurationTag(const ZEBIDOM_Element& root) {
  const I18NString& expected = LOGDOMConfigurator::CONFIGURATION_TAG;
  const I18NString& old = LOGDOMConfigurator::OLD_CONFIGURATION_TAG;
  const I18NString tag = root.getTagName();
  if (tag == old) {
    LOGLogLog::warn("The <" + old + "> element has been deprecated.");
    LOGLogLog::warn("Use the <" + expected + "> element instead.");
  } else if (tag != expected) {
    LOGLogLog::error("DOM element is - not a <" + expected + "> element.");
    return false;
  }
  return true;
}

void applyRootAttributes(const ZEBIDOM_Element& root, LOGLoggerRepository& repository) {
  const I18NString& debugName = LOGDOMConfigurator::INTERNAL_DEBUG_ATTR;
  const I18NString& oldDebugName = LOGDOMConfigurator::CONFIG_DEBUG_ATTR;
  const I18NString debug = root.getAttribute(debugName);
  LOGLogLog::debug("debug attributes= " + quoted(debug));
  // Deliberate: any value switches debugging on, "false" included, but an empty one and "null".
  if (isSet(debug)) {
    LOGLogLog::setInternalDebugging(1);
  } else {
    LOGLogLog::debug("Ignoring " + debugName + " attribute.");
  }
  if (isSet(root.getAttribute(oldDebugName))) {
    LOGLogLog::warn("The " + quoted(oldDebugName) + " attribute is deprecated.");
    LOGLogLog::warn("Use the " + quoted(debugName) + " attribute instead.");
    LOGLogLog::setInternalDebugging(1);
  }
  const I18NString threshold = root.getAttribute(LOGDOMConfigurator::THRESHOLD_ATTR);
  LOGLogLog::debug("Threshold =" + quoted(threshold));
  if (isSet(threshold)) {
    repository.setThreshold(threshold);
  }
}

}  // namespace

LOGDOMConfigurator::LOGDOMConfigurator() : m_store(std::make_unique<LOGComponentStore>()) {}

LOGDOMConfigurator::~LOGDOMConfigurator() = default;

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
  return underRunLock([&] {
    if (isRefused("LOGDOMConfigurator::doConfigure")) {
      return 0;
    }
    const Running running;
    initialize();
    return operation();
  });
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
  return underRunLock([&] { return doConfigure(fileName.toStdString().data(), repository); });
}

int LOGDOMConfigurator::doConfigure(char* fileName, LOGLoggerRepository* repository) {
  return underRunLock([&] {
    ZEBIDOM_Document document = ZEBIDOM_DOMImplementation::getInstance().createDocument();
    ZEBIDOM_Parser parser(0);
    parser.setLoadExternalDTD(0);
    if (parser.parse(fileName, document) == 0) {
      LOGLogLog::error("Could not parse the document");
      LOGLogLog::error(placeOfError(fileName, parser) + ": " + parser.getErrorReason());
      return 0;
    }
    return doConfigure(document.getDocumentElement(), repository);
  });
}

int LOGDOMConfigurator::doConfigure(const ZEBIDOM_Element& root, LOGLoggerRepository* repository) {
  return underRunLock([&] {
    if (repository == nullptr) {
      ZEBAssertError::fail("ZEB_ASSERT(m_repository);", SOURCE, __LINE__);
    }
    if (!hasConfigurationTag(root)) {
      return 0;
    }
    const ZEBThreadOuterGuard guard(*this);
    const unsigned memoryFailures = logMemoryFailures();
    applyRootAttributes(root, *repository);
    m_store->add(*repository);
    LOGDocumentReader(*this, *repository, root).read();
    if (logMemoryFailures() != memoryFailures) {
      return 0;
    }
    m_store->keepBuilt();
    return 1;
  });
}

void LOGDOMConfigurator::forgetRepository(LOGLoggerRepository* repository) {
  const ZEBThreadOuterGuard guard(g_runLock);
  if (m_domConfig != nullptr) {
    m_domConfig->m_store->forget(repository);
  }
}
