#include "platform/ZEBUtProcess.h"

#include <windows.h>

int ZEBUtProcess::currentProcessId() { return static_cast<int>(GetCurrentProcessId()); }
