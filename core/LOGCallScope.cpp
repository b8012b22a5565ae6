#include "core/LOGCallScope.h"

#include "platform/ZEBForkGate.h"

bool LOGCallScope::mayWait() { return s_outermost == nullptr && ZEBForkGate::self().mayWait(); }
