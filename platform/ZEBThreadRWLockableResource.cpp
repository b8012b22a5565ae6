#include "platform/ZEBThreadRWLockableResource.h"

ZEBThreadRWLockableResource::~ZEBThreadRWLockableResource() = default;
