// Library code logs without configuring anything: while the program has configured nothing either,
// nothing is written and nothing fails.
//
//   library DOCUMENT

#include <iostream>

#include "Scale.h"
#include "log4zeb.h"

int main(int argumentCount, char** arguments) {
  Scale scale;
  std::cout << "nothing is configured\n" << std::flush;
  scale.weigh("A1", 700);

  if (argumentCount != 2 || LOG4ZEBConfigurator::initialize(arguments[1]) == 0) {
    std::cerr << "usage: library DOCUMENT, where DOCUMENT is a configuration document\n";
    return 1;
  }
  std::cout << "configured\n" << std::flush;
  scale.weigh("A1", 700);
  scale.weigh("B2", 40000);

  LOG4ZEBConfigurator::shutdown();
  std::cout << "shut down\n" << std::flush;
  scale.weigh("A1", 700);
  return 0;
}
