// The smallest program that logs: set up from a document, get a logger by name, log, shut down.
//
//   first DOCUMENT

#include "log4zeb.h"

#include <iostream>

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2 || LOG4ZEBConfigurator::initialize(arguments[1]) == 0) {
    std::cerr << "usage: first DOCUMENT, where DOCUMENT is a configuration document\n";
    return 1;
  }

  LOGLogger* const logger = LOGManager::getLogger("shop.orders");
  logger->info("open for business");
  for (int order = 1; order <= 3; ++order) {
    LOG4ZEB_INFO(logger, "order " << order << " came in");
    LOG4ZEB_DEBUG(logger, "not evaluated unless DEBUG is enabled: " << order * order);
  }
  logger->warn("closing");

  LOG4ZEBConfigurator::shutdown();
  return 0;
}
