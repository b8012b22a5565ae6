#include "core/LOGHierarchy.h"

#include <utility>

#include "appenders/LOGAsyncAppender.h"
#include "core/LOGConfiguratorHook.h"
#include "core/LOGFailures.h"
#include "core/LOGHashtable.h"
#include "core/LOGLogger.h"
#include "core/LOGProvisionNode.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBOutOfMemoryError.h"
#include "platform/ZEBThreadGuard.h"

namespace {

constexpr const char* SOURCE = "LOGHierarchy";
constexpr const char* LOGGER_TAG = "LOGLogger";

/// A program may have given a logger another tag, which hides it.
bool isLogger(const LOGObject* object) {
  if (object == nullptr) {
    return false;
  }
  const I18NString& tag = object->instanceOf();
  return tag.isAscii() && tag.ascii() == LOGGER_TAG;
}

/// Has a logger wait at all of the nodes, or throws and has it wait at none.
void waitAt(const std::vector<LOGProvisionNode*>& nodes, LOGLogger* logger) {
  std::size_t entered = 0;
  try {
    for (; entered < nodes.size(); ++entered) {
      nodes[entered]->addElement(logger);
    }
  } catch (...) {
    while (entered > 0) {
      nodes[--entered]->removeLastElement();
    }
    throw;
  }
}

}  // namespace

LOGHierarchy::LOGHierarchy()
    : m_thresholdInt(LOGLevel::ALL_RANK),
      m_threshold(LOGLevel::toLevel(LOGLevel::ALL_RANK)),
      m_root(nullptr),
      m_rendererMap(std::make_unique<LOGRendererMap>()) {}

LOGHierarchy::LOGHierarchy(LOGLogger* root) : LOGHierarchy() {
  m_root = root;
  ZEB_ASSERT(m_root, SOURCE, __LINE__);
  m_root->setRepository(this);
}

LOGHierarchy::~LOGHierarchy() {
  LOGConfiguratorHook::forgetRepository(this);
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
  LOGLogger* const known = m_index.findLogger(name);
  if (isLogger(known)) {
    return known;
  }
  return logReportingAndPassing("LOGHierarchy::getLogger -- unable to lock mutex", [&] {
    const ZEBThreadGuard guard(m_making);
    return findOrCreate(name, factory);
  });
}

LOGLogger* LOGHierarchy::findOrCreate(const I18NString& name, LOGLoggerFactory* factory) {
  if (LOGLogger* const known = m_index.findLogger(name)) {
    return isLogger(known) ? known : nullptr;
  }
  if (m_index.find(name) == nullptr) {
    LOGLogLog::debug("Creating new instance of LOGLogger: " + name);
  }
  std::unique_ptr<LOGLogger> made = createLogger(name, factory);
  // The factory may have asked for loggers itself, this one included.
  if (LOGLogger* const known = m_index.findLogger(name)) {
    if (known == made.get()) {
      static_cast<void>(made.release());
    }
    return known;
  }
  return enter(name, std::move(made));
}

std::unique_ptr<LOGLogger> LOGHierarchy::createLogger(const I18NString& name,
                                                      LOGLoggerFactory* factory) {
  ZEB_ASSERT(factory, SOURCE, __LINE__);
  std::unique_ptr<LOGLogger> logger(factory->makeNewLoggerInstance(name));
  ZEB_ASSERT(logger, SOURCE, __LINE__);
  // Loggers are known by their tag, whatever class a factory gave them.
  logger->instance(LOGGER_TAG);
  logger->setRepository(this);
  return logger;
}

LOGLogger* LOGHierarchy::enter(const I18NString& name, std::unique_ptr<LOGLogger> made) {
  LOGLogger* const logger = made.get();
  LOGLoggerIndex::Entry* entry = m_index.find(name);
  std::unique_ptr<LOGLoggerIndex::Entry> own;
  std::vector<LOGLogger*> children;
  if (entry == nullptr) {
    own = std::make_unique<LOGLoggerIndex::Entry>(name);
    entry = own.get();
  } else {
    children = findChildren(entry->provision.get(), logger);
  }
  if (name.isEmpty()) {
    LOGLogLog::error("LOGHierrachy::getLogger ---- Could not put Logger in LOGHashtable");
  }
  Links links = findParent(name, logger);
  std::vector<const LOGLoggerIndex::Entry*> provisions;
  for (const auto& missing : links.missing) {
    provisions.push_back(missing.get());
  }
  m_index.reserve(links.missing.size() + 1);
  m_loggers.reserve(1);
  waitAt(links.nodes, logger);

  // From here on nothing fails. Other threads find a logger, or walk over it, only once it is
  // linked upwards.
  logger->setParent(links.parent);
  for (LOGLogger* const child : children) {
    child->setParent(logger);
  }
  m_loggers.add({std::move(made), entry, std::move(provisions)});
  entry->logger.store(logger, std::memory_order_release);
  if (own != nullptr) {
    m_index.add(std::move(own));
  }
  for (std::unique_ptr<LOGLoggerIndex::Entry>& missing : links.missing) {
    m_index.add(std::move(missing));
  }
  return logger;
}

