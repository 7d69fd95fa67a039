#include "functions/date_functions.h"

#include <utility>

#include "core/locale_settings.h"
#include "format/generic_date.h"
#include "format/number_style.h"
#include "format/parse_date.h"
#include "functions/scalar_call.h"
#include "platform/os.h"

namespace kelpdex::fn {

namespace {

void SetDateResult(FormulaEngine& e, int slot, const DateTimeRecord& record, uint8_t error) {
  char out[kGenericDateSize];
  size_t length = error == 0 ? FormatGenericDate(record, out) : 0;
  // A record the formatter refuses is out of the calendar's range.
  if (error == 0 && length == 0) error = ferr::kNum;
  SetTextResult(e, slot, std::string_view(out, length), error);
}

// One generic date/time string in, one of its fields out. A field of the part the value lacks
// reads as 0 for the clock and as "#VALUE!" for the calendar.
void RunField(FormulaEngine& e, int32_t (*field)(const DateTimeRecord& r), bool calendar) {
  ScalarCall call;
  if (!ReadScalarCall(e, "t", 1, call)) return;
  DateTimeRecord r;
  uint8_t error = call.error;
  if (error == 0 && (!ParseGenericDate(call.text[0], r) || (calendar && !r.hasDate))) {
    error = ferr::kValue;
  }
  SetNumberResult(e, call.slot, error == 0 ? field(r) : 0, error);
}

// A date of the first argument moved by what the second gives. `shift` returns an error code:
// "#NUM!" for a result outside the calendar.
void RunShift(FormulaEngine& e, const char* kinds,
              uint8_t (*shift)(const ScalarCall& call, const DateTimeRecord& from,
                               DateTimeRecord& to)) {
  ScalarCall call;
  if (!ReadScalarCall(e, kinds, 2, call)) return;
  DateTimeRecord from, to;
  uint8_t error = call.error;
  if (error == 0 && !ParseGenericDate(call.text[0], from)) error = ferr::kValue;
  if (error == 0) error = shift(call, from, to);
  SetDateResult(e, call.slot, to, error);
}

uint8_t OutOfRangeUnless(bool ok) {
  return ok ? 0 : ferr::kNum;
}

PeriodRecord Months(int32_t n) {
  PeriodRecord p;
  p.negative = n < 0;
  p.months = n < 0 ? -n : n;
  return p;
}

// Weekdays among the days [0, day): day 0, 0001-01-01, is a Monday.
int64_t WeekdaysBefore(int64_t day) {
  int64_t rest = day % 7;
  return day / 7 * 5 + (rest < 5 ? rest : 5);
}
// The day of the weekday counted `index` from 0 upwards.
int64_t NthWeekday(int64_t index) {
  return index / 5 * 7 + index % 5;
}
bool IsWeekday(int64_t day) {
  return day % 7 < 5;
}

// The days off of networkDays and workDay, as sorted day numbers.
struct DaysOff {
  static constexpr int kMax = 512;
  int64_t days[kMax];
  int count = 0;
  uint8_t error = 0;

