#include "platform/ZEBUtTerminal.h"

#include <poll.h>
#include <signal.h>
#include <unistd.h>

bool ZEBUtTerminal::isStandardError() { return isatty(STDERR_FILENO) == 1; }

bool ZEBUtTerminal::isStandardOutput() { return isatty(STDOUT_FILENO) == 1; }

bool ZEBUtTerminal::hasLostReader() {
  pollfd output{STDOUT_FILENO, 0, 0};
  return poll(&output, 1, 0) == 1 && (output.revents & (POLLERR | POLLHUP)) != 0;
}

void ZEBUtTerminal::outliveReaders() { signal(SIGPIPE, SIG_IGN); }

std::vector<int> ZEBUtTerminal::stopSignals() { return {SIGINT, SIGTERM, SIGHUP}; }

void ZEBUtTerminal::passBytesUnchanged() {}

std::vector<std::string> ZEBUtTerminal::arguments(int count, char** given) {
  return {given, given + count};
}

bool ZEBUtTerminal::mayWrite(const std::string& name) { return access(name.c_str(), W_OK) == 0; }
