#include "core/LOGHierarchy.h"

#include <mutex>
#include <new>
#include <utility>

#include "appenders/LOGAsyncAppender.h"
#include "core/LOGConfiguratorHook.h"
#include "core/LOGFailures.h"
#include "core/LOGLogger.h"
#include "core/LOGProvisionNode.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBForkGate.h"
#include "platform/ZEBThreadGuard.h"

namespace {

constexpr const char* SOURCE = "LOGHierarchy";
constexpr const char* LOGGER_TAG = "LOGLogger";
constexpr const char* PROVISION_TAG = "LOGProvisionNode";

bool isLogger(const LOGObject* object) {
  return object != nullptr && object->instanceOf() == LOGGER_TAG;
}

LOGLogger* asLogger(LOGObject* object) { return static_cast<LOGLogger*>(object); }

/// Lets the next element be added without a failure.
template <typename List>
void makeRoomForOneMore(List& list) {
  if (list.size() == list.capacity()) {
    list.reserve(2 * list.size() + 1);
  }
}

}  // namespace

LOGHierarchy::LOGHierarchy()
    : m_thresholdInt(LOGLevel::ALL_RANK),
      m_ht(std::make_unique<LOGHashtable>()),
      m_threshold(LOGLevel::toLevel(LOGLevel::ALL_RANK)),
      m_root(nullptr),
      m_rendererMap(std::make_unique<LOGRendererMap>()) {}

LOGHierarchy::LOGHierarchy(LOGLogger* root) : LOGHierarchy() {
  m_root = root;
  ZEB_ASSERT(m_root, SOURCE, __LINE__);
  m_root->setRepository(this);
}

LOGHierarchy::~LOGHierarchy() {
  if (m_root != nullptr && m_root->getRepository() == this) {
    m_root->setRepository(nullptr);
  }
}

int LOGHierarchy::isDisabled(int level) {
  return m_thresholdInt.load(std::memory_order_relaxed) > level ? 1 : 0;
}

void LOGHierarchy::setThreshold(const I18NString& level) {
  LOGLevel* const found = LOGLevel::toLevel(level, nullptr);
  if (found == nullptr) {
    LOGLogLog::warn("Could not convert [" + level + " to Level.");
  } else {
    setThreshold(found);
  }
}

void LOGHierarchy::setThreshold(LOGLevel* level) {
  if (level != nullptr) {
    const ZEBThreadGuard guard(getCriticalSection());
    m_threshold = level;
    m_thresholdInt = level->toInt();
    LOGLogger::forgetGates();
  }
}

LOGLevel* LOGHierarchy::getThreshold() { return m_threshold; }

void LOGHierarchy::emitNoAppenderWarning(LOGLogger* logger) {
  if (m_emittedNoAppenderWarning.load() == 0) {
    ZEB_ASSERT(logger, SOURCE, __LINE__);
    const I18NString warning =
        "No appenders could be found for logger (" + logger->getName() + ").";
    if (m_emittedNoAppenderWarning.exchange(1) == 0) {
      LOGLogLog::warn(warning);
    }
  }
}

LOGLogger* LOGHierarchy::getLogger(const I18NString& name) {
  return getLogger(name, &m_defaultFactory);
}

LOGLogger* LOGHierarchy::getLogger(const I18NString& name, LOGLoggerFactory* factory) {
  ZEB_ASSERT(m_ht, SOURCE, __LINE__);
  // Unless somebody holds the table's lock, nobody could notice if it was taken to find a logger
  // that is known.
  if (!m_ht->getCriticalSection().isHeldElsewhere()) {
    LOGLogger* const known = m_index.find(name);
    if (known != nullptr) {
      return known;
    }
  }
  return logReportingAndPassing("LOGHierarchy::getLogger -- unable to lock mutex", [&] {
    const ZEBThreadGuard guard(m_ht->getCriticalSection());
    return findOrCreate(name, factory);
  });
}

LOGLogger* LOGHierarchy::findOrCreate(const I18NString& name, LOGLoggerFactory* factory) {
  LOGObject* const found = m_ht->get(name);
  if (found == nullptr) {
    return addNew(name, factory);
  }
  if (isLogger(found)) {
    LOGLogger* const logger = asLogger(found);
    // A factory may have made it with another name.
    if (logger->getName() == name && m_index.find(name) == nullptr) {
      remember(logger);
    }
    return logger;
  }
  if (found->instanceOf() == PROVISION_TAG) {
    return replaceProvision(name, factory, static_cast<const LOGProvisionNode&>(*found));
  }
  return nullptr;
}

