// Messages by format strings. This one formats with {fmt}; a program for C++20 whose standard
// library has std::format includes <format> in its place.
//
//   formatting DOCUMENT

#include <fmt/format.h>

#include "log4zeb.h"

#include <iostream>
#include <string>

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2 || LOG4ZEBConfigurator::initialize(arguments[1]) == 0) {
    std::cerr << "usage: formatting DOCUMENT, where DOCUMENT is a configuration document\n";
    return 1;
  }
  LOGLogger* const logger = LOGManager::getLogger("shop.statistics");

  const std::string user = "Ada";
  int asked = 0;
  LOG4ZEB_INFOF(logger, "{} has {} orders in {:.1f} ms", user, 3, 12.345);
  LOG4ZEB_WARNF(logger, "{:>6} bytes are left, {:#x} in hexadecimal", 4096, 4096);
  LOG4ZEB_DEBUGF(logger, "never formatted unless DEBUG is enabled: {}", ++asked);
  LOG4ZEB_INFOF(logger, "the argument of the request for DEBUG was evaluated {} times", asked);

  LOG4ZEBConfigurator::shutdown();
  return 0;
}
