#ifndef TOOLS_CHECKSUMMARY_H
#define TOOLS_CHECKSUMMARY_H

#include <map>
#include <string>
#include <vector>

#include "tools/CheckRehearsal.h"
#include "tools/CheckedDocument.h"

/// What a document will do, as plain values for the reports to show: the loggers with their levels
/// and where their events go, and the appenders.
class CheckSummary {
 public:
  /// Levels whose events go to the same places.
  struct Route {
    std::vector<std::string> levels;
    std::vector<std::string> destinations;  // none: the level is off, or nobody takes it
    bool isEnabled;
  };
  struct Logger {
    std::string name;  // "root" for the root logger
    bool isRoot;
    int line;   // 0 for a root logger that the document does not mention
    int depth;  // below the root, counted along the loggers of the document
    std::string level;
    std::string inheritedFrom;  // the logger that has the level; empty when it is its own
    bool isAdditive;
    std::vector<Route> routes;
  };
  struct Appender {
    std::string name;
    std::string className;
    int line;
    bool isBuilt;
    std::string destination;
    std::string layout;  // class and pattern; empty without one
    std::string sample;  // what the layout makes of an event
    std::vector<std::string> filters;
    std::string threshold;  // empty without one
  };

  CheckSummary(const CheckedDocument& document, const CheckRehearsal& rehearsal);

  const std::string& threshold() const { return m_threshold; }
  const std::vector<Logger>& loggers() const { return m_loggers; }
  const std::vector<Appender>& appenders() const { return m_appenders; }

 private:
  void addLoggers(const CheckRehearsal& rehearsal);
  std::vector<Route> routesOf(LOGLogger& logger, const CheckRehearsal& rehearsal);
  void addAppender(const ZEBIDOM_Element& element, const CheckRehearsal::Appender* known);
  void proposeSample(const CheckRehearsal::Delivery& delivery, LOGLogger& logger, LOGLevel& level);

  /// The event that shows what an appender's layout writes.
  struct Sample {
    LOGLogger* logger = nullptr;
    LOGLevel* level = nullptr;
    int fitness = -1;
  };
  std::map<const LOGAppenderSkeleton*, Sample> m_samples;
  std::string m_threshold;
  std::vector<Logger> m_loggers;
  std::vector<Appender> m_appenders;
};

#endif