void LOGHierarchy::remember(LOGLogger* logger) noexcept {
  try {
    m_index.add(logger);
  } catch (const std::bad_alloc&) {
    // It is found all the same, only not as fast.
  }
}

std::unique_ptr<LOGLogger> LOGHierarchy::createLogger(const I18NString& name,
                                                      LOGLoggerFactory* factory) {
  ZEB_ASSERT(factory, SOURCE, __LINE__);
  std::unique_ptr<LOGLogger> logger(factory->makeNewLoggerInstance(name));
  ZEB_ASSERT(logger, SOURCE, __LINE__);
  // Entries are told apart by their tag, whatever class a factory gave its loggers.
  logger->instance(LOGGER_TAG);
  logger->setRepository(this);
  logger->setParent(m_root);
  return logger;
}

bool LOGHierarchy::enter(const I18NString& name, std::unique_ptr<LOGLogger> logger) {
  // Room first, so that nothing fails once the table has the logger.
  makeRoomForOneMore(m_notInTable);
  makeRoomForOneMore(m_allLoggers);
  const bool isInTable = putIntoTable(name, logger.get()) != 0;
  m_allLoggers.push_back(logger.get());
  if (isInTable) {
    static_cast<void>(logger.release());
  } else {
    m_notInTable.push_back(std::move(logger));
  }
  return isInTable;
}

void LOGHierarchy::withdraw(const I18NString& name, LOGLogger* logger) noexcept {
  m_allLoggers.pop_back();
  if (!m_notInTable.empty() && m_notInTable.back().get() == logger) {
    m_notInTable.pop_back();
  } else if (m_ht->get(name) == static_cast<LOGObject*>(logger)) {
    m_ht->remove(name);
  } else {
    m_ht->removeLost(logger);
  }
}

template <typename Operation>
void LOGHierarchy::linking(const I18NString& name, LOGLogger* logger, Operation operation) {
  try {
    operation();
  } catch (...) {
    for (LOGProvisionNode* const node : m_waitedAt) {
      node->removeLastElement();
    }
    m_waitedAt.clear();
    withdraw(name, logger);
    throw;
  }
  m_waitedAt.clear();
}

int LOGHierarchy::putIntoTable(const I18NString& name, LOGObject* object) {
  const int capacity = m_ht->capacity();
  const int result = m_ht->put(name, object);
  if (m_ht->capacity() != capacity) {
    m_index.clear();  // a table that grows forgets names, which then make new loggers
  }
  return result;
}

LOGLogger* LOGHierarchy::replaceProvision(const I18NString& name, LOGLoggerFactory* factory,
                                          const LOGProvisionNode& provision) {
  std::unique_ptr<LOGLogger> made = createLogger(name, factory);
  LOGLogger* const logger = made.get();
  const std::unique_lock<std::shared_mutex> access(m_tableAccess);
  // The provision node stays behind the new entry, which shadows it.
  const bool isInTable = enter(name, std::move(made));
  // The new logger is linked upwards before anything is linked to it, so that other threads never
  // walk over a logger whose parent is not settled.
  linking(name, logger, [&] {
    if (!isInTable) {
      throw std::bad_alloc();  // the next look-up would meet the provision again
    }
    const std::vector<LOGLogger*> children = findChildren(&provision, logger);
    logger->setParent(findParent(logger));
    for (LOGLogger* const child : children) {
      child->setParent(logger);
    }
  });
  return logger;
}

LOGLogger* LOGHierarchy::addNew(const I18NString& name, LOGLoggerFactory* factory) {
  if (name.isEmpty()) {
    // The table takes no empty name, so its logger is found among those that were refused.
    for (const auto& logger : m_notInTable) {
      if (logger->getName().isEmpty()) {
        return logger.get();
      }
    }
  }
  LOGLogLog::debug("Creating new instance of LOGLogger: " + name);
  std::unique_ptr<LOGLogger> made = createLogger(name, factory);
  LOGLogger* const logger = made.get();
  const std::unique_lock<std::shared_mutex> access(m_tableAccess);
  const bool isInTable = enter(name, std::move(made));
  linking(name, logger, [&] {
    if (!isInTable) {
      LOGLogLog::error("LOGHierrachy::getLogger ---- Could not put Logger in LOGHashtable");
    }
    logger->setParent(findParent(logger));
  });
  return logger;
}

