// Logs numbered lines without end and writes each number to standard output as soon as its log call
// has returned. A test kills it and compares the two.
//
//   acknowledgingLogger DOCUMENT

#include <cstdio>
#include <string>

#include "log4zeb.h"

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2 || LOG4ZEBConfigurator::initialize(arguments[1]) == 0) {
    return 1;
  }
  LOGLogger* const logger = LOGManager::getLogger("acknowledging");
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  for (long number = 0;; ++number) {
    LOG4ZEB_INFO(logger, "line " << number);
    const std::string acknowledgement = std::to_string(number) + "\n";
    if (std::fwrite(acknowledgement.data(), 1, acknowledgement.size(), stdout) == 0) {
      return 0;
    }
  }
}