std::vector<LOGLogger*> LOGHierarchy::findChildren(const LOGProvisionNode* provisionNode,
                                                   LOGLogger* logger) {
  ZEB_ASSERT(provisionNode, SOURCE, __LINE__);
  ZEB_ASSERT(logger, SOURCE, __LINE__);
  std::vector<LOGLogger*> children;
  for (LOGLogger* const element : provisionNode->getElements()) {
    // Deliberate: every waiting descendant is taken, also one that has a nearer ancestor by now, so
    // the order in which names are first asked for can be seen in the tree.
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

LOGHierarchy::Links LOGHierarchy::findParent(const I18NString& name, LOGLogger* logger) {
  ZEB_ASSERT(logger, SOURCE, __LINE__);
  Links links{m_root, {}, {}};
  // A factory may have made it with another name.
  const I18NString& loggerName = logger->getName();
  for (long dot = loggerName.lastIndexOf("."); dot > 0;
       dot = loggerName.lastIndexOf(".", static_cast<std::size_t>(dot) - 1)) {
    const I18NString prefix = loggerName.substring(0, static_cast<std::size_t>(dot));
    if (prefix == name) {
      continue;  // the logger itself
    }
    const LOGLoggerIndex::Entry* const found = m_index.find(prefix);
    LOGLogger* const above =
        found == nullptr ? nullptr : found->logger.load(std::memory_order_relaxed);
    if (isLogger(above)) {
      links.parent = above;
      break;
    }
    if (found == nullptr) {
      LOGLogLog::debug("Creating a new provision [" + prefix + "] for LOGLogger [" + loggerName +
                       "].");
      links.missing.push_back(std::make_unique<LOGLoggerIndex::Entry>(
          prefix, std::make_unique<LOGProvisionNode>(logger)));
    } else if (above == nullptr) {
      links.nodes.push_back(found->provision.get());
    } else {
      LOGLogLog::error(
          "LOGHierarchy::updateParents --- Could not find a logger parent neither a provision for "
          "logger [" +
          loggerName + "].");
    }
  }
  return links;
}

LOGLogger* LOGHierarchy::exists(const I18NString& name) {
  LOGLogger* const logger = m_index.findLogger(name);
  // Deliberate: no logger exists by the empty name, though getLogger() finds one.
  return isLogger(logger) && !name.isEmpty() ? logger : nullptr;
}

ZEBList<LOGObject*> LOGHierarchy::getCurrentLoggers() {
  const std::size_t made = m_loggers.size();
  LOGHashtable table(m_tableCapacity, 0);
  const struct OwningNone {
    LOGHashtable& table;
    ~OwningNone() { table.forget(); }
  } owningNone{table};
  const auto put = [&table](const I18NString& name, LOGObject* object) {
    if (table.put(name, object) == 0 && !name.isEmpty()) {
      throw ZEBOutOfMemoryError(SOURCE, __LINE__);
    }
  };
  for (std::size_t i = 0; i < made; ++i) {
    // A logger shadows the provision node of its name, which stays behind it.
    put(m_loggers[i].entry->name, m_loggers[i].logger.get());
    for (const LOGLoggerIndex::Entry* const entry : m_loggers[i].provisions) {
      put(entry->name, entry->provision.get());
    }
  }
  ZEBList<LOGObject*> loggers;
  for (LOGObject* const object : table.elements()) {
    if (isLogger(object)) {
      loggers.add(object);
    }
  }
  return loggers;
}

std::vector<LOGLogger*> LOGHierarchy::getAllLoggers() const {
  std::vector<LOGLogger*> loggers;
  for (std::size_t i = 0; LOGLogger* const logger = loggerAt(i); ++i) {
    loggers.push_back(logger);
  }
  return loggers;
}

LOGLogger* LOGHierarchy::loggerAt(std::size_t position) const {
  if (m_root != nullptr && position-- == 0) {
    return m_root;
  }
  return position < m_loggers.size() ? m_loggers[position].logger.get() : nullptr;
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
  int timeToFlush = LOGAsyncAppender::LONGEST_FINAL_FLUSH;
  logContainingLackOfMemory("LOGHierarchy::shutdown -- no memory to flush in order", [&] {
    LOGAsyncAppender::Queues queues;
    forEachLogger([&queues](const LOGLogger& logger) { queues.add(logger.getAAI()); });
    queues.flush(LOGAsyncAppender::LONGEST_FINAL_FLUSH);
    timeToFlush = 0;
  });
  LOGFirstFailure failure;
  const auto tryEachLogger = [&](auto operation) {
    forEachLogger([&](LOGLogger& logger) { failure.keepOf([&] { operation(logger); }); });
  };
  // Closing one waits for its thread, which may be logging: not under a logger's lock, as below.
  tryEachLogger([timeToFlush](LOGLogger& logger) { logger.closeAsyncAppenders(timeToFlush); });
  tryEachLogger([](LOGLogger& logger) { logger.closeNestedAppenders(); });
  tryEachLogger([](LOGLogger& logger) { logger.removeAllAppenders(); });
  LOGLogLog::shutdown();
  LOGConfiguratorHook::shutdown();
  failure.passOn();
}

void LOGHierarchy::resetConfiguration() {
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
  const ZEBThreadGuard guard(m_making);
  std::size_t names = 0;
  for (std::size_t i = 0; i < m_loggers.size(); ++i) {
    names += m_loggers[i].provisions.size() + (m_loggers[i].entry->name.isEmpty() ? 0 : 1);
  }
  // The table keeps the size that it has grown to.
  while (static_cast<std::size_t>(m_tableCapacity) < names) {
    m_tableCapacity *= 2;
  }
  m_index.clear();
  m_loggers.clear();
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
