#include "platform/ZEBThreadRWGuard.h"

LOG4ZEB_HOT ZEBThreadRWGuard::ZEBThreadRWGuard(ZEBThreadRWLockableResource& resource, int /*mode*/)
    : m_resource(resource) {
  m_resource.lockForWriting();
}

LOG4ZEB_HOT ZEBThreadRWGuard::~ZEBThreadRWGuard() { m_resource.unlockAfterWriting(); }
