#include "tools/LogDestinations.h"

#include <algorithm>
#include <set>
#include <vector>

#include "appenders/LOGAsyncAppender.h"
#include "appenders/LOGConsoleAppender.h"
#include "appenders/LOGFileAppender.h"
#include "core/LOGLevel.h"
#include "core/LOGLogger.h"
#include "core/LOGManager.h"
#include "filters/LOGFilter.h"
#include "net/LOGTCPSocketAppender.h"
#include "tools/CheckRehearsal.h"
#include "tools/FilterView.h"

namespace {

using Appenders = std::vector<LOGAppenderSkeleton*>;

Appenders appendersOf(const LOGLogger* logger) {
  Appenders found;
  for (; logger != nullptr; logger = logger->getAdditivity() == 0 ? nullptr : logger->getParent()) {
    const Appenders own = logger->snapshotOfAppenders();
    found.insert(found.end(), own.begin(), own.end());
  }
  return found;
}

/// Whether one of the appenders, or one behind them, is wanted, on a way on which all may pass.
template <typename Passing, typename Wanted>
bool reach(Appenders appenders, Passing mayPass, Wanted isWanted) {
  std::set<const LOGAppenderSkeleton*> seen;
  for (std::size_t i = 0; i < appenders.size(); ++i) {
    LOGAppenderSkeleton& appender = *appenders[i];
    if (!seen.insert(&appender).second || !mayPass(appender)) {
      continue;
    }
    if (auto* const async = dynamic_cast<LOGAsyncAppender*>(&appender)) {
      const Appenders behind = async->getAAI()->snapshot();
      appenders.insert(appenders.end(), behind.begin(), behind.end());
    } else if (isWanted(appender)) {
      return true;
    }
  }
  return false;
}

/// Whether the filters let some line of the level pass.
bool mayPass(LOGAppenderSkeleton& appender, LOGLevel& level) {
  int decision = LOGFilter::m_NEUTRAL;
  LOGFilter* filter = appender.getFirstFilter();
  for (; filter != nullptr && decision == LOGFilter::m_NEUTRAL; filter = filter->next) {
    decision = FilterView(filter).decision(level).value_or(LOGFilter::m_ACCEPT);
  }
  return decision != LOGFilter::m_DENY;
}

/// Gets at the file object of console appenders, which keeps the code of its last failure.
class ConsoleFile : public LOGConsoleAppender {
 public:
  static bool hasFailed(LOGConsoleAppender& console) {
    const auto& file = console.*(&ConsoleFile::m_outFile);
    return file != nullptr && file->getLastError() != 0;
  }
};

bool canWrite(LOGAppenderSkeleton& appender) {
  const bool needsLayout = appender.requiresLayout() != 0 ||
                           dynamic_cast<const LOGWriterAppender*>(&appender) != nullptr;
  const auto* const file = dynamic_cast<const LOGFileAppender*>(&appender);
  return dynamic_cast<const LOGTCPSocketAppender*>(&appender) == nullptr &&
         (!needsLayout || appender.getLayout() != nullptr) &&
         (file == nullptr || !file->getFile().isEmpty());
}

}  // namespace

bool LogDestinations::hasAnyLoggerAppenders() {
  std::vector<const LOGLogger*> loggers{LOGManager::getRootLogger()};
  for (LOGObject* const object : LOGManager::getCurrentLoggers()) {
    loggers.push_back(dynamic_cast<const LOGLogger*>(object));
  }
  return std::any_of(loggers.begin(), loggers.end(), [](const LOGLogger* logger) {
    return logger != nullptr && !logger->snapshotOfAppenders().empty();
  });
}

bool LogDestinations::hasAppenders(LOGLogger* logger) { return !appendersOf(logger).empty(); }

bool LogDestinations::canLog(LOGLogger* logger) {
  const Appenders appenders = appendersOf(logger);
  const std::vector<LOGLevel*>& levels = CheckRehearsal::levels();
  return std::any_of(levels.begin(), levels.end(), [&](LOGLevel* level) {
    const auto passes = [&](LOGAppenderSkeleton& appender) { return mayPass(appender, *level); };
    return logger->isEnabledFor(level) != 0 && reach(appenders, passes, canWrite);
  });
}

bool LogDestinations::includeConsole(LOGLogger* logger) {
  const auto isConsole = [](LOGAppenderSkeleton& appender) {
    return dynamic_cast<LOGConsoleAppender*>(&appender) != nullptr;
  };
  return reach(
      appendersOf(logger), [](LOGAppenderSkeleton&) { return true; }, isConsole);
}

bool LogDestinations::hasConsoleFailed(LOGLogger* logger) {
  const auto hasDelivered = [](LOGAppenderSkeleton& appender) {
    auto* const async = dynamic_cast<LOGAsyncAppender*>(&appender);
    return async == nullptr || async->flush(LOGAsyncAppender::LONGEST_FINAL_FLUSH) != 0;
  };
  const auto hasFailed = [](LOGAppenderSkeleton& appender) {
    auto* const console = dynamic_cast<LOGConsoleAppender*>(&appender);
    return console != nullptr && ConsoleFile::hasFailed(*console);
  };
  return reach(appendersOf(logger), hasDelivered, hasFailed);
}
