// A layout of the program's own for an appender that the document describes. Where the lines go and
// which of them is the document's affair, how they look is the program's.
//
//   custom_layout DOCUMENT

#include <iostream>
#include <stdexcept>

#include "JsonLayout.h"
#include "appenders/LOGAppenderSkeleton.h"
#include "log4zeb.h"

int main(int argumentCount, char** arguments) {
  JsonLayout layout;  // lives until after the shutdown
  if (argumentCount != 2 || LOG4ZEBConfigurator::initialize(arguments[1]) == 0) {
    std::cerr << "usage: custom_layout DOCUMENT, where DOCUMENT is a configuration document\n";
    return 1;
  }
  LOGAppenderSkeleton* const appender = LOGManager::getRootLogger()->getAppender("JSON");
  if (appender != nullptr) {
    appender->setLayout(&layout);
  }

  LOGLogger* const logger = LOGManager::getLogger("shop.orders");
  LOG4ZEB_NDC_SCOPE("order 7");
  logger->info("asks for \"two\nlines\"");
  try {
    throw std::runtime_error("no such article");
  } catch (const std::exception& failure) {
    LOG4ZEB_ERROR_EX(logger, "is refused", failure);
  }

  LOG4ZEBConfigurator::shutdown();
  return 0;
}
