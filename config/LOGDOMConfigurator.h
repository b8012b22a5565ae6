#ifndef CONFIG_LOGDOMCONFIGURATOR_H
#define CONFIG_LOGDOMCONFIGURATOR_H

#include <functional>
#include <memory>

#include "config/LOGConfigurator.h"
#include "platform/I18NString.h"
#include "platform/ZEBIDOM_Element.h"
#include "platform/ZEBThreadLockableResource.h"

class LOGComponentStore;
class LOGLoggerFactory;
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
  /// Deletes the configurator, and with it all that it has built. What is queued is lost:
  /// LOG4ZEBConfigurator::shutdown() flushes first. Called where configure() may be.
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
  static void configureAndWatch(const I18NString&) {}
  static void configureAndWatch(const I18NString&, unsigned int) {}

 private:
  friend class LOGDocumentReader;

  LOGDOMConfigurator();
  LOGDOMConfigurator(const LOGDOMConfigurator&) = delete;
  LOGDOMConfigurator& operator=(const LOGDOMConfigurator&) = delete;
  ~LOGDOMConfigurator() override;

  /// Runs `operation`, which applies a document and returns what the caller gets, unless this is
  /// within a run.
  template <typename Operation>
  static int run(Operation operation);
  static void forgetRepository(LOGLoggerRepository* repository);

  static LOGDOMConfigurator* m_domConfig;    // guarded by the run lock, like all below
  static LOGLoggerFactory* m_loggerFactory;  // belongs to its library
  static ZEBSharedLibrary& m_hFactInst;      // never unloaded, nor is the next
  static ZEBSharedLibrary& m_hDyeTraceFilterInst;

  const std::unique_ptr<LOGComponentStore> m_store;
  int m_procIdFlag = 0;
  int m_procId = 0;
};

#endif