  void Add(std::string_view text) {
    DateTimeRecord r;
    if (!ParseGenericDate(text, r) || !r.hasDate) {
      error = LargerError(error, ferr::kValue);
      return;
    }
    int64_t day = DayNumber(r.year, r.month, r.day);
    // Kept sorted and without repeats; a list of more days than fit is refused rather than cut.
    int at = 0;
    while (at < count && days[at] < day) ++at;
    if (at < count && days[at] == day) return;
    if (count == kMax) {
      error = LargerError(error, ferr::kValue);
      return;
    }
    for (int i = count; i > at; --i) days[i] = days[i - 1];
    days[at] = day;
    ++count;
  }
  static void AddCell(void* context, const CellRecord* r) {
    auto* self = static_cast<DaysOff*>(context);
    uint8_t nibble = cell::ErrorNibble(r);
    if (nibble != 0 || !cell::IsText(r)) {
      self->error = LargerError(self->error, nibble != 0 ? nibble : ferr::kValue);
      return;
    }
    if (!cell::Text(r).empty()) self->Add(cell::Text(r));
  }
  // Weekdays off within [first, last].
  int64_t WeekdaysWithin(int64_t first, int64_t last) const {
    int64_t n = 0;
    for (int i = 0; i < count; ++i) n += days[i] >= first && days[i] <= last && IsWeekday(days[i]);
    return n;
  }
};

// networkDays and workDay: a date, a second scalar and an optional list of days off, which is
// taken as a whole. The scalars broadcast only when the list is no array: beside an array list
// an array of dates is "#VALUE!".
bool ReadWorkingDaysCall(FormulaEngine& e, const char* kinds, ScalarCall& call, DaysOff& off) {
  int base = e.Operand(e.depth()).argumentBase;
  int given = e.depth() - base;
  if (given < 2) {
    e.SetSyntaxError();
    return false;
  }
  int count = given < 3 ? given : 3;
  int slot = e.depth() - count;
  bool listIsArray = count == 3 && (e.Operand(slot + 2).kind & kind::kArrayOrRange) != 0;
  if (!listIsArray && BroadcastArrays(e, count)) return false;
  if (listIsArray &&
      ((e.Operand(slot).kind | e.Operand(slot + 1).kind) & kind::kArrayOrRange) != 0) {
    for (int s = slot + 2; s >= slot; --s) e.Release(e.Operand(s));
    SetNumberResult(e, slot, 0, ferr::kValue);
    return false;
  }
  if (count == 3) {
    FormulaValue& list = e.Operand(slot + 2);
    if (listIsArray) {
      off.error = LargerError(off.error, ForEachCellOf(e, slot + 2, &off, DaysOff::AddCell));
    } else {
      char buffer[kTextArgSize];
      std::string_view text;
      off.error = LargerError(off.error, GetTextArg(e, slot + 2, buffer, text));
      if (off.error == 0 && list.kind != kind::kEmpty) off.Add(text);
    }
  }
  call.slot = slot;
  call.count = 2;
  call.error = off.error;
  ReadScalarSlots(e, kinds, call);
  return true;
}

bool ParseDay(std::string_view text, int64_t& day) {
  DateTimeRecord r;
  if (!ParseGenericDate(text, r) || !r.hasDate) return false;
  day = DayNumber(r.year, r.month, r.day);
  return true;
}

}  // namespace

void Date(FormulaEngine& e) {
  ScalarCall call;
  if (!ReadScalarCall(e, "iii", 3, call)) return;
  DateTimeRecord r;
  uint8_t error = call.error;
  if (error == 0 && !MakeDate(call.integer[0], call.integer[1], call.integer[2], r)) {
    error = ferr::kNum;
  }
  SetDateResult(e, call.slot, r, error);
}

void DateDiff(FormulaEngine& e) {
  ScalarCall call;
  if (!ReadScalarCall(e, "tt", 2, call)) return;
  DateTimeRecord from, to;
  PeriodRecord period;
  uint8_t error = call.error;
  if (error == 0 && (!ParseGenericDate(call.text[0], from) || !ParseGenericDate(call.text[1], to) ||
                     !PeriodBetween(from, to, period))) {
    error = ferr::kValue;
  }
  char out[kGenericPeriodSize];
  size_t length = error == 0 ? FormatGenericPeriod(period, out) : 0;
  SetTextResult(e, call.slot, std::string_view(out, length), error);
}

// The local forms of dates and times, read under the regional settings in force.
void DateValue(FormulaEngine& e) {
  ScalarCall call;
  if (!ReadScalarCall(e, "t", 1, call)) return;
  DateTimeRecord r;
  uint8_t error = call.error;
  if (error == 0 && !ParseDateText(call.text[0], r, format_kind::kDate, nullptr, &currentLocale)) {
    error = ferr::kValue;
  }
  r.hasTime = false;
  SetDateResult(e, call.slot, r, error);
}

void TimeValue(FormulaEngine& e) {
  ScalarCall call;
  if (!ReadScalarCall(e, "t", 1, call)) return;
  DateTimeRecord r;
  uint8_t error = call.error;
  if (error == 0 && !ParseDateText(call.text[0], r, format_kind::kTime, nullptr, &currentLocale)) {
    error = ferr::kValue;
  }
  r.hasDate = false;
  r.millisecond = 0;
  SetDateResult(e, call.slot, r, error);
}

void Day(FormulaEngine& e) {
  RunField(
      e, [](const DateTimeRecord& r) { return r.day; }, true);
}
void Month(FormulaEngine& e) {
  RunField(
      e, [](const DateTimeRecord& r) { return r.month; }, true);
}
void Year(FormulaEngine& e) {
  RunField(
      e, [](const DateTimeRecord& r) { return r.year; }, true);
}
void Hour(FormulaEngine& e) {
  RunField(
      e, [](const DateTimeRecord& r) { return r.hour; }, false);
}
void Minute(FormulaEngine& e) {
  RunField(
      e, [](const DateTimeRecord& r) { return r.minute; }, false);
}
void Second(FormulaEngine& e) {
  RunField(
      e, [](const DateTimeRecord& r) { return r.second; }, false);
}

void EDate(FormulaEngine& e) {
  RunShift(e, "ti",
           [](const ScalarCall& call, const DateTimeRecord& from, DateTimeRecord& to) -> uint8_t {
             return OutOfRangeUnless(AddPeriod(from, Months(call.integer[1]), to));
           });
}

void EDate2(FormulaEngine& e) {
  RunShift(e, "tt",
           [](const ScalarCall& call, const DateTimeRecord& from, DateTimeRecord& to) -> uint8_t {
             PeriodRecord period;
             if (!ParseGenericPeriod(call.text[1], period)) return ferr::kValue;
             return OutOfRangeUnless(AddPeriod(from, period, to));
           });
}

void EoMonth(FormulaEngine& e) {
  RunShift(e, "ti",
           [](const ScalarCall& call, const DateTimeRecord& from, DateTimeRecord& to) -> uint8_t {
             // From the first of the month no day is cut back on the way.
             DateTimeRecord first;
             DateTimeRecord moved;
             if (!from.hasDate) return ferr::kValue;
             MakeDate(from.year, from.month, 1, first);
             if (!AddPeriod(first, Months(call.integer[1]), moved)) return ferr::kNum;
             MakeDate(moved.year, moved.month, DaysInMonth(moved.year, moved.month), to);
             return uint8_t{0};
           });
}

void NetworkDays(FormulaEngine& e) {
  ScalarCall call;
  DaysOff off;
  if (!ReadWorkingDaysCall(e, "tt", call, off)) return;
  uint8_t error = call.error;
  int64_t first = 0, last = 0;
  if (error == 0 && (!ParseDay(call.text[0], first) || !ParseDay(call.text[1], last))) {
    error = ferr::kValue;
  }
  // Backwards the count is negative, as the span is.
  double sign = first > last ? -1 : 1;
  if (first > last) std::swap(first, last);
  int64_t days = WeekdaysBefore(last + 1) - WeekdaysBefore(first) - off.WeekdaysWithin(first, last);
  SetNumberResult(e, call.slot, error == 0 ? sign * static_cast<double>(days) : 0, error);
}

void WorkDay(FormulaEngine& e) {
  ScalarCall call;
  DaysOff off;
  if (!ReadWorkingDaysCall(e, "ti", call, off)) return;
  uint8_t error = call.error;
  int64_t start = 0;
  if (error == 0 && !ParseDay(call.text[0], start)) error = ferr::kValue;
  int64_t n = call.integer[1];
  int64_t target = start;
  if (error == 0 && n != 0) {
    // The n-th weekday from the start, pushed on by the days off it passes until none is left.
    // Each round only adds days off, so it ends within as many rounds as there are.
    int64_t skipped = -1, extra = 0;
    while (skipped != extra) {
      skipped = extra;
      if (n > 0) {
        target = NthWeekday(WeekdaysBefore(start + 1) + n + skipped - 1);
        extra = off.WeekdaysWithin(start + 1, target);
      } else {
        int64_t index = WeekdaysBefore(start) + n - skipped;
        if (index < 0) {
          error = ferr::kNum;
          break;
        }
        target = NthWeekday(index);
        extra = off.WeekdaysWithin(target, start - 1);
      }
    }
  }
  DateTimeRecord r;
  if (error == 0 && !DateFromDayNumber(target, r)) error = ferr::kNum;
  r.hasTime = false;
  SetDateResult(e, call.slot, r, error);
}

void Now(FormulaEngine& e) {
  ScalarCall call;
  if (!ReadScalarCall(e, "", 0, call)) return;
  platform::LocalTime now = platform::GetLocalTime();
  DateTimeRecord r;
  r.hasTime = true;
  r.hour = now.hour;
  r.minute = now.minute;
  r.second = now.second;
  SetDateResult(e, call.slot, r, 0);
}

void Today(FormulaEngine& e) {
  ScalarCall call;
  if (!ReadScalarCall(e, "", 0, call)) return;
  platform::LocalTime now = platform::GetLocalTime();
  DateTimeRecord r;
  uint8_t error = MakeDate(now.year, now.month, now.day, r) ? 0 : ferr::kNum;
  SetDateResult(e, call.slot, r, error);
}

void Time(FormulaEngine& e) {
  ScalarCall call;
  if (!ReadScalarCall(e, "iii", 3, call)) return;
  DateTimeRecord r;
  r.hasTime = true;
  r.hour = call.integer[0];
  r.minute = call.integer[1];
  r.second = call.integer[2];
  uint8_t error = call.error;
  if (error == 0 && !IsValidDateTime(r)) error = ferr::kNum;
  SetDateResult(e, call.slot, r, error);
}

void WeekDay(FormulaEngine& e) {
  ScalarCall call;
  call.integer[1] = 1;
  if (!ReadScalarCall(e, "ti", 1, call)) return;
  DateTimeRecord r;
  uint8_t error = call.error;
  if (error == 0 && (!ParseGenericDate(call.text[0], r) || !r.hasDate)) error = ferr::kValue;
  int32_t numbering = call.integer[1];
  if (error == 0 && (numbering < 1 || numbering > 3)) error = ferr::kNum;
  int32_t sunday1 = r.dayOfWeek;        // Sunday 1 .. Saturday 7
  int32_t monday0 = (sunday1 + 5) % 7;  // Monday 0 .. Sunday 6
  int32_t day = numbering == 1 ? sunday1 : (numbering == 2 ? monday0 + 1 : monday0);
  SetNumberResult(e, call.slot, error == 0 ? day : 0, error);
}

void WeekNum(FormulaEngine& e) {
  ScalarCall call;
  call.integer[1] = 1;
  if (!ReadScalarCall(e, "ti", 1, call)) return;
  DateTimeRecord r;
  uint8_t error = call.error;
  if (error == 0 && (!ParseGenericDate(call.text[0], r) || !r.hasDate)) error = ferr::kValue;
  int32_t numbering = call.integer[1];
  if (error == 0 && numbering != 1 && numbering != 2) error = ferr::kNum;
  double week = 0;
  if (error == 0) {
    // Week 1 holds the first of January; a new week starts on Sunday (1) or Monday (2).
    int january1 = DayOfWeek(DayNumber(r.year, 1, 1));
    int lead = numbering == 1 ? january1 - 1 : (january1 + 5) % 7;
    week = (r.dayOfYear - 1 + lead) / 7 + 1;
  }
  SetNumberResult(e, call.slot, week, error);
}

}  // namespace kelpdex::fn
