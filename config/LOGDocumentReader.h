#ifndef CONFIG_LOGDOCUMENTREADER_H
#define CONFIG_LOGDOCUMENTREADER_H

#include <optional>

#include "config/LOGDOMConfigurator.h"
#include "config/LOGReadingPlan.h"

/// One reading of a configuration document: goes through its elements, sets loggers and builds
/// components. What is wrong with an element is reported, and reading goes on with the next.
///
/// Lives under the configurator's run lock.
class LOGDocumentReader {
 public:
  LOGDocumentReader(LOGDOMConfigurator& configurator, LOGLoggerRepository& repository,
                    const ZEBIDOM_Element& root);
  LOGDocumentReader(const LOGDocumentReader&) = delete;
  LOGDocumentReader& operator=(const LOGDocumentReader&) = delete;
  void read();

 private:
  static void parseCategoryFactory(const ZEBIDOM_Element& element);
  void parseLogger(const ZEBIDOM_Element& element);
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
  const ZEBIDOM_Element m_root;
  LOGReadingPlan m_plan;
};

#endif
