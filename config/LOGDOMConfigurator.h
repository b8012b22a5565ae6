#ifndef CONFIG_LOGDOMCONFIGURATOR_H
#define CONFIG_LOGDOMCONFIGURATOR_H

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "appenders/LOGAsyncAppender.h"
#include "config/LOGConfigurator.h"
#include "core/LOGHashtable.h"
#include "platform/I18NString.h"
#include "platform/ZEBIDOM_Element.h"
#include "platform/ZEBThreadLockableResource.h"

class LOGAppenderClaim;
class LOGAppenderSkeleton;
class LOGErrorHandler;
class LOGFilter;
class LOGLayout;
class LOGLogger;
class LOGLoggerFactory;
class LOGObject;
class ZEBSharedLibrary;

/// Reads a configuration document and builds what it describes into a repository: appenders with
/// their layouts, filters and error handlers, and loggers with levels and additivity. There is one
/// configurator in the process; it owns what it has built and frees it when it is shut down.
///
/// A document may be applied again and again, also while other threads log. An appender that no
/// re-read logger had is used again; one that was taken from such a logger is stale and is built
/// anew. It stays open until the loggers have their new appenders, so that an event in between is
/// not lost, and is closed at the end of the run. Runs and shutdowns wait for each other; what a
/// run calls, such as a library that the document loads, is refused both, with a report. No
/// operation lets an exception out: what is wrong in a document is reported through the
/// diagnostics, and reading goes on with the next element.
class LOG4ZEB_EXPORT LOGDOMConfigurator : public LOGConfigurator, public ZEBThreadLockableResource {
 public:
  /// Makes the configurator, unless it exists. Throws ZEBOutOfMemoryError.
  static void initialize();
  /// Deletes the configurator, and with it all that it has built.
  static void shutdown();

  /// Applies a document to the default repository. Returns 1 when it was read and applied, else 0.
  /// Not to be called, like the forms below, by an appender, a filter or a message while it is
  /// rendered: it would wait for a run on another thread, which waits for the locks held there.
  static int configure(const I18NString& fileName);
  /// The same; rolling file appenders get the process id into their file names, where the document
  /// has not switched that off.
  static int configureWithProcID(const I18NString& fileName);
  /// The same for a document that was parsed already, given its root element.
  static int configure(const ZEBIDOM_Element& root);
  /// Switches the process ids in file names on (1) or off for the documents that follow.
  static void applyProcIDtoFileAppender(int on);

  int doConfigure(const I18NString& fileName, LOGLoggerRepository* repository) override;
  int doConfigure(char* fileName, LOGLoggerRepository* repository);
  int doConfigure(const ZEBIDOM_Element& root, LOGLoggerRepository* repository);

  /// Whether a document may name a logger so: not with more than 1024 characters or 64 dots.
  static bool isReasonableLoggerName(const I18NString& name);

  /// Runs `operation` while no run and no shutdown of the configurator is under way, and returns
  /// true. Within a run it reports that it is refused and returns false.
  static bool runExclusively(const std::function<void()>& operation);

  static const I18NString CONFIGURATION_TAG;
  static const I18NString OLD_CONFIGURATION_TAG;
  static const I18NString CATEGORY_FACTORY_TAG;
  static const I18NString LOGGER;
  static const I18NString CATEGORY;
  static const I18NString ROOT_TAG;
  static const I18NString RENDERER_TAG;
  static const I18NString APPENDER_TAG;
  static const I18NString APPENDER_REF_TAG;
  static const I18NString PARAM_TAG;
  static const I18NString LAYOUT_TAG;
  static const I18NString FILTER_TAG;
  static const I18NString ERROR_HANDLER_TAG;
  static const I18NString LEVEL_TAG;
  static const I18NString PRIORITY_TAG;
  static const I18NString LOGGER_REF;
  static const I18NString ROOT_REF;
  static const I18NString LOG4ZEB_NAME_ATTR;
  static const I18NString VALUE_ATTR;
  static const I18NString CLASS_ATTR;
  static const I18NString REF_ATTR;
  static const I18NString ADDITIVITY_ATTR;
  static const I18NString THRESHOLD_ATTR;
  static const I18NString INTERNAL_DEBUG_ATTR;
  static const I18NString CONFIG_DEBUG_ATTR;
  static const I18NString RENDERING_CLASS_ATTR;
  static const I18NString RENDERED_CLASS_ATTR;
  static const I18NString ADDPROCID_ATTR;
  static const I18NString dbfKey;
  static const I18NString EMPTY_STR;

 protected:
  /// Do nothing: a program that wants a file watched constructs a watchdog itself.
  static void configureAndWatch(const I18NString& fileName);
  static void configureAndWatch(const I18NString& fileName, unsigned int delay);

 private:
  LOGDOMConfigurator();
  LOGDOMConfigurator(const LOGDOMConfigurator&) = delete;
  LOGDOMConfigurator& operator=(const LOGDOMConfigurator&) = delete;
  ~LOGDOMConfigurator() override;

  /// Runs `operation`, which applies a document and returns what the caller gets, unless this is
  /// within a run.
  template <typename Operation>
  static int run(Operation operation);
  bool parseFile(const I18NString& fileName);
  bool parse(const ZEBIDOM_Element& root);
  bool hasConfigurationTag(const ZEBIDOM_Element& root) const;
  void applyRootAttributes(const ZEBIDOM_Element& root);
  void parseCategoryFactory(const ZEBIDOM_Element& element);
  void parseLogger(const ZEBIDOM_Element& element);
  LOGLogger* findLogger(const I18NString& name, const I18NString& className);
  void parseRoot(const ZEBIDOM_Element& element);
  void parseChildrenOfLoggerElement(const ZEBIDOM_Element& element, LOGLogger* logger, bool isRoot,
                                    std::optional<int> additive);
  LOGAppenderSkeleton* referencedAppender(const ZEBIDOM_Element& reference,
                                          const LOGLogger& logger);
  void parseLevel(const ZEBIDOM_Element& element, LOGLogger& logger, bool isRoot);
  void parseRenderer(const ZEBIDOM_Element& element);

