#ifndef CORE_LOGREPOSITORYSELECTOR_H
#define CORE_LOGREPOSITORYSELECTOR_H

#include "platform/LOG4ZEBExport.h"

class LOGLoggerRepository;

/// Decides which repository the manager works on; asked anew for every operation, by any thread.
class LOG4ZEB_EXPORT LOGRepositorySelector {
 public:
  virtual ~LOGRepositorySelector();
  virtual LOGLoggerRepository* getLoggerRepository() = 0;
};

#endif
