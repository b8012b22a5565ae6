#ifndef CONFIG_LOGDOCUMENTREADER_H
#define CONFIG_LOGDOCUMENTREADER_H

#include <optional>

#include "config/LOGDOMConfigurator.h"
#include "config/LOGReadingPlan.h"

/// One reading of a configuration document: goes through its elements, sets loggers and builds
/// components. What is wrong with an element is reported, and reading goes on with the next.
///
/// Guarded by the configurator's run lock.
class LOGDocumentReader {
 public:
  /// Retires at once what an earlier reading has left over. REQUIRES: the configurator has a
  /// repository.
  LOGDocumentReader(LOGDOMConfigurator& configurator, const ZEBIDOM_Element& root);
  LOGDocumentReader(const LOGDocumentReader&) = delete;
  LOGDocumentReader& operator=(const LOGDocumentReader&) = delete;

  void read(const ZEBIDOM_Element& root);

 private:
  /// Reads an element under the configurator's lock.
  template <typename Operation>
  void parseUnderLock(const char* lockText, const char* otherText, Operation operation);
  static void parseCategoryFactory(const ZEBIDOM_Element& element);
  void parseLogger(const ZEBIDOM_Element& element);
  void parseRoot(const ZEBIDOM_Element& element);
  void parseChildrenOfLoggerElement(const ZEBIDOM_Element& element, LOGLogger* logger, bool isRoot,
                                    std::optional<int> additive);
  void parseRenderer(const ZEBIDOM_Element& element);
  LOGAppenderSkeleton* parseAppender(const ZEBIDOM_Element& element);
  LOGAppenderSkeleton* newAppender(const ZEBIDOM_Element& element);
  void parseAppenderChild(const ZEBIDOM_Element& child, LOGAppenderSkeleton& appender);
  void requestAttachment(const I18NString& name, LOGAppenderSkeleton& appender);
  LOGLayout* parseLayout(const ZEBIDOM_Element& element);
  void parseFilter(const ZEBIDOM_Element& element, LOGAppenderSkeleton& appender);
  LOGFilter* newFilter(const I18NString& className);
  void parseErrorHandler(const ZEBIDOM_Element& element, LOGAppenderSkeleton& appender);
  void setParameters(const ZEBIDOM_Element& parent, LOGObject& object);
  void setParameter(const ZEBIDOM_Element& element, LOGObject& object);

  LOGDOMConfigurator& m_configurator;
  LOGLoggerRepository& m_repository;
  LOGComponentStore& m_store;
  LOGReadingPlan m_plan;
};

#endif
