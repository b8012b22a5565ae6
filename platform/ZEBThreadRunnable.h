#ifndef PLATFORM_ZEBTHREADRUNNABLE_H
#define PLATFORM_ZEBTHREADRUNNABLE_H

#include "platform/LOG4ZEBExport.h"

/// Work that a ZEBThread runs.
class LOG4ZEB_EXPORT ZEBThreadRunnable {
 public:
  virtual ~ZEBThreadRunnable();
  /// The thread's body. What it throws ends the thread and nothing else.
  virtual void run() = 0;
};

#endif