std::vector<LOGLogger*> LOGHierarchy::findChildren(const LOGProvisionNode* provisionNode,
                                                   LOGLogger* logger) {
  ZEB_ASSERT(provisionNode, SOURCE, __LINE__);
  ZEB_ASSERT(logger, SOURCE, __LINE__);
  std::vector<LOGLogger*> children;
  for (LOGLogger* const element : provisionNode->getElements()) {
    // Every waiting descendant is taken, also one that has a nearer ancestor by now: that is how it
    // is meant, so the order in which names are first asked for can be seen in the tree.
    if (isLogger(element) && element->getName().startsWith(logger->getName())) {
      const LOGLogger* const parentLogger = element->getParent();
      ZEB_ASSERT(parentLogger, SOURCE, __LINE__);
      LOGLogLog::debug("Add logger [" + logger->getName() + "] as parent of [" +
                       element->getName() + "].");
      children.push_back(element);
    }
  }
  return children;
}

LOGLogger* LOGHierarchy::findParent(LOGLogger* logger) {
  ZEB_ASSERT(logger, SOURCE, __LINE__);
  ZEB_ASSERT(m_ht, SOURCE, __LINE__);
  const I18NString& name = logger->getName();
  for (long dot = name.lastIndexOf("."); dot > 0;
       dot = name.lastIndexOf(".", static_cast<std::size_t>(dot) - 1)) {
    const I18NString prefix = name.substring(0, static_cast<std::size_t>(dot));
    LOGObject* const found = m_ht->get(prefix);
    if (isLogger(found)) {
      return asLogger(found);
    }
    if (found == nullptr) {
      LOGLogLog::debug("Creating a new provision [" + prefix + "] for LOGLogger [" + name + "].");
      auto provision = std::make_unique<LOGProvisionNode>(logger);
      makeRoomForOneMore(m_waitedAt);
      if (putIntoTable(prefix, provision.get()) == 0) {
        throw std::bad_alloc();  // a later logger of that name would not become an ancestor
      }
      m_waitedAt.push_back(provision.release());
    } else if (found->instanceOf() == PROVISION_TAG) {
      makeRoomForOneMore(m_waitedAt);
      static_cast<LOGProvisionNode*>(found)->addElement(logger);
      m_waitedAt.push_back(static_cast<LOGProvisionNode*>(found));
    } else {
      LOGLogLog::error(
          "LOGHierarchy::updateParents --- Could not find a logger parent neither a provision for "
          "logger [" +
          name + "].");
    }
  }
  return m_root;
}

LOGLogger* LOGHierarchy::exists(const I18NString& name) {
  ZEB_ASSERT(m_ht, SOURCE, __LINE__);
  const ZEBForkGate::Stay stay;
  const std::shared_lock<std::shared_mutex> access(m_tableAccess);
  LOGObject* const found = m_ht->get(name);
  return isLogger(found) ? asLogger(found) : nullptr;
}

ZEBList<LOGObject*> LOGHierarchy::getCurrentLoggers() {
  ZEB_ASSERT(m_ht, SOURCE, __LINE__);
  const ZEBForkGate::Stay stay;
  const std::shared_lock<std::shared_mutex> access(m_tableAccess);
  ZEBList<LOGObject*> loggers;
  for (LOGObject* const entry : m_ht->elements()) {
    if (isLogger(entry)) {
      loggers.add(entry);
    }
  }
  return loggers;
}

std::vector<LOGLogger*> LOGHierarchy::getAllLoggers() const {
  std::vector<LOGLogger*> loggers;
  if (m_root != nullptr) {
    loggers.push_back(m_root);
  }
  const ZEBForkGate::Stay stay;
  const std::shared_lock<std::shared_mutex> access(m_tableAccess);
  loggers.insert(loggers.end(), m_allLoggers.begin(), m_allLoggers.end());
  return loggers;
}

LOGLogger* LOGHierarchy::loggerAt(std::size_t position) const {
  const ZEBForkGate::Stay stay;
  const std::shared_lock<std::shared_mutex> access(m_tableAccess);
  if (m_root != nullptr && position-- == 0) {
    return m_root;
  }
  return position < m_allLoggers.size() ? m_allLoggers[position] : nullptr;
}

