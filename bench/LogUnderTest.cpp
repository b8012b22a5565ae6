#include "bench/LogUnderTest.h"

#include <stdexcept>

void LogUnderTest::logNumber(int) {
  throw std::logic_error("this log is not measured with formatted messages");
}
