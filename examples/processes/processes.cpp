// One of several processes that log to one file: start it as often as you like, with a name
// each, which its lines show.
//
//   processes DOCUMENT NAME COUNT

#include <cstdlib>
#include <iostream>
#include <string>

#include "log4zeb.h"

int main(int argumentCount, char** arguments) {
  const int count = argumentCount == 4 ? std::atoi(arguments[3]) : 0;
  if (count < 1) {
    std::cerr << "usage: processes DOCUMENT NAME COUNT, where COUNT is 1 or more\n";
    return 2;
  }
  if (LOG4ZEBConfigurator::initialize(arguments[1]) == 0) {
    std::cerr << "processes: cannot apply the configuration document " << arguments[1] << '\n';
    return 1;
  }
  LOGLogger* const logger = LOGManager::getLogger("worker." + std::string(arguments[2]));
  for (int line = 1; line <= count; ++line) {
    LOG4ZEB_INFO(logger, "line " << line << " of " << count);
  }
  LOG4ZEBConfigurator::shutdown();
  return 0;
}
