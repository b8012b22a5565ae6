// Dates, the calendar and the date formats.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <initializer_list>
#include <limits>
#include <memory>
#include <optional>
#include <thread>

#include "layouts/LOGCalendar.h"
#include "layouts/LOGDate.h"
#include "layouts/LOGDateTimeDateFormat.h"
#include "layouts/LOGISODateFormat.h"
#include "layouts/LOGRelativeTimeDateFormat.h"
#include "layouts/LOGSimpleDateFormat.h"
#include "layouts/LOGTimeZone.h"
#include "platform/ZEBAssertError.h"
#include "support/Workplace.h"

namespace {

/// The seconds of a local time, in whatever zone the test runs.
std::int64_t localSeconds(int year, int month, int day, int hour, int minute, int second) {
  std::tm fields{};
  fields.tm_year = year - 1900;
  fields.tm_mon = month - 1;
  fields.tm_mday = day;
  fields.tm_hour = hour;
  fields.tm_min = minute;
  fields.tm_sec = second;
  fields.tm_isdst = -1;
  return std::mktime(&fields);
}

std::string localText(const char* format, std::int64_t seconds) {
  const std::time_t time = seconds;
  char text[100];
  std::strftime(text, sizeof text, format, std::localtime(&time));
  return text;
}

std::string threeDigits(int millis) {
  char text[12];
  std::snprintf(text, sizeof text, "%03d", millis);
  return text;
}

/// A date whose milliseconds lie in the range.
LOGDate dateWithMillis(int least, int most) {
  LOGDate date;
  while (date.getTimeMillis() < least || date.getTimeMillis() > most) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    date = LOGDate();
  }
  return date;
}

std::string text(LOGDateFormat& format, LOGDate& date, std::int64_t seconds) {
  date.setTime(seconds);
  return format.format(&date).toStdString();
}

}  // namespace

TEST(Date, KeepsTheTimeOfItsConstructionBesideTheTimeThatIsSet) {
  LOGDate date;
  EXPECT_EQ(date.getTime(), *date.getTime_T());
  const std::int64_t made = *date.getTime_T();
  const int millis = date.getTimeMillis();
  date.setTime(localSeconds(2022, 3, 7, 9, 5, 7));
  EXPECT_EQ(date.getTime(), localSeconds(2022, 3, 7, 9, 5, 7));
  EXPECT_EQ(*date.getTime_T(), made);
  EXPECT_EQ(date.getTimeMillis(), millis);
  EXPECT_EQ(date.toString(), localText("%c", made));
}

TEST(Calendar, GivesTheFieldsOfLocalTime) {
  Workplace workplace;
  const std::unique_ptr<LOGCalendar> calendar(LOGCalendar::getInstance(nullptr));
  EXPECT_THROW(calendar->get(LOGCalendar::YEAR), ZEBAssertError);
  LOGDate date;
  date.setTime(localSeconds(2022, 3, 6, 21, 5, 7));
  calendar->setTime(&date);
  calendar->setTime(nullptr);
  EXPECT_EQ(Workplace::debugs("Trying to set a NULL date in the Calendar! "), 1);
  const int FIELDS[] = {2022, 3, 6, 0, -1, 5, 7, 21, -1};
  for (int code = 0; code < 9; ++code) {
    EXPECT_EQ(calendar->get(code), FIELDS[code]) << code;
  }
  EXPECT_EQ(calendar->get(-1), -1);
}

TEST(Calendar, HasNoFieldsOfATimeBeyondTheYearsThatItCanCount) {
  Workplace workplace;
  const std::unique_ptr<LOGCalendar> calendar(LOGCalendar::getInstance(nullptr));
  LOGAbsoluteTimeDateFormat absolute;
  LOGDateTimeDateFormat dateTime;
  LOGISODateFormat iso;
  LOGSimpleDateFormat simple("HH:mm:ss,SSS");
  constexpr std::int64_t LAST_SECOND_OF_2147485547 = 67768036191676799;
  for (const std::int64_t seconds :
       {std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min(),
        LAST_SECOND_OF_2147485547}) {
    LOGDate date;
    calendar->setTime(&date);
    date.setTime(seconds);
    calendar->setTime(&date);
    EXPECT_THROW(calendar->get(LOGCalendar::YEAR), ZEBAssertError) << seconds;
    for (LOGDateFormat* const format :
         std::initializer_list<LOGDateFormat*>{&absolute, &dateTime, &iso, &simple}) {
      EXPECT_EQ(text(*format, date, seconds), "");
    }
    EXPECT_EQ(Workplace::noted("DateFormat::format -- some ZEBThrowable exception occurred"), 3);
    EXPECT_EQ(Workplace::noted("LOGSimpleDateFormat::format ---- strftime returned an error "), 1);
    EXPECT_EQ(text(iso, date, localSeconds(2022, 3, 7, 9, 5, 7)).substr(0, 19),
              "2022-03-07 09:05:07");
    Workplace::clearDiagnostics();
  }
}

