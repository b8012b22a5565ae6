#ifndef CONFIG_LOGCOMPONENTSTORE_H
#define CONFIG_LOGCOMPONENTSTORE_H

#include <deque>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "appenders/LOGAppenderSkeleton.h"
#include "core/LOGFailures.h"
#include "core/LOGHierarchy.h"
#include "core/LOGLogger.h"
#include "filters/LOGFilter.h"
#include "layouts/LOGLayout.h"

/// Runs one step of taking appenders out of use; what fails is reported and ends there.
template <typename Operation>
void logTakeOutOfUse(Operation operation) noexcept {
  logContainingFailures(
      LOGFailureTexts::same("LOGDOMConfigurator -- an appender could not be taken out of use"),
      operation);
}

/// Calls `operation` with the root, if there is one, and the loggers of a repository. Needs no
/// memory where that is the library's own.
template <typename Operation>
void logForEachLogger(LOGLoggerRepository& repository, Operation operation) {
  if (const auto* const hierarchy = dynamic_cast<const LOGHierarchy*>(&repository)) {
    for (std::size_t i = 0; LOGLogger* const logger = hierarchy->loggerAt(i); ++i) {
      operation(*logger);
    }
    return;
  }
  if (LOGLogger* const root = repository.getRootLogger()) {
    operation(*root);
  }
  for (LOGObject* const logger : repository.getCurrentLoggers()) {
    if (logger != nullptr) {
      operation(static_cast<LOGLogger&>(*logger));
    }
  }
}

/// The appenders, layouts and filters that documents have described, and the repositories that
/// these were applied to. All are kept until the store is destroyed, because a program may know an
/// appender that is closed. The destructor closes the appenders and takes them from their loggers.
///
/// Guarded by the configurator's run lock.
class LOGComponentStore {
 public:
  enum class State {
    Built,    // by this reading, or by one that lacked memory and may have left it half made
    InUse,    // and may be used again by a later reading
    Retired,  // taken from a logger, to be closed at the end of this reading or of the next
    Closed,   // for good
  };
  struct Appender {
    std::unique_ptr<LOGAppenderSkeleton> object;
    State state;
  };

  LOGComponentStore() = default;
  LOGComponentStore(const LOGComponentStore&) = delete;
  LOGComponentStore& operator=(const LOGComponentStore&) = delete;
  ~LOGComponentStore();

  LOGAppenderSkeleton* add(std::unique_ptr<LOGAppenderSkeleton> appender);
  LOGLayout* add(std::unique_ptr<LOGLayout> layout);
  /// A library may have made the filter before, and then it is here already.
  LOGFilter* add(std::unique_ptr<LOGFilter> filter);
  void add(LOGLoggerRepository& repository) { m_repositories.insert(&repository); }

  /// In the order in which they were built.
  std::deque<Appender>& appenders() { return m_appenders; }
  /// Null for an appender of the program, which may be gone: it is not looked at.
  Appender* find(const LOGAppenderSkeleton* appender) const;
  /// What was built may be used again by later readings.
  void keepBuilt();
  /// Closes an appender for good, when no dispatcher passes an event to it any more.
  static void close(Appender& own);
  /// Takes the appenders from the root of a repository that is about to be destroyed.
  void forget(LOGLoggerRepository* repository);

  static bool isAsynchronous(const LOGAppenderSkeleton& appender);

 private:
  void detachFromLoggers(LOGAppenderSkeleton* appender) const;

  std::set<LOGLoggerRepository*> m_repositories;
  // Freed in the opposite order.
  std::vector<std::unique_ptr<LOGFilter>> m_filters;
  std::vector<std::unique_ptr<LOGLayout>> m_layouts;
  std::deque<Appender> m_appenders;
  std::map<const LOGAppenderSkeleton*, Appender*> m_byAddress;
};

#endif
