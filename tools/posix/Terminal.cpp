#include "tools/Terminal.h"

#include <unistd.h>

bool Terminal::isStandardError() { return isatty(STDERR_FILENO) == 1; }
