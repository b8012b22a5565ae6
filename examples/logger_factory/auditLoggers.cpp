// The library that the document names, which gives the factory of its loggers.

#include "AuditLoggerFactory.h"
#include "platform/LOG4ZEBExport.h"

extern "C" LOG4ZEB_LIBRARY_EXPORT LOGLoggerFactory* getLoggerFactory() {
  static AuditLoggerFactory factory;  // it stays the library's
  return &factory;
}
