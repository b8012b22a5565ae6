#ifndef CORE_LOGHIERARCHY_H
#define CORE_LOGHIERARCHY_H

#include <atomic>
#include <cstddef>
#include <memory>
#include <shared_mutex>
#include <vector>

#include "core/LOGDefaultLoggerFactory.h"
#include "core/LOGHashtable.h"
#include "core/LOGHierarchyEventListener.h"
#include "core/LOGLoggerIndex.h"
#include "core/LOGLoggerRepository.h"
#include "core/LOGMutex.h"
#include "rendering/LOGRendererMap.h"
#include "rendering/LOGRendererSupport.h"

class LOGLogger;
class LOGProvisionNode;

/// The repository of loggers: makes them by name, links each to its nearest existing ancestor by
/// the dotted name, holds the threshold for all of them, and shuts them all down.
///
/// Any thread may use it. getLogger() holds the lock of the table of names; other look-ups wait at
/// most for the moment in which a new logger is linked.
class LOG4ZEB_EXPORT LOGHierarchy : public LOGMutex,
                                    public LOGLoggerRepository,
                                    public LOGRendererSupport {
 public:
  LOGHierarchy();
  /// `root` is not owned and must outlive the hierarchy, which becomes its repository. Throws
  /// ZEBAssertError when it is null.
  explicit LOGHierarchy(LOGLogger* root);
  LOGHierarchy(const LOGHierarchy&) = delete;
  LOGHierarchy& operator=(const LOGHierarchy&) = delete;
  /// Deletes every logger but the root. No other thread may use the hierarchy meanwhile.
  ~LOGHierarchy() override;

  int isDisabled(int level) override;
  /// Sets the threshold by name; an unknown name is reported and changes nothing.
  void setThreshold(const I18NString& level) override;
  /// Requests below the level are switched off everywhere. The level is not owned; null changes
  /// nothing.
  void setThreshold(LOGLevel* level) override;
  LOGLevel* getThreshold() override;
  /// The rank of the threshold.
  int getThresholdRank() const { return m_thresholdInt.load(std::memory_order_acquire); }
  /// Reports, once in the hierarchy's life, that a request met no appender.
  void emitNoAppenderWarning(LOGLogger* logger) override;

  /// The logger of that name, made by `factory` if there is none. Null when the name is taken by
  /// something else.
  LOGLogger* getLogger(const I18NString& name, LOGLoggerFactory* factory) override;
  LOGLogger* getLogger(const I18NString& name) override;
  LOGLogger* getRootLogger() override { return m_root; }
  /// The logger of that name, or null.
  LOGLogger* exists(const I18NString& name) override;
  /// The loggers that can be found by name; the root is not among them.
  ZEBList<LOGObject*> getCurrentLoggers() override;
  /// The root and every logger that was ever made here, also those that the table of names lost or
  /// refused.
  std::vector<LOGLogger*> getAllLoggers() const;
  /// One of them by number, null beyond the last.
  LOGLogger* loggerAt(std::size_t position) const;

  /// Lets asynchronous appenders pass on what they have queued, up to two seconds each; closes and
  /// removes all appenders; then shuts down the diagnostics and the configurator.
  void shutdown() override;
  /// Shuts down and gives every logger the state of a new one.
  void resetConfiguration() override;
  /// Deletes every logger but the root.
  void clear();

  /// Keeps a copy of the listener, as a plain LOGHierarchyEventListener whose operations do
  /// nothing: listeners are accepted and called without effect, on purpose.
  void addHierarchyEventListener(LOGHierarchyEventListener* listener);
  void fireAddAppenderEvent(LOGLogger* logger, LOGAppenderSkeleton* appender) override;

  LOGRendererMap* getRendererMap() override { return m_rendererMap.get(); }
  void setRenderer(const I18NString& className, LOGObjectRenderer* renderer) override;
  void setRenderer(LOGObject* object, LOGObjectRenderer* renderer) override;

 private:
  void fireRemoveAppenderEvent(LOGLogger* logger, LOGAppenderSkeleton* appender);
  std::unique_ptr<LOGLogger> createLogger(const I18NString& name, LOGLoggerFactory* factory);
  /// Takes ownership; returns whether the table took the logger too.
  bool enter(const I18NString& name, std::unique_ptr<LOGLogger> logger);
  /// Deletes the logger that was entered last, under that name.
  void withdraw(const I18NString& name, LOGLogger* logger) noexcept;
  /// Runs `operation`, which links the logger that was entered last. What it throws leaves nothing
  /// behind that knows the logger, which is deleted, and goes on to the caller.
  template <typename Operation>
  void linking(const I18NString& name, LOGLogger* logger, Operation operation);
  /// Puts into the table of names; the result is the table's.
  int putIntoTable(const I18NString& name, LOGObject* object);
  void remember(LOGLogger* logger) noexcept;
  LOGLogger* findOrCreate(const I18NString& name, LOGLoggerFactory* factory);
  LOGLogger* replaceProvision(const I18NString& name, LOGLoggerFactory* factory,
                              const LOGProvisionNode& provision);
  LOGLogger* addNew(const I18NString& name, LOGLoggerFactory* factory);
  std::vector<LOGLogger*> findChildren(const LOGProvisionNode* provisionNode, LOGLogger* logger);
  LOGLogger* findParent(LOGLogger* logger);
  void shutdownExclusively();
  void resetExclusively();
  template <typename Operation>
  void forEachLogger(Operation operation) const;

  std::atomic<int> m_thresholdInt;
  std::atomic<int> m_emittedNoAppenderWarning{0};
  ZEBList<LOGHierarchyEventListener> m_listeners;  // guarded by the hierarchy's own lock
  // Changed under the table's own lock and m_tableAccess; read under either.
  std::unique_ptr<LOGHashtable> m_ht;
  std::atomic<LOGLevel*> m_threshold;
  LOGLogger* m_root;
  std::unique_ptr<LOGRendererMap> m_rendererMap;
  LOGDefaultLoggerFactory m_defaultFactory;

  // Lets look-ups go on while a factory runs under the table's lock. Only the diagnostics' lock is
  // taken while it is held.
  mutable std::shared_mutex m_tableAccess;
  // Loggers as the table of names finds them. Changed under the table's own lock.
  LOGLoggerIndex m_index;
  std::vector<LOGLogger*> m_allLoggers;                  // guarded like the table
  std::vector<std::unique_ptr<LOGLogger>> m_notInTable;  // guarded like the table
  // The nodes where the logger being linked waits. Changed under the table's own lock.
  std::vector<LOGProvisionNode*> m_waitedAt;
};

#endif
