#ifndef CORE_LOGHIERARCHYEVENTLISTENER_H
#define CORE_LOGHIERARCHYEVENTLISTENER_H

#include "platform/LOG4ZEBExport.h"

class LOGAppenderSkeleton;
class LOGLogger;

/// Is told when a hierarchy's appenders come and go. No two listeners are equal.
class LOG4ZEB_EXPORT LOGHierarchyEventListener {
 public:
  virtual ~LOGHierarchyEventListener();
  virtual void addAppenderEvent(LOGLogger*, LOGAppenderSkeleton*) {}
  virtual void removeAppenderEvent(LOGLogger*, LOGAppenderSkeleton*) {}

  /// Always 0, and always 1.
  int operator==(const LOGHierarchyEventListener&) const { return 0; }
  int operator!=(const LOGHierarchyEventListener&) const { return 1; }
};

#endif
