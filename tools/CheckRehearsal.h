#ifndef TOOLS_CHECKREHEARSAL_H
#define TOOLS_CHECKREHEARSAL_H

#include <map>
#include <set>
#include <string>
#include <vector>

#include "tools/CheckedDocument.h"

class LOGAppenderSkeleton;
class LOGFilter;
class LOGLevel;
class LOGLogger;

/// Applies a document to the loggers of this process, with the library's own configurator, and asks
/// what came of it. No event is logged, so no file, socket or thread is made: appenders open at
/// their first event. What the configurator itself would do outside of the process is left out:
/// loading libraries and looking up hosts. One rehearsal is made in a process.
class CheckRehearsal {
 public:
  /// A logger that the document sets up.
  struct Logger {
    CheckElement element;  // the last one of that name; null for a root that is not mentioned
    LOGLogger* logger;
    bool isRoot;
  };
  /// An appender that the document has made, in the order of their making.
  struct Appender {
    CheckElement element;
    LOGAppenderSkeleton* appender;
    std::string name;
  };
  enum class Passes { No, Maybe, Yes };
  /// What becomes of an event at one appender, which may stand behind others.
  struct Delivery {
    std::vector<LOGAppenderSkeleton*> path;  // the last one is the destination
    Passes passes = Passes::Yes;
    std::string condition;  // of Maybe
  };

  explicit CheckRehearsal(const CheckedDocument& document);
  CheckRehearsal(const CheckRehearsal&) = delete;
  CheckRehearsal& operator=(const CheckRehearsal&) = delete;

  const std::vector<Logger>& loggers() const { return m_loggers; }
  const std::vector<Appender>& appenders() const { return m_appenders; }
  /// Elements of layouts in the order in which the library reads them.
  const std::vector<CheckElement>& layoutsInOrder() const { return m_layouts; }

  /// The levels that events can have, the lowest first.
  static const std::vector<LOGLevel*>& levels();
  /// Where an event of that logger and level goes; nothing when the level is not enabled.
  std::vector<Delivery> deliveries(LOGLogger& logger, LOGLevel& level) const;
  /// The ways from one logger's own appenders to destinations, whatever the filters say. A document
  /// can make more ways than can be followed; the first thousand stand for all.
  static std::vector<Delivery> ways(const LOGLogger& logger);
  /// What the filters decide about a level, from one of them on; no path is given.
  static Delivery decide(const Appender& appender, std::size_t firstFilter, LOGLevel& level);
  /// The filters of an appender in their order; null for one that a library would make.
  static std::vector<LOGFilter*> filters(const Appender& appender);

 private:
  void collectLoggers(const CheckedDocument& document);
  void collectAppenders(const CheckedDocument& document, const CheckElement& holder,
                        const std::vector<LOGAppenderSkeleton*>& attached);
  void collectAppender(const CheckedDocument& document, const std::string& name,
                       LOGAppenderSkeleton* appender);

  std::vector<Logger> m_loggers;
  std::vector<Appender> m_appenders;
  std::map<const LOGAppenderSkeleton*, std::size_t> m_positions;  // in m_appenders
  std::vector<CheckElement> m_layouts;
  std::set<std::string> m_visited;
};

#endif
