#ifndef CORE_LOGSERIALIZABLE_H
#define CORE_LOGSERIALIZABLE_H

#include "platform/LOG4ZEBExport.h"

/// Marks what may be written to a stream of records.
class LOG4ZEB_EXPORT LOGSerializable {
 public:
  virtual ~LOGSerializable();
};

#endif
