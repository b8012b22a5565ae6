#ifndef CORE_LOGPROVISIONNODE_H
#define CORE_LOGPROVISIONNODE_H

#include "core/LOGObject.h"
#include "platform/ZEBList.h"

class LOGLogger;

/// Stands in a hierarchy's table for a name that has no logger yet, and remembers the loggers below
/// it that wait for one.
class LOG4ZEB_EXPORT LOGProvisionNode : public LOGObject {
 public:
  /// Throws ZEBAssertError when `logger` is null. Loggers are not owned.
  explicit LOGProvisionNode(LOGLogger* logger);
  void addElement(LOGLogger* logger) { m_elements.add(logger); }
  /// REQUIRES: there is one.
  void removeLastElement() { m_elements.remove(m_elements.last()); }
  const ZEBList<LOGLogger*>& getElements() const noexcept { return m_elements; }

 private:
  ZEBList<LOGLogger*> m_elements;
};

#endif
