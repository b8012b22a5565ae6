#include "platform/ZEBForkGate.h"

bool ZEBForkGate::watchForks() noexcept { return false; }