TEST(DateFormat, WritesEveryFieldWithItsLeadingZeros) {
  for (LOGDate date : {dateWithMillis(1, 9), dateWithMillis(10, 99), dateWithMillis(100, 999)}) {
    const std::string millis = threeDigits(date.getTimeMillis());
    const std::string month = localText("%b", *date.getTime_T());
    LOGAbsoluteTimeDateFormat absolute;
    LOGISODateFormat iso;
    LOGDateTimeDateFormat dateTime;
    const std::int64_t early = localSeconds(2022, 3, 7, 9, 5, 7);
    const std::int64_t late = localSeconds(2031, 12, 25, 23, 59, 58);
    EXPECT_EQ(text(absolute, date, early), "09:05:07," + millis);
    EXPECT_EQ(text(absolute, date, late), "23:59:58," + millis);
    EXPECT_EQ(text(iso, date, early), "2022-03-07 09:05:07," + millis);
    EXPECT_EQ(text(iso, date, late), "2031-12-25 23:59:58," + millis);
    EXPECT_EQ(text(dateTime, date, early), "07 " + month + " 2022 09:05:07," + millis);
    EXPECT_EQ(text(dateTime, date, late), "25 " + month + " 2031 23:59:58," + millis);
  }
}

TEST(DateFormat, TakesTheKeptTextWhereSecondsMeetTheKeyOfTheLastOne) {
  LOGDate date = dateWithMillis(1, 999);
  const int millis = date.getTimeMillis();
  const std::string end = "," + threeDigits(millis);
  const std::int64_t time = localSeconds(2022, 3, 7, 9, 5, 7);
  LOGAbsoluteTimeDateFormat absolute;
  LOGISODateFormat iso;
  LOGDateTimeDateFormat dateTime;
  const std::string begin = "07 " + localText("%b", *date.getTime_T()) + " 2022 ";
  for (const std::int64_t seconds : {time, time, time - millis}) {
    EXPECT_EQ(text(absolute, date, seconds), "09:05:07" + end);
    EXPECT_EQ(text(iso, date, seconds), "2022-03-07 09:05:07" + end);
    EXPECT_EQ(text(dateTime, date, seconds), begin + "09:05:07" + end);
  }
  EXPECT_EQ(text(absolute, date, time + 1), "09:05:08" + end);
  LOGAbsoluteTimeDateFormat fresh;
  EXPECT_EQ(text(fresh, date, 0), threeDigits(millis)) << "the first key is 0, its text is empty";
}

TEST(RelativeTimeDateFormat, SubtractsTheDateFromTheStart) {
  LOGDate before;
  std::optional<LOGRelativeTimeDateFormat> made(std::in_place);
  LOGDate after;
  while (before.getTime() != after.getTime() || before.getTimeMillis() > 900) {
    before = LOGDate();
    made.emplace();
    after = LOGDate();
  }
  LOGRelativeTimeDateFormat& format = *made;
  const std::int64_t start = after.getTime();
  EXPECT_EQ(text(format, after, start + 5), "-5,00");
  EXPECT_EQ(text(format, after, start - 3), "3,00");
  constexpr std::int64_t EARLIEST = std::numeric_limits<std::int64_t>::min();
  EXPECT_EQ(text(format, after, EARLIEST), std::to_string(EARLIEST + start) + ",00");
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  LOGDate later;
  const std::string sameSecond = text(format, later, start);
  ASSERT_EQ(sameSecond.substr(0, 3), "00,");
  const int difference = std::stoi(sameSecond.substr(3));
  EXPECT_GE(difference, before.getTimeMillis() - later.getTimeMillis());
  EXPECT_LE(difference, after.getTimeMillis() - later.getTimeMillis());
}

TEST(SimpleDateFormat, KnowsTwoPatternsWithATwelveHourClock) {
  Workplace workplace;
  LOGDate date;
  const std::int64_t evening = localSeconds(2022, 3, 7, 21, 5, 7);
  LOGSimpleDateFormat clock("HH:mm:ss,SSS");
  LOGSimpleDateFormat full("dd MMM yyyy HH:mm:ss,SSS");
  EXPECT_EQ(text(clock, date, evening), "09:05:07");
  EXPECT_EQ(text(full, date, evening), localText("07 %B 2022 09:05:07", evening));
  EXPECT_TRUE(Workplace::diagnostics().empty());
  LOGSimpleDateFormat unknown("yyyy");
  EXPECT_EQ(text(unknown, date, evening), "");
  EXPECT_EQ(Workplace::diagnostics(),
            std::vector<std::string>{"log4zeb:ERROR LogSimpleDateFormat: provided date format "
                                     ":yyyy does not match any format."});
}

TEST(DateFormat, RefusesAMissingDateAndIgnoresTheZone) {
  LOGTimeZone tokyo("Asia/Tokyo");
  LOGDate date;
  std::unique_ptr<LOGDateFormat> formats[] = {
      std::make_unique<LOGAbsoluteTimeDateFormat>(), std::make_unique<LOGDateTimeDateFormat>(),
      std::make_unique<LOGISODateFormat>(), std::make_unique<LOGRelativeTimeDateFormat>(),
      std::make_unique<LOGSimpleDateFormat>("HH:mm:ss,SSS")};
  for (const auto& format : formats) {
    EXPECT_THROW(format->format(nullptr), ZEBAssertError);
    const std::string local = text(*format, date, localSeconds(2022, 3, 7, 9, 5, 7));
    format->setTimeZone(&tokyo);
    format->setCalendar(LOGCalendar::getInstance(&tokyo));
    EXPECT_EQ(text(*format, date, localSeconds(2022, 3, 7, 9, 5, 7)), local);
  }
}
