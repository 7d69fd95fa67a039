// Generic date, time and period strings ("2006-01-31T13:10:55.123+02:00", "P1Y2M3DT10H"), the
// form in which Kelpdex keeps every date and time, and the calendar arithmetic on them. The
// calendar is the proleptic Gregorian one for the years 1 to 50000. Nothing here depends on the C
// library's locale, and parsing and formatting never allocate.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/os.h"

namespace kelpdex {

// A date, a time of day, or both. A time may carry a zone offset. dayOfYear and dayOfWeek are
// computed from the date (both 0 when the record has no date); they are never read back as input.
struct DateTimeRecord {
  bool hasDate = false;
  bool hasTime = false;
  int32_t year = 1;  // 1 to 50000
  int32_t month = 1;
  int32_t day = 1;
  int32_t hour = 0;
  int32_t minute = 0;
  int32_t second = 0;
  int32_t millisecond = 0;
  char offsetSign = '+';  // '+' or '-'
  int32_t offsetHour = 0;
  int32_t offsetMinute = 0;
  uint16_t dayOfYear = 0;  // 1 to 366
  uint16_t dayOfWeek = 0;  // 1 Sunday to 7 Saturday

  bool operator==(const DateTimeRecord&) const = default;
};

// A signed span of calendar and clock units, each kept as written: "PT63H" stays 63 hours. The
// values themselves are never negative; `negative` gives the direction.
struct PeriodRecord {
  bool negative = false;
  int32_t years = 0;
  int32_t months = 0;
  int32_t days = 0;
  int32_t hours = 0;
  int32_t minutes = 0;
  int32_t seconds = 0;
  int32_t milliseconds = 0;

  bool operator==(const PeriodRecord&) const = default;
};

// Buffer sizes, terminating null included, for the formatters below.
constexpr size_t kGenericDateSize = 32;
constexpr size_t kGenericPeriodSize = 80;

// Reads "yyyy-mm-dd", "yyyy-mm-ddThh:mm:ss[.fff][(+|-)hh:mm]" or the time alone, with blanks
// allowed behind. With `end` null the whole text must be the value; otherwise the value may stop
// before the end of the text and *end receives the offset just behind it (blanks included). On
// failure `record` is left as it was.
bool ParseGenericDate(std::string_view text, DateTimeRecord& record, size_t* end = nullptr);

// Writes the generic string and a null into `out` (kGenericDateSize bytes) and returns its
// length. A zone offset is written only behind a time. Returns 0 and writes "" when the record
// is not valid (see IsValidDateTime).
size_t FormatGenericDate(const DateTimeRecord& record, char* out);
std::string FormatGenericDate(const DateTimeRecord& record);
// A moment of the system's clock, to the second, as a generic date and time string.
std::string FormatGenericDate(const platform::LocalTime& at);

// Reads "[-]P[nY][nM][nD][T[nH][nM][nS]]" with at least one value, and at least one behind a
// "T". Milliseconds may stand in the seconds ("50.5S") or behind them ("50S.500"), 1 to 3 digits.
// Each value has at most 9 digits. `end` as for ParseGenericDate. A zero period is never negative.
bool ParseGenericPeriod(std::string_view text, PeriodRecord& period, size_t* end = nullptr);

// Writes the period string and a null into `out` (kGenericPeriodSize bytes) and returns its
// length. Zero values are left out; a period that is zero throughout is "PT0S", whatever its
// sign. Returns 0 and writes "" for a negative value or milliseconds beyond 999.
size_t FormatGenericPeriod(const PeriodRecord& period, char* out);
std::string FormatGenericPeriod(const PeriodRecord& period);

// Seconds since 0001-01-01T00:00:00 on the wall clock; milliseconds and the zone offset are not
// counted. A time alone counts from midnight. False for a record that is not valid.
bool DateToSeconds(const DateTimeRecord& record, int64_t& seconds);

// The record's fields are in range for the parts it has, and it has at least one part.
bool IsValidDateTime(const DateTimeRecord& record);

bool IsLeapYear(int32_t year);
// 0 for a month outside 1 to 12.
int DaysInMonth(int32_t year, int32_t month);

// Days since 0001-01-01 (which is day 0, a Monday). The date must be valid.
int64_t DayNumber(int32_t year, int32_t month, int32_t day);
// 1 Sunday to 7 Saturday.
int DayOfWeek(int64_t dayNumber);

// Sets the date part of `record` (and its dayOfYear and dayOfWeek) from a day number; the time
// part is left alone. False, with `record` untouched, outside the years 1 to 50000.
bool DateFromDayNumber(int64_t dayNumber, DateTimeRecord& record);

// A date-only record for the given day, with dayOfYear and dayOfWeek filled in. False, with
// `record` untouched, when the day does not exist.
bool MakeDate(int32_t year, int32_t month, int32_t day, DateTimeRecord& record);

// record + period. Years and months go first, with the day cut back to the new month's length;
// then days, hours, minutes, seconds and milliseconds move the clock, carrying into the date. The
// result has a time part when the record had one or the period holds a clock value. A time alone
// wraps round the day, so calendar values of the period do not change it. The zone offset is
// kept. False when the result leaves the years 1 to 50000 or the record is not valid.
bool AddPeriod(const DateTimeRecord& record, const PeriodRecord& period, DateTimeRecord& result);

// to - from as days, hours, minutes, seconds and milliseconds; days are never gathered into
// months. A missing time counts as midnight, and zone offsets are taken into account. Both
// records must have a date, or neither; otherwise, or when either is not valid, false.
bool PeriodBetween(const DateTimeRecord& from, const DateTimeRecord& to, PeriodRecord& period);

}  // namespace kelpdex
