// What each filter decides, and how its options are set.

#include <gtest/gtest.h>

#include <memory>

#include "filters/LOGDenyAllFilter.h"
#include "filters/LOGLevelMatchFilter.h"
#include "filters/LOGLevelRangeFilter.h"
#include "filters/LOGStringMatchFilter.h"
#include "platform/ZEBAssertError.h"
#include "support/TestEvent.h"

namespace {

constexpr int DENY = -1;
constexpr int NEUTRAL = 0;
constexpr int ACCEPT = 1;

LOGLevel* level(const char* name) { return LOGLevel::toLevel(I18NString(name)); }

int decide(LOGFilter& filter, const char* levelName, const char* text = "m") {
  TestEvent event("filter", levelName, text);
  return filter.decide(&event);
}

}  // namespace

TEST(LevelRangeFilter, DeniesOutsideItsInclusiveBounds) {
  LOGLevelRangeFilter filter;
  EXPECT_EQ(filter.decide(nullptr), NEUTRAL) << "without bounds the event is not looked at";
  filter.setLevelMin(level("INFO"));
  filter.setLevelMax(level("ERROR"));
  EXPECT_EQ(decide(filter, "DEBUG"), DENY);
  EXPECT_EQ(decide(filter, "FATAL"), DENY);
  for (const char* const inside : {"INFO", "WARN", "ERROR"}) {
    filter.setAcceptOnMatch(0);
    EXPECT_EQ(decide(filter, inside), NEUTRAL);
    filter.setAcceptOnMatch(1);
    EXPECT_EQ(decide(filter, inside), ACCEPT);
  }
  EXPECT_THROW(filter.decide(nullptr), ZEBAssertError);
  const std::unique_ptr<LOGObject> copy(filter.clone());
  EXPECT_EQ(decide(static_cast<LOGLevelRangeFilter&>(*copy), "FATAL"), DENY);
}

TEST(LevelRangeFilter, SetsItsOptionsInItsOwnOddWay) {
  LOGLevelRangeFilter filter;
  filter.setLevelMax(level("WARN"));
  filter.setOption("AcceptOnMatch", "true");
  EXPECT_EQ(filter.getLevelMax(), nullptr);
  EXPECT_EQ(filter.getAcceptOnMatch(), 0);
  filter.setOption("LEVELMAX", "true");
  EXPECT_EQ(filter.getAcceptOnMatch(), 1);
  filter.setOption("levelmin", "WARN");
  EXPECT_EQ(filter.getLevelMin(), level("WARN"));
  filter.setOption("anything", "ERROR");
  EXPECT_EQ(filter.getLevelMax(), level("ERROR"));
}

TEST(LevelMatchFilter, DecidesOnlyOnItsLevel) {
  LOGLevelMatchFilter filter;
  EXPECT_EQ(filter.decide(nullptr), NEUTRAL);
  EXPECT_EQ(filter.getLevelToMatch(), nullptr);
  filter.setLevelToMatch("warn");
  EXPECT_EQ(*std::unique_ptr<I18NString>(filter.getLevelToMatch()), I18NString("WARN"));
  EXPECT_EQ(decide(filter, "WARN"), ACCEPT);
  EXPECT_EQ(decide(filter, "ERROR"), NEUTRAL);
  filter.setAcceptOnMatch(0);
  EXPECT_EQ(decide(filter, "WARN"), DENY);
  filter.setLevelToMatch("NOSUCH");
  EXPECT_EQ(decide(filter, "WARN"), NEUTRAL);
}

TEST(StringMatchFilter, FindsItsTextAnywhereWithCase) {
  LOGStringMatchFilter filter;
  EXPECT_EQ(decide(filter, "INFO", "disk"), NEUTRAL);
  filter.setOption("STRINGTOMATCH", "disk");
  for (const char* const message : {"disk full", "no disk here", "a disk"}) {
    EXPECT_EQ(decide(filter, "INFO", message), ACCEPT) << message;
  }
  EXPECT_EQ(decide(filter, "INFO", "Disk full"), NEUTRAL);
  filter.setOption("acceptonmatch", "maybe");
  EXPECT_EQ(filter.getAcceptOnMatch(), 1);
  filter.setOption("acceptonmatch", "FALSE");
  EXPECT_EQ(decide(filter, "INFO", "disk full"), DENY);
  filter.setOption("other", "x");
  EXPECT_EQ(filter.getStringToMatch(), I18NString("disk"));
}

TEST(DenyAllFilter, DeniesEvenNothing) {
  LOGDenyAllFilter filter;
  EXPECT_EQ(filter.decide(nullptr), DENY);
  EXPECT_TRUE(filter.getOptionStrings().isEmpty());
}
