#ifndef CORE_LOGMANAGER_H
#define CORE_LOGMANAGER_H

#include <atomic>

#include "platform/I18NString.h"
#include "platform/ZEBList.h"

class LOGHierarchy;
class LOGLogger;
class LOGLoggerFactory;
class LOGLoggerRepository;
class LOGObject;
class LOGRepositorySelector;

/// Where application code gets its loggers: static operations on the one repository of the process.
/// The first of them, but shutdown(), makes a hierarchy whose root logs everything from DEBUG on;
/// it lives to the end of the process. Any thread may call, also from static initialisers.
class LOG4ZEB_EXPORT LOGManager {
 public:
  static LOGLoggerRepository* getLoggerRepository();
  static LOGLogger* getRootLogger();
  /// The logger of that name, made if there is none.
  static LOGLogger* getLogger(const I18NString& name);
  static LOGLogger* getLogger(const I18NString& name, LOGLoggerFactory* factory);
  /// The logger of that name, or null.
  static LOGLogger* exists(const I18NString& name);
  static ZEBList<LOGObject*> getCurrentLoggers();
  static void resetConfiguration();
  /// Closes every appender. Does nothing before the first use of the library.
  static void shutdown();
  /// Has `selector` choose the repository from now on; it is not owned, and other threads that are
  /// asking the one before may still be in it. Null brings the default hierarchy back with the next
  /// use. Throws ZEBAssertError when `guard` is null. The guard is kept, but a later call with
  /// another guard is not refused.
  static void setRepositorySelector(LOGRepositorySelector* selector, LOGObject* guard);

  // Empty, and read by nobody.
  static const I18NString m_DEFAULT_CONFIGURATION_FILE;
  static const I18NString m_DEFAULT_CONFIGURATION_KEY;
  static const I18NString m_CONFIGURATOR_CLASS_KEY;
  static const I18NString m_DEFAULT_INIT_OVERRIDE_KEY;

 protected:
  ~LOGManager() = default;
  static void init();

 private:
  LOGManager() = default;

  static std::atomic<LOGHierarchy*> m_hierarchy;
  static std::atomic<LOGRepositorySelector*> m_repositorySelector;
  static std::atomic<LOGObject*> m_guard;
};

#endif
