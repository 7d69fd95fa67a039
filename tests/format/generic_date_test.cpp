#include <chrono>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "format/generic_date.h"

namespace kelpdex {
namespace {

DateTimeRecord Date(std::string_view text) {
  DateTimeRecord r;
  EXPECT_TRUE(ParseGenericDate(text, r)) << text;
  return r;
}

TEST(GenericDate, ParsesFieldsAndDerivedDays) {
  DateTimeRecord r = Date("2006-01-31T13:10:55.123+02:00");
  EXPECT_TRUE(r.hasDate && r.hasTime);
  EXPECT_EQ(r.year * 10000 + r.month * 100 + r.day, 20060131);
  EXPECT_EQ(r.hour * 10000 + r.minute * 100 + r.second, 131055);
  EXPECT_EQ(r.millisecond, 123);
  EXPECT_EQ(r.offsetHour * 100 + r.offsetMinute, 200);
  EXPECT_EQ(r.dayOfYear * 10 + r.dayOfWeek, 313);  // a Tuesday

  EXPECT_EQ(Date("2005-01-01").dayOfWeek, 7);
  EXPECT_EQ(Date("2004-12-31").dayOfYear, 366);
  EXPECT_EQ(Date("40000-01-01T15:10:00").year, 40000);
  EXPECT_EQ(Date("0005-03-01 ").year, 5);
  EXPECT_EQ(Date("13:10:55.1").millisecond, 100);
  EXPECT_EQ(Date("2005-08-08T20:00:01.01").millisecond, 10);
  r = Date("13:10:55-00:30");
  EXPECT_TRUE(!r.hasDate && r.hasTime && r.offsetSign == '-' && r.offsetMinute == 30);
  EXPECT_EQ(r.dayOfWeek, 0);
}

TEST(GenericDate, RejectsDaysTheCalendarLacksAndMalformedText) {
  EXPECT_EQ(Date("2004-02-29").dayOfYear, 60);
  EXPECT_EQ(Date("2000-02-29").dayOfYear, 60);
  DateTimeRecord r = Date("2005-07-15");
  const DateTimeRecord before = r;
  for (std::string_view bad :
       {"2006-02-30", "1900-02-29", "2005-04-31", "2005-13-01", "2005-00-10", "0000-01-01",
        "50001-01-01", "02005-01-01", "2005-1-01", "2005-01-1", "2005-001-01", "2005/01/01",
        "2005-01-01x", "2005-01-01T", "2005-01-01T13:10", "2005-01-01T 13:10:00"}) {
    EXPECT_FALSE(ParseGenericDate(bad, r)) << bad;
  }
  for (std::string_view bad : {"205-01-01", "24:00:00", "23:60:00", "23:59:60", "1:02:03",
                               "13:10:555", "13:10:55.", "13:10:55.1234", "13:10:55+2:00",
                               "13:10:55+24:00", "13:10:55Z", " 13:10:55", "", "T13:10:55"}) {
    EXPECT_FALSE(ParseGenericDate(bad, r)) << bad;
  }
  EXPECT_EQ(r, before);
}

TEST(GenericDate, EndReportsWhereAValueStops) {
  DateTimeRecord r;
  size_t end = 0;
  ASSERT_TRUE(ParseGenericDate("2005-01-02  rest", r, &end));
  EXPECT_EQ(end, 12u);
  ASSERT_TRUE(ParseGenericDate("2005-01-02T10:00:00;", r, &end));
  EXPECT_EQ(end, 19u);
  EXPECT_TRUE(r.hasTime);
  ASSERT_TRUE(ParseGenericDate("10:00:00.5 x", r, &end));
  EXPECT_EQ(end, 11u);
  EXPECT_FALSE(ParseGenericDate("2005-01-02T;", r, &end));
  EXPECT_FALSE(ParseGenericDate("10:00:00.5678", r, &end));
  EXPECT_FALSE(ParseGenericDate("10:00:001", r, &end));
  EXPECT_FALSE(ParseGenericDate("2005-01-021", r, &end));
}

TEST(GenericDate, FormatsExactFormsAndRefusesInvalidRecords) {
  EXPECT_EQ(FormatGenericDate(Date("2006-01-31T13:10:55.123")), "2006-01-31T13:10:55.123");
  EXPECT_EQ(FormatGenericDate(Date("2005-08-08T20:00:01.01")), "2005-08-08T20:00:01.010");
  EXPECT_EQ(FormatGenericDate(Date("13:10:55-00:30")), "13:10:55-00:30");
  EXPECT_EQ(FormatGenericDate(Date("13:10:55.000+00:00")), "13:10:55");
  DateTimeRecord r;
  ASSERT_TRUE(MakeDate(7, 2, 3, r));
  EXPECT_EQ(FormatGenericDate(r), "0007-02-03");
  EXPECT_FALSE(MakeDate(2005, 2, 29, r));
  r.offsetHour = 5;  // no time part to carry it
  EXPECT_EQ(FormatGenericDate(r), "0007-02-03");
  r.hasTime = true;
  r.hour = 24;
  char buf[kGenericDateSize] = "x";
  EXPECT_EQ(FormatGenericDate(r, buf), 0u);
  EXPECT_STREQ(buf, "");
}

TEST(GenericDate, RoundTripsAcrossTheWholeRange) {
  char buf[kGenericDateSize];
  for (int32_t n = 0; n <= DayNumber(50000, 12, 31); n += 9973) {
    DateTimeRecord r;
    ASSERT_TRUE(n % 11 == 0 || DateFromDayNumber(n, r));  // every 11th a time alone
    if (n % 3 != 0 || !r.hasDate) {
      r.hasTime = true;
      r.hour = n % 24;
      r.minute = n % 60;
      r.second = n / 7 % 60;
      r.millisecond = n % 5 == 0 ? 0 : n % 1000;
      if (n % 4 == 1) {
        r.offsetSign = n % 8 == 1 ? '-' : '+';
        r.offsetHour = n % 15;
        r.offsetMinute = 30;
      }
    }
    const size_t length = FormatGenericDate(r, buf);
    DateTimeRecord back;
    ASSERT_TRUE(ParseGenericDate(std::string_view(buf, length), back)) << buf;
    EXPECT_EQ(back, r) << buf;
  }
}

TEST(GenericDate, CalendarAgreesWithStdChrono) {
  using namespace std::chrono;
  const int64_t epoch = DayNumber(1970, 1, 1);
  for (int64_t n = DayNumber(1582, 1, 1); n <= DayNumber(2500, 12, 31); ++n) {
    DateTimeRecord r;
    ASSERT_TRUE(DateFromDayNumber(n, r));
    const year_month_day ymd{sys_days{days{n - epoch}}};
    ASSERT_EQ(r.year, int{ymd.year()});
    ASSERT_EQ(r.month, static_cast<int32_t>(unsigned{ymd.month()}));
    ASSERT_EQ(r.day, static_cast<int32_t>(unsigned{ymd.day()}));
    ASSERT_EQ(r.dayOfWeek, weekday{sys_days{ymd}}.c_encoding() + 1);
    ASSERT_EQ(DayNumber(r.year, r.month, r.day), n);
  }
  int64_t seconds = 0;
  ASSERT_TRUE(DateToSeconds(Date("1970-01-01T00:00:01.999"), seconds));
  EXPECT_EQ(seconds, 62135596801);
  ASSERT_TRUE(DateToSeconds(Date("01:00:30"), seconds));
  EXPECT_EQ(seconds, 3630);
  DateTimeRecord r;
  EXPECT_FALSE(DateFromDayNumber(-1, r));
  EXPECT_FALSE(DateFromDayNumber(DayNumber(50000, 12, 31) + 1, r));
}

}  // namespace
}  // namespace kelpdex
