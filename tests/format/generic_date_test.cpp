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

PeriodRecord Period(std::string_view text) {
  PeriodRecord p;
  EXPECT_TRUE(ParseGenericPeriod(text, p)) << text;
  return p;
}

std::string Add(std::string_view date, std::string_view period) {
  DateTimeRecord result;
  if (!AddPeriod(Date(date), Period(period), result)) return "failed";
  return FormatGenericDate(result);
}

std::string Between(std::string_view from, std::string_view to) {
  PeriodRecord p;
  if (!PeriodBetween(Date(from), Date(to), p)) return "failed";
  return FormatGenericPeriod(p);
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

TEST(GenericPeriod, ParsesFormatsAndRoundTrips) {
  const PeriodRecord p = Period("P1Y2M3DT10H30M50S.250");
  EXPECT_EQ((PeriodRecord{false, 1, 2, 3, 10, 30, 50, 250}), p);
  EXPECT_EQ(FormatGenericPeriod(p), "P1Y2M3DT10H30M50.250S");
  EXPECT_EQ(Period("PT50.25S"), Period("PT50S.250"));
  EXPECT_EQ(FormatGenericPeriod(Period("P1Y2M3DT10H30M50S.000")), "P1Y2M3DT10H30M50S");
  for (std::string_view text : {"-P120D", "PT63H", "P2M", "PT2M", "P1DT1S", "PT0.001S",
                                "-P999999999Y", "P1Y1D", "PT1H1S"}) {
    EXPECT_EQ(FormatGenericPeriod(Period(text)), text);
  }
  EXPECT_EQ(FormatGenericPeriod(PeriodRecord{}), "PT0S");
  EXPECT_EQ(Period("-P0D"), PeriodRecord{});
  EXPECT_EQ(FormatGenericPeriod(PeriodRecord{true, 0, 0, 0, 0, 0, 0, 0}), "PT0S");
  EXPECT_EQ(FormatGenericPeriod(PeriodRecord{false, 0, 0, 0, 0, 0, 0, 1000}), "");
  EXPECT_EQ(FormatGenericPeriod(PeriodRecord{false, 0, -1, 0, 0, 0, 0, 0}), "");

  PeriodRecord r;
  for (std::string_view bad :
       {"",      "P",      "PT",        "P1DT",   "1D",         "P1",
        "P1X",   "P1D1Y",  "P1M1M",     "PT1S1H", "P1H",        "PT1D",
        "P1.5D", "PT1.5H", "PT1.1234S", "PT1S.",  "PT1.5S.500", "P1234567890D",
        "+P1D",  "p1d",    "P 1D",      "P1D x",  "--P1D"}) {
    EXPECT_FALSE(ParseGenericPeriod(bad, r)) << bad;
  }
  size_t end = 0;
  ASSERT_TRUE(ParseGenericPeriod("-PT1H, 3", r, &end));
  EXPECT_EQ(end, 5u);
}

TEST(PeriodArithmetic, AddsCalendarValuesFirstThenTheClock) {
  const char* const cases[][3] = {
      {"2005-02-01", "P30D", "2005-03-03"},
      {"2005-03-03", "-P30D", "2005-02-01"},
      {"2005-02-15", "P4M", "2005-06-15"},
      {"2005-01-30", "P1M", "2005-02-28"},
      {"2004-02-29", "P1Y", "2005-02-28"},
      {"2005-03-31", "-P1M1D", "2005-02-27"},
      {"2005-01-31", "P13M", "2006-02-28"},
      {"2004-12-31", "P1D", "2005-01-01"},
      {"2005-03-01", "-P1D", "2005-02-28"},
      {"2005-12-31T23:30:00+01:00", "PT1H", "2006-01-01T00:30:00+01:00"},
      {"2005-01-01T00:00:00.250", "-PT0.5S", "2004-12-31T23:59:59.750"},
      {"2005-01-01", "PT1H", "2005-01-01T01:00:00"},
      {"2005-01-01", "-PT24H", "2004-12-31T00:00:00"},
      {"23:30:00", "PT1H", "00:30:00"},
      {"00:30:00", "-PT1H", "23:30:00"},
      {"10:00:00", "P1Y1DT49H", "11:00:00"},
      {"0001-01-01", "-P1D", "failed"},
      {"0001-02-01", "-P1M1D", "failed"},
      {"50000-12-31T23:00:00", "PT1H", "failed"},
      {"2005-01-01", "P999999999Y", "failed"},
      {"2005-01-01", "P999999999D", "failed"},
  };
  for (const auto& [date, period, expected] : cases) {
    EXPECT_EQ(Add(date, period), expected) << date << " + " << period;
  }
}

TEST(PeriodArithmetic, DifferenceCountsDaysAndClockAndAddsBack) {
  EXPECT_EQ(Between("2005-01-01", "2005-12-31"), "P364D");
  EXPECT_EQ(Between("2005-01-01T18:15:10", "2005-01-04T12:10:00"), "P2DT17H54M50S");
  EXPECT_EQ(Between("2005-01-04T12:10:00", "2005-01-01T18:15:10"), "-P2DT17H54M50S");
  EXPECT_EQ(Between("2005-01-01", "2005-01-01T00:00:00"), "PT0S");
  EXPECT_EQ(Between("2005-01-01T10:00:00+02:00", "2005-01-01T10:00:00"), "PT2H");
  EXPECT_EQ(Between("10:00:00.5", "09:00:00"), "-PT1H0.500S");
  EXPECT_EQ(Between("2005-01-01", "10:00:00"), "failed");

  const DateTimeRecord from = Date("1999-03-31T22:45:10.125");
  for (int64_t step = -400000; step <= 400000; step += 7919) {
    DateTimeRecord to;
    ASSERT_TRUE(DateFromDayNumber(DayNumber(1999, 3, 31) + step, to));
    to.hasTime = true;
    to.hour = static_cast<int32_t>((step / 7919 + 50) % 24);
    to.millisecond = static_cast<int32_t>(step % 1000 + 1000) % 1000;
    PeriodRecord p;
    ASSERT_TRUE(PeriodBetween(from, to, p));
    EXPECT_EQ(p.negative, step < 0);
    DateTimeRecord back;
    ASSERT_TRUE(AddPeriod(from, p, back));
    EXPECT_EQ(back, to) << FormatGenericPeriod(p);
  }
}

}  // namespace
}  // namespace kelpdex
