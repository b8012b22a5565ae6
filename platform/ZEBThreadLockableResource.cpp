#include "platform/ZEBThreadLockableResource.h"

ZEBThreadLockableResource::~ZEBThreadLockableResource() = default;
