// A program that logs from static constructors and destructors, through the shared library.

#include <gtest/gtest.h>

#include "support/ChildProcess.h"
#include "support/Workplace.h"

TEST(StaticLifetime, LogsBeforeAndAfterMainAndWritesItsBufferAtTheEnd) {
  Workplace workplace;
  ASSERT_EQ(ChildProcess(LOG4ZEB_STATIC_LIFETIME, {"s.log"}).wait().exitCode, 0);
  // The first thread's context ends before static destructors run, or only with the process.
#ifdef _WIN32
  const std::string last = "destructor main late";
#else
  const std::string last = "destructor late";
#endif
  EXPECT_EQ(Workplace::lines("s.log"), (std::vector<std::string>{"in main", last}));
}
