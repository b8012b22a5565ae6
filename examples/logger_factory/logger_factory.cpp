// A program whose document asks for a logger of a class of its own, which a library makes. The
// program knows nothing of the class.
//
//   logger_factory DOCUMENT

#include <iostream>

#include "log4zeb.h"

int main(int argumentCount, char** arguments) {
  // Before any code asks for the logger shop.audit: the first request for a name makes the logger.
  if (argumentCount != 2 || LOG4ZEBConfigurator::initialize(arguments[1]) == 0) {
    std::cerr << "usage: logger_factory DOCUMENT, where DOCUMENT is a configuration document\n";
    return 1;
  }

  LOGManager::getLogger("shop.stock")->info("42 articles");
  LOGManager::getLogger("shop.audit")->info("anna refunds order 7");
  LOGManager::getLogger("shop.stock")->error("no articles");

  LOG4ZEBConfigurator::shutdown();
  return 0;
}
