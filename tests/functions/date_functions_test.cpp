#include <string>

#include <gtest/gtest.h>

#include "core/locale_settings.h"
#include "format/generic_date.h"
#include "format/parse_date.h"
#include "functions/function_table.h"
#include "support/formula_sheet.h"

namespace kelpdex {
namespace {

class DateTest : public ::testing::Test {
 protected:
  void SetUp() override {
    t_.PutText(0, 0, "2005-01-12");
    t_.PutText(0, 1, "2005-01-19");
    t_.PutText(0, 2, "2005-01-19");
  }
  std::string Eval(const std::string& formula) { return t_.Eval(formula); }
  testing::FormulaSheet t_{{{"Off", kFieldText}, {"Off2", kFieldText}, {"Off3", kFieldText}},
                           &BuiltinFunctions()};
};

TEST_F(DateTest, CalendarArithmetic) {
  EXPECT_EQ(Eval("=eDate2(\"2005-03-03\", \"-P30D\")"), "2005-02-01");
  EXPECT_EQ(Eval("=eDate2(\"2005-01-31T23:30:00\", \"PT1H\")"), "2005-02-01T00:30:00");
  EXPECT_EQ(Eval("=eDate2(\"2005-01-01\", \"30D\")"), "#VALUE!");
  EXPECT_EQ(Eval("=eDate(\"2004-02-29\", 12)"), "2005-02-28");
  EXPECT_EQ(Eval("=eDate(\"2005-03-31\", -1)"), "2005-02-28");
  EXPECT_EQ(Eval("=eDate(\"50000-12-01\", 1)"), "#NUM!");
  EXPECT_EQ(Eval("=eoMonth(\"2005-01-01\", -1)"), "2004-12-31");
  EXPECT_EQ(Eval("=eoMonth(\"2004-01-31\", 1)"), "2004-02-29");
  EXPECT_EQ(Eval("=eoMonth(\"2005-11-15\", 14)"), "2007-01-31");
  EXPECT_EQ(Eval("=date(2005, 2, 29)"), "#NUM!");
  EXPECT_EQ(Eval("=date(2004, 2, 29)"), "2004-02-29");
  EXPECT_EQ(Eval("=time(23, 59, 60)"), "#NUM!");
  EXPECT_EQ(Eval("=time(7, 5, 0)"), "07:05:00");
}

TEST_F(DateTest, DifferencesStayInDaysAndClock) {
  EXPECT_EQ(Eval("=dateDiff(\"2005-01-01\", \"2005-12-31\")"), "P364D");
  EXPECT_EQ(Eval("=dateDiff(\"2005-12-31\", \"2005-01-01\")"), "-P364D");
  EXPECT_EQ(Eval("=dateDiff(\"2005-01-01T18:15:10\", \"2005-01-04T12:10:00\")"), "P2DT17H54M50S");
  EXPECT_EQ(Eval("=dateDiff(\"10:00:00\", \"12:30:00\")"), "PT2H30M");
  // A date against a time alone cannot be told apart.
  EXPECT_EQ(Eval("=dateDiff(\"2005-01-01\", \"12:30:00\")"), "#VALUE!");
}

TEST_F(DateTest, FieldsOfDatesAndTimes) {
  EXPECT_EQ(Eval("=minute(\"2005-08-08T20:00:01.01\")"), "0");
  EXPECT_EQ(Eval("=hour(\"2005-08-08\")"), "0");
  EXPECT_EQ(Eval("=day(\"12:00:00\")"), "#VALUE!");
  EXPECT_EQ(Eval("=day(\"2005-02-30\")"), "#VALUE!");
  EXPECT_EQ(Eval("=month(20050101)"), "#VALUE!");
  EXPECT_EQ(Eval("=second(\"13:10:55-00:30\")"), "55");
  EXPECT_EQ(Eval("=year(Off)"), "2005");
  EXPECT_EQ(Eval("=sum(day(Off:Off3))"), "50");
}

TEST_F(DateTest, WeekNumbering) {
  // 2006-01-01 is a Sunday.
  EXPECT_EQ(Eval("=weekDay(\"2006-01-01\", 1) & weekDay(\"2006-01-01\", 2) & "
                 "weekDay(\"2006-01-01\", 3)"),
            "176");
  EXPECT_EQ(Eval("=weekDay(\"2006-01-02\", 2) & weekDay(\"2006-01-02\", 3)"), "10");
  EXPECT_EQ(Eval("=weekDay(\"2006-01-02\", 4)"), "#NUM!");
  EXPECT_EQ(Eval("=weekNum(\"2006-01-01\", 1) & weekNum(\"2006-01-01\", 2)"), "11");
  EXPECT_EQ(Eval("=weekNum(\"2006-01-02\", 1) & weekNum(\"2006-01-02\", 2)"), "12");
  EXPECT_EQ(Eval("=weekNum(\"2005-12-31\",)"), "53");
}

TEST_F(DateTest, WorkingDaysSkipWeekendsAndDaysOff) {
  EXPECT_EQ(Eval("=networkDays(\"2005-01-31\", \"2005-01-01\",)"), "-21");
  // Days off from a range, one of them twice and one on a Sunday.
  EXPECT_EQ(Eval("=networkDays(\"2005-01-01\", \"2005-01-31\", Off:Off3)"), "19");
  EXPECT_EQ(Eval("=networkDays(\"2005-01-01\", \"2005-01-31\", {\"2005-01-16\"})"), "21");
  EXPECT_EQ(Eval("=networkDays(\"2005-01-01\", \"2005-01-31\", \"2005-01-03\")"), "20");
  EXPECT_EQ(Eval("=networkDays(\"2005-01-01\", \"2005-01-31\", {\"soon\"})"), "#VALUE!");
  EXPECT_EQ(Eval("=workDay(\"2005-01-31\", -21,)"), "2004-12-31");
  EXPECT_EQ(Eval("=workDay(\"2005-01-31\", -19, Off:Off3)"), "2004-12-31");
  EXPECT_EQ(Eval("=workDay(\"2005-01-07\", 1, {\"2005-01-10\", \"2005-01-11\"})"), "2005-01-12");
  EXPECT_EQ(Eval("=workDay(\"2005-01-08\", 0)"), "2005-01-08");
  EXPECT_EQ(Eval("=workDay(\"0001-01-03\", -3)"), "#NUM!");
  EXPECT_EQ(Eval("=workDay(\"2005-01-03\", 2147483647)"), "#NUM!");
  // Dates broadcast beside a single day off, not beside a list.
  EXPECT_EQ(Eval("=sum(networkDays({\"2005-01-01\", \"2005-01-24\"}, \"2005-01-31\", "
                 "\"2005-01-26\"))"),
            "25");
  EXPECT_EQ(Eval("=networkDays({\"2005-01-01\"}, \"2005-01-31\", Off:Off3)"), "#VALUE!");
}

TEST_F(DateTest, LocalFormsFollowTheRegionalSettings) {
  SetDateParseYearForTesting(2005);
  EXPECT_EQ(Eval("=dateValue(\"8/11/2005\")"), "2005-08-11");
  EXPECT_EQ(Eval("=timeValue(\"6:24 PM\")"), "18:24:00");
  EXPECT_EQ(Eval("=dateValue(\"someday\")"), "#VALUE!");
  LocaleSettings saved = currentLocale;
  currentLocale.dateOrder = 1;
  currentLocale.dateSeparator = '.';
  EXPECT_EQ(Eval("=dateValue(\"8.11.2005\")"), "2005-11-08");
  currentLocale = saved;
  SetDateParseYearForTesting(0);
}

TEST_F(DateTest, ClockReadsTheMachineTime) {
  DateTimeRecord r;
  ASSERT_TRUE(ParseGenericDate(Eval("=today()"), r));
  EXPECT_TRUE(r.hasDate && !r.hasTime);
  EXPECT_GE(r.year, 2024);
  ASSERT_TRUE(ParseGenericDate(Eval("=now()"), r));
  EXPECT_TRUE(r.hasTime);
  EXPECT_EQ(Eval("=now(1)"), "#SYNTAX!");
  EXPECT_EQ(Eval("=days360(\"2005-01-01\", \"2005-02-01\") & yearFrac(1, 2)"), "#IMPL!");
}

}  // namespace
}  // namespace kelpdex
