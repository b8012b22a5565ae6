#include "platform/ZEBUtTerminal.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>
#include <signal.h>
#include <stdio.h>

#include "platform/windows/ZEBWindowsName.h"

namespace {

bool isConsole(DWORD stream) {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(stream), &mode) != 0;
}

}  // namespace

bool ZEBUtTerminal::isStandardError() { return isConsole(STD_ERROR_HANDLE); }

bool ZEBUtTerminal::isStandardOutput() { return isConsole(STD_OUTPUT_HANDLE); }

bool ZEBUtTerminal::hasLostReader() { return false; }

void ZEBUtTerminal::outliveReaders() {}

std::vector<int> ZEBUtTerminal::stopSignals() { return {SIGINT, SIGTERM}; }

void ZEBUtTerminal::passBytesUnchanged() {
  for (FILE* const stream : {stdin, stdout, stderr}) {
    _setmode(_fileno(stream), _O_BINARY);
  }
}

std::vector<std::string> ZEBUtTerminal::arguments(int, char**) {
  // Those that the runtime gives are in the encoding of the system, which has not every character.
  std::vector<std::string> found;
  int count = 0;
  wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
  for (int i = 0; i < count; ++i) {
    found.push_back(ZEBWindowsName::fromWide(words[i]).toStdString());
  }
  LocalFree(words);
  return found;
}

bool ZEBUtTerminal::mayWrite(const std::string& name) {
  constexpr int WRITE = 2;
  return _waccess(ZEBWindowsName::toWide(name).c_str(), WRITE) == 0;
}
