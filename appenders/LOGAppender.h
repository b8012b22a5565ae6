#ifndef APPENDERS_LOGAPPENDER_H
#define APPENDERS_LOGAPPENDER_H

#include "platform/I18NString.h"

class LOGErrorHandler;
class LOGFilter;
class LOGLayout;
class LOGLoggingEvent;

/// A destination of log output, as loggers and the configuration see it.
class LOG4ZEB_EXPORT LOGAppender {
 public:
  virtual ~LOGAppender();
  virtual void addFilter(LOGFilter* newFilter) = 0;
  virtual void clearFilters() = 0;
  virtual void close() = 0;
  virtual void doAppend(LOGLoggingEvent* event) = 0;
  virtual const I18NString& getName() const = 0;
  virtual void setErrorHandler(LOGErrorHandler* errorHandler) = 0;
  virtual const LOGErrorHandler* getErrorHandler() const = 0;
  virtual void setLayout(LOGLayout* layout) = 0;
  virtual const LOGLayout* getLayout() const = 0;
  virtual void setName(const I18NString& name) = 0;
  virtual int requiresLayout() = 0;
};

#endif
