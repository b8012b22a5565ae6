#include "platform/ZEBUtTerminal.h"

#include <unistd.h>

bool ZEBUtTerminal::isStandardError() { return isatty(STDERR_FILENO) == 1; }

bool ZEBUtTerminal::isStandardOutput() { return isatty(STDOUT_FILENO) == 1; }

void ZEBUtTerminal::passBytesUnchanged() {}

std::vector<std::string> ZEBUtTerminal::arguments(int count, char** given) {
  return {given, given + count};
}

bool ZEBUtTerminal::mayWrite(const std::string& name) { return access(name.c_str(), W_OK) == 0; }
