#ifndef APPENDERS_LOGAPPENDERATTACHABLE_H
#define APPENDERS_LOGAPPENDERATTACHABLE_H

#include "platform/I18NString.h"
#include "platform/ZEBList.h"

class LOGAppenderSkeleton;

/// What holds appenders and passes events on to them. Appenders are never owned.
class LOG4ZEB_EXPORT LOGAppenderAttachable {
 public:
  virtual ~LOGAppenderAttachable();
  virtual void addAppender(LOGAppenderSkeleton* newAppender) = 0;
  virtual ZEBListIterator<LOGAppenderSkeleton*> getAllAppenders() = 0;
  virtual LOGAppenderSkeleton* getAppender(const I18NString& name) = 0;
  virtual int isAttached(LOGAppenderSkeleton* appender) = 0;
  virtual void removeAllAppenders() = 0;
  virtual void removeAppender(const I18NString& name) = 0;
  virtual void removeAppender(LOGAppenderSkeleton* appender) = 0;
};

#endif