template <typename Operation>
void LOGHierarchy::forEachLogger(Operation operation) const {
  // Not over a copy: a shutdown must not need memory.
  for (std::size_t i = 0; LOGLogger* const logger = loggerAt(i); ++i) {
    operation(*logger);
  }
}

void LOGHierarchy::shutdown() {
  ZEB_ASSERT(m_root, SOURCE, __LINE__);
  LOGConfiguratorHook::runExclusively([this] { shutdownExclusively(); });
}

void LOGHierarchy::shutdownExclusively() {
  bool isFlushed = false;
  logContainingLackOfMemory("LOGHierarchy::shutdown -- no memory to flush in order", [&] {
    std::vector<LOGAppenderSkeleton*> appenders;
    forEachLogger([&](LOGLogger& logger) {
      const std::vector<LOGAppenderSkeleton*> attached = logger.snapshotOfAppenders();
      appenders.insert(appenders.end(), attached.begin(), attached.end());
    });
    LOGAsyncAppender::flushReachable(appenders, LOGAsyncAppender::LONGEST_FINAL_FLUSH);
    isFlushed = true;
  });
  // Closing one waits for its thread, which may be logging: not under a logger's lock, as below.
  forEachLogger([isFlushed](LOGLogger& logger) {
    for (std::size_t i = 0; LOGAppenderSkeleton* const appender = logger.appenderAt(i); ++i) {
      if (auto* const async = dynamic_cast<LOGAsyncAppender*>(appender)) {
        if (!isFlushed) {
          async->flush(LOGAsyncAppender::LONGEST_FINAL_FLUSH);
        }
        async->close();
      }
    }
  });
  forEachLogger([](LOGLogger& logger) { logger.closeNestedAppenders(); });
  forEachLogger([](LOGLogger& logger) { logger.removeAllAppenders(); });
  LOGLogLog::shutdown();
  LOGConfiguratorHook::shutdown();
}

void LOGHierarchy::resetConfiguration() {
  ZEB_ASSERT(m_ht, SOURCE, __LINE__);
  ZEB_ASSERT(m_root, SOURCE, __LINE__);
  logReportingAndPassing("LOGHierarchy::resetConfiguration -- ", [this] {
    LOGConfiguratorHook::runExclusively([this] { resetExclusively(); });
  });
}

void LOGHierarchy::resetExclusively() {
  m_root->setLevel(LOGLevel::toLevel(LOGLevel::DEBUG_RANK));
  setThreshold(LOGLevel::toLevel(LOGLevel::ALL_RANK));
  shutdown();
  forEachLogger([this](LOGLogger& logger) {
    if (&logger != m_root) {
      logger.setLevel(nullptr);
      logger.setAdditivity(1);
    }
  });
  m_rendererMap->clear();
}

void LOGHierarchy::clear() {
  const ZEBThreadGuard guard(m_ht->getCriticalSection());
  const std::unique_lock<std::shared_mutex> access(m_tableAccess);
  m_index.clear();
  m_ht->clear();
  m_notInTable.clear();
  m_allLoggers.clear();
}

void LOGHierarchy::addHierarchyEventListener(LOGHierarchyEventListener* listener) {
  ZEB_ASSERT(listener, SOURCE, __LINE__);
  const ZEBThreadGuard guard(getCriticalSection());
  for (const LOGHierarchyEventListener& known : m_listeners) {
    if ((known == *listener) != 0) {
      return;
    }
  }
  m_listeners.add(*listener);
}

void LOGHierarchy::fireAddAppenderEvent(LOGLogger* logger, LOGAppenderSkeleton* appender) {
  const ZEBThreadGuard guard(getCriticalSection());
  for (LOGHierarchyEventListener& listener : m_listeners) {
    listener.addAppenderEvent(logger, appender);
  }
}

void LOGHierarchy::fireRemoveAppenderEvent(LOGLogger* logger, LOGAppenderSkeleton* appender) {
  const ZEBThreadGuard guard(getCriticalSection());
  for (LOGHierarchyEventListener& listener : m_listeners) {
    listener.removeAppenderEvent(logger, appender);
  }
}

void LOGHierarchy::setRenderer(const I18NString& className, LOGObjectRenderer* renderer) {
  m_rendererMap->put(className, renderer);
}

void LOGHierarchy::setRenderer(LOGObject* object, LOGObjectRenderer* renderer) {
  m_rendererMap->put(object == nullptr ? I18NString() : object->instanceOf(), renderer);
}
