#ifndef CORE_LOGLOGGERREPOSITORY_H
#define CORE_LOGLOGGERREPOSITORY_H

#include "platform/I18NString.h"
#include "platform/ZEBList.h"

class LOGAppenderSkeleton;
class LOGLevel;
class LOGLogger;
class LOGLoggerFactory;
class LOGObject;

/// Where loggers live: makes and finds them by name, and decides for all of them together.
/// LOGHierarchy is the one the library makes.
class LOG4ZEB_EXPORT LOGLoggerRepository {
 public:
  virtual ~LOGLoggerRepository();
  /// 1 when requests of that rank are switched off everywhere, else 0.
  virtual int isDisabled(int level) = 0;
  virtual void setThreshold(const I18NString& level) = 0;
  virtual void setThreshold(LOGLevel* level) = 0;
  virtual void emitNoAppenderWarning(LOGLogger* logger) = 0;
  virtual LOGLevel* getThreshold() = 0;
  virtual LOGLogger* getLogger(const I18NString& name, LOGLoggerFactory* factory) = 0;
  virtual LOGLogger* getLogger(const I18NString& name) = 0;
  virtual LOGLogger* getRootLogger() = 0;
  virtual LOGLogger* exists(const I18NString& name) = 0;
  virtual void shutdown() = 0;
  virtual ZEBList<LOGObject*> getCurrentLoggers() = 0;
  virtual void fireAddAppenderEvent(LOGLogger* logger, LOGAppenderSkeleton* appender) = 0;
  virtual void resetConfiguration() = 0;
};

#endif
