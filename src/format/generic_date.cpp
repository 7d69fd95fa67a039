#include "format/generic_date.h"

#include <algorithm>

namespace kelpdex {

namespace {

// Days before each month in a common year; February's leap day is added where it applies.
constexpr int kDaysBeforeMonth[13] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};
constexpr int32_t kMaxYear = 50000;
constexpr int64_t kMsPerDay = 86400000;
constexpr int kMaxPeriodDigits = 9;

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsBlank(char c) {
  return c == ' ' || c == '\t';
}

size_t SkipBlanks(std::string_view text, size_t i) {
  while (i < text.size() && IsBlank(text[i])) ++i;
  return i;
}

int DayOfYear(int32_t year, int32_t month, int32_t day) {
  return kDaysBeforeMonth[month - 1] + day + (month > 2 && IsLeapYear(year) ? 1 : 0);
}

int64_t FloorDiv(int64_t a, int64_t b) {
  int64_t q = a / b;
  return (a % b != 0 && (a < 0) != (b < 0)) ? q - 1 : q;
}

// Exactly `width` digits at i. A further digit behind them makes the field malformed rather than
// ending it, so "13:10:555" is no time.
bool ReadFixed(std::string_view text, size_t& i, int width, int32_t& value) {
  int32_t v = 0;
  for (int k = 0; k < width; ++k) {
    if (i + k >= text.size() || !IsDigit(text[i + k])) return false;
    v = v * 10 + (text[i + k] - '0');
  }
  if (i + width < text.size() && IsDigit(text[i + width])) return false;
  i += width;
  value = v;
  return true;
}

bool ReadTwoDigits(std::string_view text, size_t& i, int32_t low, int32_t high, int32_t& value) {
  return ReadFixed(text, i, 2, value) && value >= low && value <= high;
}

bool Expect(std::string_view text, size_t& i, char c) {
  if (i >= text.size() || text[i] != c) return false;
  ++i;
  return true;
}

// "." and 1 to 3 digits, scaled to milliseconds: ".1" is 100.
bool ReadFraction(std::string_view text, size_t& i, int32_t& milliseconds) {
  size_t p = i + 1;
  int32_t value = 0;
  int digits = 0;
  while (p < text.size() && IsDigit(text[p])) {
    if (++digits > 3) return false;
    value = value * 10 + (text[p++] - '0');
  }
  if (digits == 0) return false;
  for (; digits < 3; ++digits) value *= 10;
  milliseconds = value;
  i = p;
  return true;
}

bool ReadDate(std::string_view text, size_t& i, DateTimeRecord& r) {
  size_t p = i;
  int32_t year = 0;
  bool tooLarge = false;
  while (p < text.size() && IsDigit(text[p])) {
    year = year * 10 + (text[p++] - '0');
    if (year > kMaxYear) {
      tooLarge = true;
      year = 0;
    }
  }
  const size_t digits = p - i;
  if (digits < 4 || (digits > 4 && text[i] == '0') || tooLarge || year < 1) return false;
  int32_t month = 0;
  int32_t day = 0;
  if (!Expect(text, p, '-') || !ReadTwoDigits(text, p, 1, 12, month) || !Expect(text, p, '-') ||
      !ReadTwoDigits(text, p, 1, DaysInMonth(year, month), day)) {
    return false;
  }
  r.hasDate = true;
  r.year = year;
  r.month = month;
  r.day = day;
  r.dayOfYear = static_cast<uint16_t>(DayOfYear(year, month, day));
  r.dayOfWeek = static_cast<uint16_t>(DayOfWeek(DayNumber(year, month, day)));
  i = p;
  return true;
}

bool ReadTime(std::string_view text, size_t& i, DateTimeRecord& r) {
  size_t p = i;
  DateTimeRecord t = r;
  if (!ReadTwoDigits(text, p, 0, 23, t.hour) || !Expect(text, p, ':') ||
      !ReadTwoDigits(text, p, 0, 59, t.minute) || !Expect(text, p, ':') ||
      !ReadTwoDigits(text, p, 0, 59, t.second)) {
    return false;
  }
  if (p < text.size() && text[p] == '.' && !ReadFraction(text, p, t.millisecond)) return false;
  if (p < text.size() && (text[p] == '+' || text[p] == '-')) {
    t.offsetSign = text[p++];
    if (!ReadTwoDigits(text, p, 0, 23, t.offsetHour) || !Expect(text, p, ':') ||
        !ReadTwoDigits(text, p, 0, 59, t.offsetMinute)) {
      return false;
    }
  }
  t.hasTime = true;
  r = t;
  i = p;
  return true;
}

// The value is complete at i: blanks behind it are taken, then the text must end unless the
// caller asked where the value stops.
bool Finish(std::string_view text, size_t i, size_t* end) {
  i = SkipBlanks(text, i);
  if (end == nullptr) return i == text.size();
  *end = i;
  return true;
}

char* PutPadded(char* p, uint32_t value, int width) {
  char digits[10];
  int n = 0;
  do {
    digits[n++] = static_cast<char>('0' + value % 10);
    value /= 10;
  } while (value != 0);
  for (; width > n; --width) *p++ = '0';
  while (n > 0) *p++ = digits[--n];
  return p;
}

char* PutClock(char* p, const DateTimeRecord& r) {
  p = PutPadded(p, static_cast<uint32_t>(r.hour), 2);
  *p++ = ':';
  p = PutPadded(p, static_cast<uint32_t>(r.minute), 2);
  *p++ = ':';
  p = PutPadded(p, static_cast<uint32_t>(r.second), 2);
  if (r.millisecond != 0) {
    *p++ = '.';
    p = PutPadded(p, static_cast<uint32_t>(r.millisecond), 3);
  }
  if (r.offsetHour != 0 || r.offsetMinute != 0) {
    *p++ = r.offsetSign;
    p = PutPadded(p, static_cast<uint32_t>(r.offsetHour), 2);
    *p++ = ':';
    p = PutPadded(p, static_cast<uint32_t>(r.offsetMinute), 2);
  }
  return p;
}

// 1 to 9 digits; a tenth makes the period malformed.
bool ReadPeriodNumber(std::string_view text, size_t& i, int32_t& value) {
  size_t p = i;
  int32_t v = 0;
  while (p < text.size() && IsDigit(text[p])) {
    if (p - i == kMaxPeriodDigits) return false;
    v = v * 10 + (text[p++] - '0');
  }
  if (p == i) return false;
  i = p;
  value = v;
  return true;
}

// A run of "n<unit>" values whose units must appear in the order of `units`, each at most once.
// With `fractionalLast` the last unit takes milliseconds, in front of it ("50.5S") or behind it
// ("50S.500"). Returns how many values were read, -1 when the run is malformed.
int ReadPeriodValues(std::string_view text, size_t& i, const char (&units)[4],
                     int32_t* const (&fields)[3], int32_t* milliseconds) {
  int next = 0;
  int count = 0;
  while (i < text.size() && IsDigit(text[i])) {
    int32_t value = 0;
    int32_t fraction = 0;
    bool hasFraction = false;
    if (!ReadPeriodNumber(text, i, value)) return -1;
    if (milliseconds != nullptr && i < text.size() && text[i] == '.') {
      if (!ReadFraction(text, i, fraction)) return -1;
      hasFraction = true;
    }
    if (i >= text.size()) return -1;
    int unit = next;
    while (unit < 3 && units[unit] != text[i]) ++unit;
    if (unit == 3 || (hasFraction && unit != 2)) return -1;
    ++i;
    if (milliseconds != nullptr && unit == 2 && i < text.size() && text[i] == '.') {
      if (hasFraction || !ReadFraction(text, i, fraction)) return -1;
    }
    *fields[unit] = value;
    if (milliseconds != nullptr && unit == 2) *milliseconds = fraction;
    next = unit + 1;
    ++count;
  }
  return count;
}

char* PutPeriodValue(char* p, int32_t value, char unit) {
  p = PutPadded(p, static_cast<uint32_t>(value), 1);
  *p++ = unit;
  return p;
}

int64_t ClockMs(const DateTimeRecord& r) {
  if (!r.hasTime) return 0;
  return ((int64_t{r.hour} * 60 + r.minute) * 60 + r.second) * 1000 + r.millisecond;
}

void SetClock(DateTimeRecord& r, int64_t ms) {
  r.millisecond = static_cast<int32_t>(ms % 1000);
  ms /= 1000;
  r.second = static_cast<int32_t>(ms % 60);
  ms /= 60;
  r.minute = static_cast<int32_t>(ms % 60);
  r.hour = static_cast<int32_t>(ms / 60);
}

// The record's moment in milliseconds, moved to a zero offset so that records from different
// zones compare.
int64_t InstantMs(const DateTimeRecord& r) {
  int64_t ms = ClockMs(r);
  if (r.hasDate) ms += DayNumber(r.year, r.month, r.day) * kMsPerDay;
  if (r.hasTime) {
    const int64_t offset = (int64_t{r.offsetHour} * 60 + r.offsetMinute) * 60000;
    ms -= r.offsetSign == '-' ? -offset : offset;
  }
  return ms;
}

}  // namespace

