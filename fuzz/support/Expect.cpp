#include "support/Expect.h"

#include <cstdlib>
#include <iostream>

void expect(bool holds, const char* expected) {
  if (!holds) {
    std::cerr << "expected: " << expected << std::endl;
    std::abort();
  }
}
