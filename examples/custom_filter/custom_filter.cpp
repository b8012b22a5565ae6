// A filter of the program's own for an appender that the document describes.
//
//   custom_filter DOCUMENT

#include <iostream>

#include "RepetitionFilter.h"
#include "appenders/LOGAppenderSkeleton.h"
#include "log4zeb.h"

int main(int argumentCount, char** arguments) {
  RepetitionFilter filter;  // lives until after the shutdown
  if (argumentCount != 2 || LOG4ZEBConfigurator::initialize(arguments[1]) == 0) {
    std::cerr << "usage: custom_filter DOCUMENT, where DOCUMENT is a configuration document\n";
    return 1;
  }
  LOGAppenderSkeleton* const appender = LOGManager::getRootLogger()->getAppender("CONSOLE");
  if (appender != nullptr) {
    appender->addFilter(&filter);
  }

  LOGLogger* const logger = LOGManager::getLogger("shop.stock");
  for (int attempt = 1; attempt <= 100; ++attempt) {
    logger->warn("the database does not answer");
  }
  logger->info("the database answers");

  LOG4ZEBConfigurator::shutdown();
  std::cout << filter.denied() << " repetitions were left out\n";
  return 0;
}
