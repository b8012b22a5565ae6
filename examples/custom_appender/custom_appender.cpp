// An appender of the program's own beside those of the document: the console shows errors only, and
// when there is one, the recorder tells what led to it.
//
//   custom_appender DOCUMENT

#include <iostream>

#include "FlightRecorder.h"
#include "layouts/LOGPatternLayout.h"
#include "log4zeb.h"

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2 || LOG4ZEBConfigurator::initialize(arguments[1]) == 0) {
    std::cerr << "usage: custom_appender DOCUMENT, where DOCUMENT is a configuration document\n";
    return 1;
  }

  LOGPatternLayout layout("%p %c - %m%n");
  FlightRecorder recorder(4, &layout);
  LOGManager::getRootLogger()->addAppender(&recorder);

  LOGLogger* const logger = LOGManager::getLogger("shop.orders");
  for (int order = 1; order <= 3; ++order) {
    LOG4ZEB_DEBUG(logger, "order " << order << " is read");
    LOG4ZEB_INFO(logger, "order " << order << " is shipped");
  }
  LOG4ZEB_ERROR(logger, "order 4 cannot be read");

  std::cout << "the last events:\n";
  for (const std::string& line : recorder.lines()) {
    std::cout << "  " << line;
  }

  // Returns when no thread is in the appender any more.
  LOGManager::getRootLogger()->removeAppender(&recorder);
  LOG4ZEBConfigurator::shutdown();
  return 0;
}
