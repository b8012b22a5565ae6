#include "core/LOGManager.h"

#include <memory>

#include "core/LOGDefaultRepositorySelector.h"
#include "core/LOGHierarchy.h"
#include "core/LOGRootLogger.h"
#include "platform/ZEBAssertError.h"
#include "platform/ZEBThreadGuard.h"
#include "platform/ZEBTranslate.h"

// Constant-initialised, so that the first use may be in any static initialiser.
std::atomic<LOGHierarchy*> LOGManager::m_hierarchy{nullptr};
std::atomic<LOGRepositorySelector*> LOGManager::m_repositorySelector{nullptr};
std::atomic<LOGObject*> LOGManager::m_guard{nullptr};

const I18NString LOGManager::m_DEFAULT_CONFIGURATION_FILE;
const I18NString LOGManager::m_DEFAULT_CONFIGURATION_KEY;
const I18NString LOGManager::m_CONFIGURATOR_CLASS_KEY;
const I18NString LOGManager::m_DEFAULT_INIT_OVERRIDE_KEY;

namespace {

constexpr const char* SOURCE = "LOGManager";

ZEBThreadCriticalSection g_initLock;

}  // namespace

void LOGManager::init() {
  const ZEBThreadGuard guard(g_initLock);
  if (m_repositorySelector.load() != nullptr) {
    return;
  }
  zebTranslate(SOURCE, __LINE__, [] {
    if (m_hierarchy.load() == nullptr) {
      auto root = std::make_unique<LOGRootLogger>(LOGLevel::toLevel(LOGLevel::DEBUG_RANK));
      m_hierarchy = new LOGHierarchy(root.get());
      static_cast<void>(root.release());  // lives as long as the hierarchy, that is for ever
    }
    static auto* const selector = new LOGDefaultRepositorySelector(m_hierarchy.load());
    m_repositorySelector = selector;
  });
}

LOGLoggerRepository* LOGManager::getLoggerRepository() {
  for (;;) {
    // Loaded once, because another thread may replace it at any time, also by none.
    LOGRepositorySelector* const selector = m_repositorySelector.load(std::memory_order_acquire);
    if (selector != nullptr) {
      return selector->getLoggerRepository();
    }
    init();
  }
}

LOGLogger* LOGManager::getRootLogger() { return getLoggerRepository()->getRootLogger(); }

LOGLogger* LOGManager::getLogger(const I18NString& name) {
  return getLoggerRepository()->getLogger(name);
}

LOGLogger* LOGManager::getLogger(const I18NString& name, LOGLoggerFactory* factory) {
  return getLoggerRepository()->getLogger(name, factory);
}

LOGLogger* LOGManager::exists(const I18NString& name) {
  return getLoggerRepository()->exists(name);
}

ZEBList<LOGObject*> LOGManager::getCurrentLoggers() {
  return getLoggerRepository()->getCurrentLoggers();
}

void LOGManager::resetConfiguration() { getLoggerRepository()->resetConfiguration(); }

void LOGManager::shutdown() {
  LOGRepositorySelector* const selector = m_repositorySelector.load(std::memory_order_acquire);
  if (selector != nullptr) {
    selector->getLoggerRepository()->shutdown();
  }
}

void LOGManager::setRepositorySelector(LOGRepositorySelector* selector, LOGObject* guard) {
  ZEB_ASSERT(guard, SOURCE, __LINE__);
  const ZEBThreadGuard initGuard(g_initLock);
  m_guard = guard;
  m_repositorySelector = selector;
}
