#ifndef CORE_LOGOPTIONHANDLER_H
#define CORE_LOGOPTIONHANDLER_H

#include "platform/LOG4ZEBExport.h"

/// A component whose options take effect together, when it is told to activate them.
class LOG4ZEB_EXPORT LOGOptionHandler {
 public:
  virtual ~LOGOptionHandler();
  virtual void activateOptions() = 0;
};

#endif
