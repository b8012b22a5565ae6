#ifndef CONFIG_LOGREADINGPLAN_H
#define CONFIG_LOGREADINGPLAN_H

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "appenders/LOGAppenderClaim.h"
#include "appenders/LOGAsyncAppender.h"
#include "config/LOGComponentStore.h"
#include "platform/ZEBIDOM_Element.h"

/// Which appenders stay, which are built and which retire when a document is read. Whoever reads it
/// asks here for the appender that a reference names. What a logger had that is read again retires,
/// and stays open until carryOut() has given every logger what takes its place.
///
/// Guarded by the configurator's run lock.
class LOGReadingPlan {
 public:
  /// Builds into the store what an `appender` element describes; null when it cannot.
  using Build = std::function<LOGAppenderSkeleton*(const ZEBIDOM_Element& element)>;

  /// What an earlier reading has left half made or unclosed, for lack of memory, retires at once.
  LOGReadingPlan(LOGComponentStore& store, const ZEBIDOM_Element& root, Build build);

  /// The appender of that name that is in use; without one, builds what the document describes.
  /// Null, with a report, when there is neither.
  LOGAppenderSkeleton* findAppenderByName(const I18NString& name);
  /// Retires what a logger has, before it is given other appenders.
  void retireAppendersOf(const LOGLogger& logger);
  /// Appenders of the program that the logger's class has not let go do not retire.
  void keepAppendersThatStayedAt(const LOGLogger& logger);
  /// Exchanges what has retired for what has its name now, at loggers and behind asynchronous
  /// appenders, and closes it. Builds what is needed for that.
  void carryOut(LOGLoggerRepository& repository);

 private:
  struct Name {
    ZEBIDOM_Element element;                // the first of that name in the document, or null
    LOGAppenderSkeleton* newest = nullptr;  // of the store's appenders that are not closed
    bool isReferredTo = false;              // by a reference that was followed
    bool isBeingBuilt = false;
  };
  struct Retired {
    LOGAppenderSkeleton* appender;
    std::unique_ptr<LOGAppenderClaim> claim;  // null for one of the store
    bool isAsync;
  };

  LOGAppenderSkeleton* usableAppender(const I18NString& name) const;
  void retire(LOGAppenderSkeleton& appender, std::unique_ptr<LOGAppenderClaim> claim);
  bool isRetired(const LOGAppenderSkeleton* appender) const;
  bool isOut(const LOGAppenderSkeleton& appender) const;
  void rebuild(const std::vector<LOGAppenderSkeleton*>& attached, bool isAtLogger);
  void exchange(LOGLoggerRepository& repository) const;
  LOGAppenderSkeleton* replacementFor(const LOGAppenderSkeleton& attached) const;
  void closeRetired();

  LOGComponentStore& m_store;
  const Build m_build;
  std::map<I18NString, Name> m_names;
  std::size_t m_built = 0;
  std::size_t m_depth = 0;  // of the references that are being followed
  std::set<const LOGAsyncAppender*> m_rebuilt;
  std::vector<Retired> m_retired;
  LOGAsyncAppender::Queues m_queues;  // of what has retired
};

#endif
