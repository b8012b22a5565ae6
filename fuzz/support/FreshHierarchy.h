#ifndef FUZZ_SUPPORT_FRESHHIERARCHY_H
#define FUZZ_SUPPORT_FRESHHIERARCHY_H

#include "core/LOGDefaultRepositorySelector.h"
#include "core/LOGHierarchy.h"
#include "core/LOGLevel.h"
#include "core/LOGManager.h"
#include "core/LOGRootLogger.h"

/// A hierarchy that is the process's as long as it lives: each execution begins without loggers,
/// however many names the ones before it have made up.
class FreshHierarchy {
 public:
  FreshHierarchy() { LOGManager::setRepositorySelector(&m_selector, &m_guard); }
  FreshHierarchy(const FreshHierarchy&) = delete;
  FreshHierarchy& operator=(const FreshHierarchy&) = delete;
  ~FreshHierarchy() { LOGManager::setRepositorySelector(nullptr, &m_guard); }

  LOGHierarchy& get() { return m_hierarchy; }

 private:
  LOGObject m_guard;
  LOGRootLogger m_root{LOGLevel::toLevel(LOGLevel::DEBUG_RANK)};
  LOGHierarchy m_hierarchy{&m_root};
  LOGDefaultRepositorySelector m_selector{&m_hierarchy};
};

#endif