  LOGAppenderSkeleton* findAppenderByReference(const ZEBIDOM_Element& reference);
  LOGAppenderSkeleton* findAppenderByName(const I18NString& name);
  LOGAppenderSkeleton* parseAppender(const ZEBIDOM_Element& element);
  LOGAppenderSkeleton* newAppender(const ZEBIDOM_Element& element);
  void parseAppenderChild(const ZEBIDOM_Element& child, LOGAppenderSkeleton& appender);
  void requestAttachment(const ZEBIDOM_Element& reference, LOGAppenderSkeleton& appender);
  LOGLayout* parseLayout(const ZEBIDOM_Element& element);
  void parseFilters(const ZEBIDOM_Element& element, LOGAppenderSkeleton* appender);
  LOGFilter* newFilter(const I18NString& className);
  LOGFilter* newDyeTraceFilter();
  void parseErrorHandler(const ZEBIDOM_Element& element, LOGAppenderSkeleton* appender);
  void parseErrorHandlerChild(const ZEBIDOM_Element& child, LOGErrorHandler& handler);

  void setParameters(const ZEBIDOM_Element& parent, LOGObject& object);
  void setParameter(const ZEBIDOM_Element& element, LOGObject* object);
  I18NString classOf(const ZEBIDOM_Element& element) const;
  static I18NString subst(const I18NString& text);
  I18NString resolveFileName(const I18NString& name) const;
  static I18NString addProcIDToFileName(const I18NString& name, int processId);

  void use(LOGLoggerRepository* repository);
  static void forgetRepository(LOGLoggerRepository* repository);
  static std::vector<LOGLogger*> allLoggersOf(LOGLoggerRepository* repository);
  void beginRun(const ZEBIDOM_Element& root);
  void endRun();
  void retireAppendersOf(const LOGLogger& logger);
  /// Appenders of the program that the logger's class has not let go stay as they are.
  void keepAppendersThatStayedAt(const LOGLogger& logger);
  /// Lets a new asynchronous appender know the retired one whose place it takes.
  void succeedRetired(LOGAppenderSkeleton& appender) const;
  bool isRetired(const LOGAppenderSkeleton& appender) const;
  LOGAppenderSkeleton* usableAppender(const I18NString& name) const;
  /// Without those of the program, which may be gone as soon as they are removed.
  std::vector<LOGAppenderSkeleton*> ownAmong(std::vector<LOGAppenderSkeleton*> attached) const;
  /// What takes the place of an appender that a logger has: another one where the logger was given
  /// it before a logger that is read later lost it. Null when it cannot be built.
  LOGAppenderSkeleton* rebuilt(LOGAppenderSkeleton& appender);
  /// Builds what the document has for appenders that are behind one in use and cannot stay there,
  /// because loggers had them too.
  void rebuildBehind(LOGAppenderSkeleton& holder, std::set<const LOGAppenderSkeleton*>& seen);
  /// What takes the place of one attached to a logger, or to `async`: null where it stays.
  LOGAppenderSkeleton* replacementFor(const LOGAppenderSkeleton& attached,
                                      const LOGAsyncAppender* async) const;
  static void closeOwn(LOGAppenderSkeleton& appender);
  void closeRetiredAppenders();
  void detachFromLoggers(LOGAppenderSkeleton* appender) const;
  template <typename Operation>
  void forEachAppender(Operation operation) const;

  static LOGDOMConfigurator* m_domConfig;    // guarded by the run lock, like all below
  static LOGLoggerFactory* m_loggerFactory;  // belongs to its library
  static ZEBSharedLibrary& m_hFactInst;      // never unloaded, nor is the next
  static ZEBSharedLibrary& m_hDyeTraceFilterInst;

  /// An appender taken from a logger that this run has read again.
  struct Retired {
    LOGAppenderSkeleton* appender;
    std::unique_ptr<LOGAppenderClaim> claim;  // of the program's; null for the configurator's
  };

  std::unique_ptr<LOGHashtable> m_appenderBag;  // newest appender of each name; owns none
  LOGHashtable m_objectTable;  // layouts, filters and error handlers by class; owns none
  LOGLoggerRepository* m_repository = nullptr;
  std::set<LOGLoggerRepository*> m_repositories;  // that documents were applied to
  int m_procIdFlag = 0;
  int m_procId = 0;
  // What this run has made, or the last one when it lacked memory: they may be half read, and the
  // next run makes them anew.
  std::vector<LOGAppenderSkeleton*> m_doubtful;

  struct Described {
    ZEBIDOM_Element element;
    bool isInUse;  // a reference to it has been followed
  };
  std::map<I18NString, Described> m_appenderElements;  // the first of each name
  std::size_t m_appendersOfRun = 0;
  std::vector<I18NString> m_appendersUnderConstruction;
  std::vector<Retired> m_retired;
  LOGAsyncAppender::Queues m_retiredQueues;
  // What the configurator frees, in the opposite order.
  std::vector<std::unique_ptr<LOGFilter>> m_filters;
  std::vector<std::unique_ptr<LOGLayout>> m_layouts;
  std::vector<std::unique_ptr<LOGAppenderSkeleton>> m_appenders;
  std::vector<std::unique_ptr<LOGAppenderSkeleton>> m_staleAppenders;  // a program may know them
  std::set<const LOGAppenderSkeleton*> m_own;                          // all of these
};

#endif
