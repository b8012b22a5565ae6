// A program that logs from static constructors and destructors, through the shared library.

#include <gtest/gtest.h>

#include <cstdlib>

#include "support/Workplace.h"

TEST(StaticLifetime, LogsBeforeAndAfterMainAndWritesItsBufferAtTheEnd) {
  Workplace workplace;
  ASSERT_EQ(std::system("\"" LOG4ZEB_STATIC_LIFETIME "\" s.log"), 0);
  EXPECT_EQ(Workplace::lines("s.log"), (std::vector<std::string>{"in main", "destructor late"}));
}
