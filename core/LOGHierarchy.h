#ifndef CORE_LOGHIERARCHY_H
#define CORE_LOGHIERARCHY_H

#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

#include "core/LOGDefaultLoggerFactory.h"
#include "core/LOGGrowingList.h"
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
/// Any thread may use it. A name has one logger for ever. getLogger() holds a lock while it makes a
/// new logger; look-ups of known names take none, and no look-up or list makes a new logger wait.
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
  LOGLevel* getThreshold() override { return m_threshold; }
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
  /// The loggers in the order of a LOGHashtable that all names were put into; the root is not among
  /// them. Deliberate: such a table loses names when it grows, at 200 names and each time at twice
  /// as many, so that loggers are missing here that exists() and getLogger() find.
  ZEBList<LOGObject*> getCurrentLoggers() override;
  /// The root and every logger that was ever made here.
  std::vector<LOGLogger*> getAllLoggers() const;
  /// One of them by number, null beyond the last.
  LOGLogger* loggerAt(std::size_t position) const;

  /// Lets asynchronous appenders pass on what they have queued, up to two seconds each; closes and
  /// removes all appenders; then shuts down the diagnostics and the configurator. What a close()
  /// throws is passed on at the end.
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
  /// A logger and what was entered into the index with it. The entries belong to the index.
  struct Made {
    std::unique_ptr<LOGLogger> logger;
    const LOGLoggerIndex::Entry* entry = nullptr;
    std::vector<const LOGLoggerIndex::Entry*> provisions;
  };
  /// What a new logger is linked to above.
  struct Links {
    LOGLogger* parent;
    std::vector<LOGProvisionNode*> nodes;                         // at which it has to wait
    std::vector<std::unique_ptr<LOGLoggerIndex::Entry>> missing;  // further ones, where it waits
  };

  std::unique_ptr<LOGLogger> createLogger(const I18NString& name, LOGLoggerFactory* factory);
  LOGLogger* findOrCreate(const I18NString& name, LOGLoggerFactory* factory);
  /// Enters a logger under a name that has none and links it. Throws before anything has changed,
  /// or not at all.
  LOGLogger* enter(const I18NString& name, std::unique_ptr<LOGLogger> made);
  std::vector<LOGLogger*> findChildren(const LOGProvisionNode* provisionNode, LOGLogger* logger);
  /// `name` is what the logger is to be found by.
  Links findParent(const I18NString& name, LOGLogger* logger);
  void shutdownExclusively();
  void resetExclusively();
  template <typename Operation>
  void forEachLogger(Operation operation) const;

  std::atomic<int> m_thresholdInt;
  std::atomic<int> m_emittedNoAppenderWarning{0};
  ZEBList<LOGHierarchyEventListener> m_listeners;  // guarded by the hierarchy's own lock
  std::atomic<LOGLevel*> m_threshold;
  LOGLogger* m_root;
  std::unique_ptr<LOGRendererMap> m_rendererMap;
  LOGDefaultLoggerFactory m_defaultFactory;

  ZEBThreadCriticalSection m_making;  // held while a logger is made
  // Changed under m_making, read without a lock.
  LOGGrowingList<Made> m_loggers;  // but the root
  LOGLoggerIndex m_index;
  int m_tableCapacity = 200;  // of the table of names at its beginning
};

#endif
