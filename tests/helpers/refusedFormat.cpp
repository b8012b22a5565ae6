// Faults that the compiler has to find, one for each value of REFUSED; without it this compiles.

#include "log4zeb.h"
#ifndef WITHOUT_FORMATTER
#ifdef __cpp_lib_format
#include <format>
#else
#include <fmt/format.h>
#endif
#endif

void use(LOGLogger* logger) {
#if REFUSED == 1
  LOG4ZEB_INFOF(logger, "one {} and {}", 1);
#elif REFUSED == 2
  LOG4ZEB_INFOF(logger, "{:d}", "text");
#else
  LOG4ZEB_INFOF(logger, "one {} and {}", 1, "text");
#endif
}
