#include "platform/ZEBUtTerminal.h"

#include <unistd.h>

bool ZEBUtTerminal::isStandardError() { return isatty(STDERR_FILENO) == 1; }
