// Logs a name that was typed to forge a line of the log: as it is, and escaped.
//
//   untrusted DOCUMENT

#include <iostream>
#include <string>

#include "log4zeb.h"

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2 || LOG4ZEBConfigurator::initialize(arguments[1]) == 0) {
    std::cerr << "usage: untrusted DOCUMENT, where DOCUMENT is a configuration document\n";
    return 1;
  }
  LOGLogger* const logger = LOGManager::getLogger("shop.login");
  const std::string name = "eve\r\nINFO shop.login - login of root\t\x1B[2K";

  LOG4ZEB_WARN(logger, "login refused: " << name.substr(0, name.find('\t')));
  LOG4ZEB_WARN(logger, "login refused: " << LOGUntrustedText::escaped(name));

  LOG4ZEBConfigurator::shutdown();
  return 0;
}
