// Help entries of the category "date/time". The texts stand as the function picker has always shown
// them, slips included.
#include "functions/help_table.h"

namespace kelpdex {

namespace {

constexpr uint8_t kCategory = help::kDateTime;

const HelpEntry kEntries[] = {
    {HelpCode(kCategory, 3),
     "date",
     {"year", "month", "day"},
     "000",
     "date(year, month, day)\r\n"
     "\r\n"
     "Returns a generic date string representing a given date.\r\n"
     "\r\n"
     "=date(2005, 7, 15) returns \"2005-07-15\"\r\n"},
    {HelpCode(kCategory, 2),
     "dateDiff",
     {"date1", "date2"},
     "00",
     "dateDiff(date1, date2)\r\n"
     "\r\n"
     "Returns a period string representing the difference between the two given dates. The "
     "arguments must be generic date/time strings.\r\n"
     "\r\n"
     "=dateDiff(\"2005-01-01\", \"2005-12-31\") returns \"P364D\"\r\n"
     "=dateDiff(\"2005-01-01T18:15:10\", \"2005-01-04T12:10:00\") returns \"P2DT17H50M50S\"\r\n"},
    {HelpCode(kCategory, 1),
     "dateValue",
     {"text"},
     "0",
     "dateValue(text)\r\n"
     "\r\n"
     "Converts text representing date in one of the standard date/time formats to a generic "
     "date string.\r\n"
     "\r\n"
     "=dateValue(\"8/11/2005\") returns \"2005-08-11\"\r\n"},
    {HelpCode(kCategory, 1),
     "day",
     {"dateString"},
     "0",
     "day(dateString)\r\n"
     "\r\n"
     "Returns an integer <1, 31> representing the day of the month of a given date. The "
     "argument must be a generic date/time string.\r\n"
     "\r\n"
     "=day(\"2005-02-09\") returns 9\r\n"
     "=day(dateValue(\"Apr-15\")) returns 15\r\n"},
    {HelpCode(kCategory, 2),
     "eDate",
     {"date", "n"},
     "00",
     "eDate(date, n)\r\n"
     "\r\n"
     "Returns a generic date string representing a date n months after or before - depending "
     "on the sign of n - a given date.\r\n"
     "\r\n"
     "=eDate(\"2005-02-15\", 4) returns \"2005-06-15\"\r\n"
     "=eDate(\"2005-01-30\", 1) returns \"2005-02-28\"\r\n"},
    {HelpCode(kCategory, 2),
     "eDate2",
     {"date", "period"},
     "00",
     "eDate2(date, period)\r\n"
     "\r\n"
     "Adds period to date and returns a generic date string representing a date after or "
     "before - depending on the period - a given date. The date argument must be a generic "
     "date/time string and the period argument must be a generic period string.\r\n"
     "\r\n"
     "=eDate2(\"2005-01-01\", \"P2D\") returns \"2005-01-03\"\r\n"
     "=eDate2(\"2005-02-01\", \"P30D\") returns \"2005-03-03\"\r\n"},
    {HelpCode(kCategory, 2),
     "eoMonth",
     {"date", "n"},
     "00",
     "eoMonth(date, n)\r\n"
     "\r\n"
     "Returns a generic date string representing a date of the last day of the month after or "
     "before n months after a given date. The date argument must be a generic date/time "
     "string.\r\n"
     "\r\n"
     "=eoMonth(\"2005-01-01\", 1) returns \"2005-02-28\"\r\n"
     "=eoMonth(\"2005-01-01\", -1) returns \"2004-12-31\"\r\n"},
    {HelpCode(kCategory, 1),
     "hour",
     {"time"},
     "0",
     "hour(time)\r\n"
     "\r\n"
     "Returns an integer <0, 23> representing the hour of the time timeString. The time "
     "argument must be a generic date/time string.\r\n"
     "\r\n"
     "=hour(\"12:59:11\") returns 12\r\n"
     "=hour(\"2005-08-08T20:00:01.01\") returns 20\r\n"},
    {HelpCode(kCategory, 1),
     "minute",
     {"time"},
     "0",
     "minute(time)\r\n"
     "\r\n"
     "Returns an integer <0, 59> representing the minute of the time argument. The time "
     "argument must be a generic date/time string.\r\n"
     "\r\n"
     "=minute(\"12:59:11\") returns 59\r\n"
     "=minute(\"2005-08-08T20:00:01.01\") returns 0\r\n"},
    {HelpCode(kCategory, 1),
     "month",
     {"date"},
     "0",
     "month(date)\r\n"
     "\r\n"
     "Returns an integer <1, 12> representing the month of a given date. The date argument "
     "must be a generic date/time string.\r\n"
     "\r\n"
     "=month(\"2005-01-01\") returns 1\r\n"},
    {HelpCode(kCategory, 3),
     "networkDays",
     {"date1", "date2", "offDateArray"},
     "001",
     "networkDays(date1, date2, offDateArray)\r\n"
     "\r\n"
     "Returns the number of working days between date1 and date2 (including both dates) "
     "excluding weekends and dates specified in the offDateArray array. All arguments must be "
     "generic date/time strings.\r\n"
     "\r\n"
     "=networkDays(\"2005-01-01\", \"2005-01-31\",) returns 21\r\n"
     "=networkDays(\"2005-01-01\", \"2005-01-31\", {\"2005-01-12\", \"2005-01-19\"}) returns "
     "19\r\n"},
    {HelpCode(kCategory, 0),
     "now",
     {},
     "",
     "now()\r\n"
     "\r\n"
     "Returns a time string representing the current time.\r\n"
     "\r\n"
     "=now() returns \"14:52:16\"\r\n"},
    {HelpCode(kCategory, 1),
     "second",
     {"time"},
     "0",
     "second(time)\r\n"
     "\r\n"
     "Returns an integer <0, 59> representing the second of the time argument. The time "
     "argument must be a generic date/time string.\r\n"
     "\r\n"
     "=second(\"12:59:11\") returns 11\r\n"
     "=second(\"2005-08-08T20:00:01.01\") returns 1\r\n"},
    {HelpCode(kCategory, 3),
     "time",
     {"hour", "minute", "second"},
     "000",
     "time(hour, minute, second)\r\n"
     "\r\n"
     "Returns a generic time string representing a given date.\r\n"
     "\r\n"
     "=time(16, 20, 15) returns \"16:20:15\"\r\n"},
    {HelpCode(kCategory, 1),
     "timeValue",
     {"text"},
     "0",
     "timeValue(text)\r\n"
     "\r\n"
     "Converts text representing time in one of the standard date/time formats to a generic "
     "time string.\r\n"
     "\r\n"
     "=timeValue(\"6:24 PM\") returns \"18:24:00\"\r\n"},
    {HelpCode(kCategory, 0),
     "today",
     {},
     "",
     "today()\r\n"
     "\r\n"
     "Returns a date string representing the current date.\r\n"
     "\r\n"
     "=today() returns \"2005-08-15\"\r\n"},
    {HelpCode(kCategory, 1),
     "weekDay",
     {"date", "[numbering]"},
     "00",
     "weekDay(date, [numbering])\r\n"
     "\r\n"
     "Returns the day of the week for a given date. The date argument must be a generic date "
     "string. The numbering argument specifies which day numbering variant should be used: 1 - "
     "Sunday=1,...,Saturday=7 2 - Monday=1,...,Sunday=7 3 - Monday=0,...,Sunday=6. If "
     "numbering is omitted, it's assumed to be 1.\r\n"
     "\r\n"
     "=weekDay(\"2005-01-01\",) returns 7\r\n"},
    {HelpCode(kCategory, 1),
     "weekNum",
     {"date", "[numbering]"},
     "00",
     "weekNum(date, [numbering])\r\n"
     "\r\n"
     "Returns the number of the week for a given date. The date argument must be a generic "
     "date string. The numbering argument specifies on what day the week should begins: 1 - on "
     "Sunday 2 - on Monday. If numbering is omitted, it's assumed to be 1.\r\n"
     "\r\n"
     "=weekNum(\"2005-01-21\",) returns 4\r\n"},
    {HelpCode(kCategory, 2),
     "workDay",
     {"date", "n", "[offDateList]"},
     "001",
     "workDay(date, n, [offDateList])\r\n"
     "\r\n"
     "Returns a date string representing a date n working days - depending on the sign of n - "
     "before or after a given day excluding weekends. The optional offDateArray array contains "
     "additional dates that should be excluded. All arguments must be in the form of generic "
     "date/time strings.\r\n"
     "\r\n"
     "=workDay(\"2005-01-01\", 21,) returns \"2005-01-31\"\r\n"
     "=workDay(\"2005-01-01\", 19, {\"2005-01-12\", \"2005-01-19\"}) returns \"2005-01-31\"\r\n"},
    {HelpCode(kCategory, 1),
     "year",
     {"date"},
     "0",
     "year(date)\r\n"
     "\r\n"
     "nReturns an integer <1, 50000> representing the year of a given date. The date argument "
     "must be a generic date/time string.\r\n"
     "\r\n"
     "=year(\"2005-01-01\") returns 2005\r\n"
     "=year(\"40000-01-01T15:10:00\") returns 40000\r\n"},
};

}  // namespace

std::span<const HelpEntry> DateHelp() {
  return kEntries;
}

}  // namespace kelpdex