bool IsLeapYear(int32_t year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int DaysInMonth(int32_t year, int32_t month) {
  if (month < 1 || month > 12) return 0;
  if (month == 2 && IsLeapYear(year)) return 29;
  return kDaysBeforeMonth[month] - kDaysBeforeMonth[month - 1];
}

int64_t DayNumber(int32_t year, int32_t month, int32_t day) {
  const int64_t y = year - 1;
  return y * 365 + y / 4 - y / 100 + y / 400 + DayOfYear(year, month, day) - 1;
}

int DayOfWeek(int64_t dayNumber) {
  // Day 0 is a Monday, the second day of a week that begins on Sunday.
  return static_cast<int>(((dayNumber + 1) % 7 + 7) % 7) + 1;
}

bool DateFromDayNumber(int64_t dayNumber, DateTimeRecord& record) {
  if (dayNumber < 0 || dayNumber > DayNumber(kMaxYear, 12, 31)) return false;
  // 400 years hold 146097 days, 100 years 36524, 4 years 1461; the last year of a cycle holds
  // the extra day, which is why the quotients 4 are cut back to 3.
  int64_t n = dayNumber;
  const int64_t cycles400 = n / 146097;
  n %= 146097;
  const int64_t cycles100 = std::min<int64_t>(n / 36524, 3);
  n -= cycles100 * 36524;
  const int64_t cycles4 = n / 1461;
  n %= 1461;
  const int64_t years = std::min<int64_t>(n / 365, 3);
  n -= years * 365;
  const auto year =
      static_cast<int32_t>(cycles400 * 400 + cycles100 * 100 + cycles4 * 4 + years + 1);
  const int dayOfYear = static_cast<int>(n) + 1;
  const int leap = IsLeapYear(year) ? 1 : 0;
  int month = 12;
  while (kDaysBeforeMonth[month - 1] + (month > 2 ? leap : 0) >= dayOfYear) --month;
  record.hasDate = true;
  record.year = year;
  record.month = month;
  record.day = dayOfYear - kDaysBeforeMonth[month - 1] - (month > 2 ? leap : 0);
  record.dayOfYear = static_cast<uint16_t>(dayOfYear);
  record.dayOfWeek = static_cast<uint16_t>(DayOfWeek(dayNumber));
  return true;
}

bool MakeDate(int32_t year, int32_t month, int32_t day, DateTimeRecord& record) {
  if (year < 1 || year > kMaxYear || day < 1 || day > DaysInMonth(year, month)) return false;
  record = DateTimeRecord{};
  return DateFromDayNumber(DayNumber(year, month, day), record);
}

bool IsValidDateTime(const DateTimeRecord& r) {
  if (!r.hasDate && !r.hasTime) return false;
  if (r.hasDate &&
      (r.year < 1 || r.year > kMaxYear || r.day < 1 || r.day > DaysInMonth(r.year, r.month))) {
    return false;
  }
  if (r.hasTime && (r.hour < 0 || r.hour > 23 || r.minute < 0 || r.minute > 59 || r.second < 0 ||
                    r.second > 59 || r.millisecond < 0 || r.millisecond > 999 ||
                    (r.offsetSign != '+' && r.offsetSign != '-') || r.offsetHour < 0 ||
                    r.offsetHour > 23 || r.offsetMinute < 0 || r.offsetMinute > 59)) {
    return false;
  }
  return true;
}

bool ParseGenericDate(std::string_view text, DateTimeRecord& record, size_t* end) {
  DateTimeRecord r;
  size_t i = 0;
  if (ReadDate(text, i, r)) {
    i = SkipBlanks(text, i);
    const bool timeFollows = i < text.size() && text[i] == 'T';
    if (timeFollows) ++i;
    if ((!timeFollows || ReadTime(text, i, r)) && Finish(text, i, end)) {
      record = r;
      return true;
    }
  }
  r = DateTimeRecord{};
  i = 0;
  if (!ReadTime(text, i, r) || !Finish(text, i, end)) return false;
  record = r;
  return true;
}

size_t FormatGenericDate(const DateTimeRecord& r, char* out) {
  char* p = out;
  if (IsValidDateTime(r)) {
    if (r.hasDate) {
      p = PutPadded(p, static_cast<uint32_t>(r.year), 4);
      *p++ = '-';
      p = PutPadded(p, static_cast<uint32_t>(r.month), 2);
      *p++ = '-';
      p = PutPadded(p, static_cast<uint32_t>(r.day), 2);
      if (r.hasTime) *p++ = 'T';
    }
    if (r.hasTime) p = PutClock(p, r);
  }
  *p = '\0';
  return static_cast<size_t>(p - out);
}

std::string FormatGenericDate(const DateTimeRecord& record) {
  char buf[kGenericDateSize];
  return std::string(buf, FormatGenericDate(record, buf));
}

bool ParseGenericPeriod(std::string_view text, PeriodRecord& period, size_t* end) {
  static constexpr char kDateUnits[4] = "YMD";
  static constexpr char kClockUnits[4] = "HMS";
  PeriodRecord r;
  size_t i = 0;
  if (i < text.size() && text[i] == '-') {
    r.negative = true;
    ++i;
  }
  if (!Expect(text, i, 'P')) return false;
  int32_t* const dateFields[3] = {&r.years, &r.months, &r.days};
  const int dateCount = ReadPeriodValues(text, i, kDateUnits, dateFields, nullptr);
  if (dateCount < 0) return false;
  int clockCount = 0;
  if (i < text.size() && text[i] == 'T') {
    ++i;
    int32_t* const clockFields[3] = {&r.hours, &r.minutes, &r.seconds};
    clockCount = ReadPeriodValues(text, i, kClockUnits, clockFields, &r.milliseconds);
    if (clockCount <= 0) return false;
  }
  if (dateCount + clockCount == 0 || !Finish(text, i, end)) return false;
  if (r.years == 0 && r.months == 0 && r.days == 0 && r.hours == 0 && r.minutes == 0 &&
      r.seconds == 0 && r.milliseconds == 0) {
    r.negative = false;
  }
  period = r;
  return true;
}

size_t FormatGenericPeriod(const PeriodRecord& r, char* out) {
  char* p = out;
  const int32_t values[7] = {r.years,   r.months,  r.days,        r.hours,
                             r.minutes, r.seconds, r.milliseconds};
  if (std::all_of(values, values + 7, [](int32_t v) { return v >= 0; }) && r.milliseconds <= 999) {
    const bool hasClock = r.hours != 0 || r.minutes != 0 || r.seconds != 0 || r.milliseconds != 0;
    if (!hasClock && r.years == 0 && r.months == 0 && r.days == 0) {
      // Something must stand behind the "P"; the zero period is written as zero seconds.
      for (char c : {'P', 'T', '0', 'S'}) *p++ = c;
    } else {
      if (r.negative) *p++ = '-';
      *p++ = 'P';
      if (r.years != 0) p = PutPeriodValue(p, r.years, 'Y');
      if (r.months != 0) p = PutPeriodValue(p, r.months, 'M');
      if (r.days != 0) p = PutPeriodValue(p, r.days, 'D');
      if (hasClock) *p++ = 'T';
      if (r.hours != 0) p = PutPeriodValue(p, r.hours, 'H');
      if (r.minutes != 0) p = PutPeriodValue(p, r.minutes, 'M');
      if (r.seconds != 0 || r.milliseconds != 0) {
        p = PutPadded(p, static_cast<uint32_t>(r.seconds), 1);
        if (r.milliseconds != 0) {
          *p++ = '.';
          p = PutPadded(p, static_cast<uint32_t>(r.milliseconds), 3);
        }
        *p++ = 'S';
      }
    }
  }
  *p = '\0';
  return static_cast<size_t>(p - out);
}

std::string FormatGenericPeriod(const PeriodRecord& period) {
  char buf[kGenericPeriodSize];
  return std::string(buf, FormatGenericPeriod(period, buf));
}

bool DateToSeconds(const DateTimeRecord& record, int64_t& seconds) {
  if (!IsValidDateTime(record)) return false;
  int64_t s = ClockMs(record) / 1000;
  if (record.hasDate) s += DayNumber(record.year, record.month, record.day) * 86400;
  seconds = s;
  return true;
}

bool AddPeriod(const DateTimeRecord& record, const PeriodRecord& period, DateTimeRecord& result) {
  if (!IsValidDateTime(record)) return false;
  const int64_t sign = period.negative ? -1 : 1;
  const bool periodHasClock =
      period.hours != 0 || period.minutes != 0 || period.seconds != 0 || period.milliseconds != 0;
  const int64_t shift =
      sign *
      ((((int64_t{period.days} * 24 + period.hours) * 60 + period.minutes) * 60 + period.seconds) *
           1000 +
       period.milliseconds);
  DateTimeRecord r = record;
  if (!record.hasDate) {
    const int64_t clock = ClockMs(record) + shift;
    SetClock(r, clock - FloorDiv(clock, kMsPerDay) * kMsPerDay);
    result = r;
    return true;
  }
  const int64_t monthIndex = int64_t{record.year} * 12 + (record.month - 1) +
                             sign * (int64_t{period.years} * 12 + period.months);
  const int64_t year = FloorDiv(monthIndex, 12);
  if (year < 1 || year > kMaxYear) return false;
  const auto y = static_cast<int32_t>(year);
  const auto m = static_cast<int32_t>(monthIndex - year * 12 + 1);
  const int32_t d = std::min(record.day, DaysInMonth(y, m));
  const int64_t total = DayNumber(y, m, d) * kMsPerDay + ClockMs(record) + shift;
  const int64_t days = FloorDiv(total, kMsPerDay);
  if (!DateFromDayNumber(days, r)) return false;
  r.hasTime = record.hasTime || periodHasClock;
  if (r.hasTime) SetClock(r, total - days * kMsPerDay);
  result = r;
  return true;
}

bool PeriodBetween(const DateTimeRecord& from, const DateTimeRecord& to, PeriodRecord& period) {
  if (!IsValidDateTime(from) || !IsValidDateTime(to) || from.hasDate != to.hasDate) return false;
  int64_t ms = InstantMs(to) - InstantMs(from);
  PeriodRecord r;
  r.negative = ms < 0;
  if (ms < 0) ms = -ms;
  r.days = static_cast<int32_t>(ms / kMsPerDay);
  ms %= kMsPerDay;
  r.milliseconds = static_cast<int32_t>(ms % 1000);
  ms /= 1000;
  r.seconds = static_cast<int32_t>(ms % 60);
  ms /= 60;
  r.minutes = static_cast<int32_t>(ms % 60);
  r.hours = static_cast<int32_t>(ms / 60);
  period = r;
  return true;
}

std::string FormatGenericDate(const platform::LocalTime& at) {
  DateTimeRecord record;
  record.hasDate = record.hasTime = true;
  record.year = at.year;
  record.month = at.month;
  record.day = at.day;
  record.hour = at.hour;
  record.minute = at.minute;
  record.second = at.second;
  return FormatGenericDate(record);
}

}  // namespace kelpdex
