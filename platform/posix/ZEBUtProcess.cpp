#include "platform/ZEBUtProcess.h"

#include <unistd.h>

int ZEBUtProcess::currentProcessId() { return static_cast<int>(getpid()); }
