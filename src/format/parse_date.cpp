#include "format/parse_date.h"

#include <cstring>
#include <memory>

#include "format/date_names.h"
#include "format/format_string.h"
#include "platform/os.h"
#include "text/code_page.h"

namespace kelpdex {

namespace {

int gYearForTesting = 0;

int CurrentYear() {
  return gYearForTesting != 0 ? gYearForTesting : platform::GetLocalTime().year;
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Fields gathered while a picture is matched; -1 stands for "not in the text".
struct Fields {
  int year = -1;
  int yearDigits = 0;
  int month = -1;
  int day = -1;
  int hour = -1;
  int minute = -1;
  int second = -1;
  int millisecond = 0;
  int pm = -1;  // 0 AM, 1 PM
};

class PictureMatcher {
 public:
  PictureMatcher(std::string_view text, const DateNames& local, Fields& fields)
      : text_(text), local_(local), fields_(fields) {}

  // Matches one section from text position `at`; on success `at` moves behind what matched.
  bool Match(const CompiledFormat& f, int section, size_t& at) {
    const FormatSection& s = f.sections[section];
    i_ = at;
    for (int k = s.first; k < s.first + s.count; ++k) {
      const FormatItem& it = f.items[k];
      int count = static_cast<unsigned char>(it.ch);
      switch (it.kind & ~item::kElapsed) {
        case item::kYear:
          if (!Number(1, count == 4 ? 5 : 2, fields_.year, &fields_.yearDigits)) return false;
          break;
        case item::kMonth:
          if (count <= 2) {
            if (!Number(1, 2, fields_.month)) return false;
          } else if (!Name(fields_.month, true)) {
            return false;
          }
          break;
        case item::kDay:
          if (count <= 2) {
            if (!Number(1, 2, fields_.day)) return false;
          } else {
            int weekday = 0;  // checked for spelling only: the date decides the weekday
            if (!Name(weekday, false)) return false;
          }
          break;
        case item::kHour:
          if (!Number(1, 2, fields_.hour)) return false;
          break;
        case item::kMinute:
          if (!Number(1, 2, fields_.minute)) return false;
          break;
        case item::kSecond:
          if (!Number(1, 2, fields_.second)) return false;
          break;
        case item::kSecondFraction:
          if (it.ch != '0') {
            // The fraction of a second is optional, whatever the picture shows.
            if (i_ < text_.size() && (text_[i_] == '.' || text_[i_] == it.ch) &&
                i_ + 1 < text_.size() && IsDigit(text_[i_ + 1])) {
              ++i_;
              int scale = 100;
              while (i_ < text_.size() && IsDigit(text_[i_])) {
                fields_.millisecond += (text_[i_++] - '0') * scale;
                scale /= 10;
              }
            }
          }
          break;
        case item::kAmPm:
          SkipBlanks();
          AmPm();  // optional: "18:24" is as good as "6:24 PM"
          break;
        case item::kBlank:
        case item::kFill:
          break;
        default:
          if (it.ch == ' ') {
            SkipBlanks();
          } else {
            // Blanks may stand around any separator; commas may be left out.
            SkipBlanks();
            if (i_ < text_.size() && text::CharUpper(text_[i_]) == text::CharUpper(it.ch)) {
              ++i_;
            } else if (it.ch != ',') {
              return false;
            }
            SkipBlanks();
          }
          break;
      }
    }
    SkipBlanks();
    at = i_;
    return true;
  }

 private:
  void SkipBlanks() {
    while (i_ < text_.size() && text_[i_] == ' ') ++i_;
  }

  bool Number(int minDigits, int maxDigits, int& out, int* digits = nullptr) {
    size_t start = i_;
    int value = 0;
    while (i_ < text_.size() && IsDigit(text_[i_]) && static_cast<int>(i_ - start) < maxDigits) {
      value = value * 10 + (text_[i_++] - '0');
    }
    int n = static_cast<int>(i_ - start);
    // A run longer than the field allows is another number, not this one.
    if (n < minDigits || (i_ < text_.size() && IsDigit(text_[i_]))) return false;
    out = value;
    if (digits != nullptr) *digits = n;
    return true;
  }

  // The longest month (or weekday) name, local or English, long or short, at the position.
  bool Name(int& out, bool months) {
    const DateNames& english = EnglishDateNames();
    size_t best = 0;
    int count = months ? 12 : 7;
    for (const DateNames* names : {&local_, &english}) {
      for (int k = 0; k < count; ++k) {
        for (const char* name : {months ? names->months[k] : names->days[k],
                                 months ? names->shortMonths[k] : names->shortDays[k]}) {
          size_t n = std::strlen(name);
          if (n > best && text::StartsWithNoCase(text_.substr(i_), std::string_view(name, n))) {
            best = n;
            out = k + 1;
          }
        }
      }
    }
    if (best == 0) return false;
    i_ += best;
    if (i_ < text_.size() && text_[i_] == '.') ++i_;  // "Nov." as many locales abbreviate
    return true;
  }

  void AmPm() {
    const DateNames& english = EnglishDateNames();
    for (const DateNames* names : {&local_, &english}) {
      for (int pm = 0; pm < 2; ++pm) {
        const char* word = pm ? names->pm : names->am;
        size_t n = std::strlen(word);
        if (n > 0 && text::StartsWithNoCase(text_.substr(i_), std::string_view(word, n))) {
          fields_.pm = pm;
          i_ += n;
          return;
        }
      }
    }
    if (i_ < text_.size()) {
      char c = text::CharUpper(text_[i_]);
      if (c == 'A' || c == 'P') {
        fields_.pm = c == 'P';
        ++i_;
      }
    }
  }

  std::string_view text_;
  const DateNames& local_;
  Fields& fields_;
  size_t i_ = 0;
};

bool MakeRecord(const Fields& f, bool wantDate, bool wantTime, DateTimeRecord& record) {
  DateTimeRecord r;
  if (wantDate) {
    if (f.month < 0 || f.day < 0) {
      // "mm/yy" names a month: its first day.
      if (f.month < 0 || f.year < 0) return false;
    }
    int year = f.year < 0 ? CurrentYear() : f.year;
    if (f.year >= 0 && f.yearDigits <= 2) year = CurrentYear() / 100 * 100 + f.year;
    if (!MakeDate(year, f.month, f.day < 0 ? 1 : f.day, r)) return false;
  }
  if (wantTime) {
    int hour = f.hour;
    if (hour < 0) return false;
    if (f.pm >= 0) {
      if (hour < 1 || hour > 12) return false;
      hour = hour % 12 + (f.pm ? 12 : 0);
    }
    if (hour > 23 || f.minute > 59 || f.second > 59) return false;
    r.hasTime = true;
    r.hour = hour;
    r.minute = f.minute < 0 ? 0 : f.minute;
    r.second = f.second < 0 ? 0 : f.second;
    r.millisecond = f.millisecond;
  }
  record = r;
  return true;
}

// Tries one picture against the text from `at`; the text must end there unless `rest` is given.
bool TryPicture(std::string_view text, const char* picture, const LocaleSettings& separators,
                const DateNames& names, Fields& fields, size_t& at, bool whole) {
  auto compiled = std::make_unique<CompiledFormat>();
  if (!ParseFormatString(picture, *compiled, &separators)) return false;
  Fields attempt = fields;
  size_t i = at;
  PictureMatcher matcher(text, names, attempt);
  if (!matcher.Match(*compiled, 0, i)) return false;
  if (whole && i != text.size()) return false;
  fields = attempt;
  at = i;
  return true;
}

bool TryStyle(std::string_view text, const NumberStyle& style, const LocaleSettings& settings,
              const DateNames& names, int kind, DateTimeRecord& record) {
  char picture[kBuiltFormatMax];
  // The locale's date order with the fixed separators.
  LocaleSettings fixed = settings;
  fixed.decimalSeparator = genericLocale.decimalSeparator;
  fixed.thousandSeparator = genericLocale.thousandSeparator;
  fixed.dateSeparator = genericLocale.dateSeparator;
  fixed.timeSeparator = genericLocale.timeSeparator;
  if (BuildFormatString(style, picture, &fixed) == 0) return false;
  Fields fields;
  size_t at = 0;
  while (at < text.size() && text[at] == ' ') ++at;
  if (!TryPicture(text, picture, fixed, names, fields, at, true)) return false;
  bool wantDate = kind != format_kind::kTime;
  bool wantTime = kind != format_kind::kDate;
  if (kind == format_kind::kDateTime && fields.hour < 0) wantTime = false;
  return MakeRecord(fields, wantDate, wantTime, record);
}

// Date pictures by index (the first eleven), then time pictures; built from a style so that
// the tables live in one place.
bool TryIndexes(std::string_view text, const LocaleSettings& settings, const DateNames& names,
                int kind, DateTimeRecord& record) {
  size_t start = 0;
  while (start < text.size() && text[start] == ' ') ++start;
  Fields fields;
  size_t at = start;
  char picture[kBuiltFormatMax];
  NumberStyle style;
  style.systemDateOrder = true;
  bool haveDate = false;
  if (kind != format_kind::kTime) {
    style.kind = format_kind::kDate;
    for (int index = 0; index <= 10 && !haveDate; ++index) {
      style.index = static_cast<uint8_t>(index);
      BuildFormatString(style, picture, &settings);
      Fields attempt;
      size_t i = start;
      bool whole = kind == format_kind::kDate;
      if (TryPicture(text, picture, settings, names, attempt, i, whole)) {
        fields = attempt;
        at = i;
        haveDate = true;
      }
    }
    if (!haveDate && kind == format_kind::kDate) return false;
    if (haveDate && (kind == format_kind::kDate || at == text.size())) {
      return MakeRecord(fields, true, false, record);
    }
  }
  // Clock pictures, the longer first; the elapsed ones last, or "10:30" would read as minutes.
  static const uint8_t kTimeOrder[10] = {7, 6, 5, 4, 3, 2, 1, 0, 9, 8};
  style.kind = format_kind::kTime;
  for (uint8_t index : kTimeOrder) {
    style.index = index;
    BuildFormatString(style, picture, &settings);
    Fields attempt = fields;
    size_t i = at;
    if (TryPicture(text, picture, settings, names, attempt, i, true)) {
      return MakeRecord(attempt, haveDate, true, record);
    }
  }
  return false;
}

}  // namespace

bool ParseDateText(std::string_view text, DateTimeRecord& record, int kind,
                   const NumberStyle* style, const LocaleSettings* settings) {
  const LocaleSettings& ls = settings != nullptr ? *settings : genericLocale;
  if (kind != format_kind::kDate && kind != format_kind::kTime) kind = format_kind::kDateTime;
  DateTimeRecord generic;
  if (ParseGenericDate(text, generic)) {
    bool fits = kind == format_kind::kDate   ? generic.hasDate && !generic.hasTime
                : kind == format_kind::kTime ? generic.hasTime && !generic.hasDate
                                             : true;
    if (fits) {
      record = generic;
      return true;
    }
  }
  const DateNames& names = DateNamesFor(settings);
  if (style != nullptr && style->kind >= format_kind::kDate &&
      style->kind <= format_kind::kDateTime && TryStyle(text, *style, ls, names, kind, record)) {
    return true;
  }
  return TryIndexes(text, ls, names, kind, record);
}

void SetDateParseYearForTesting(int year) {
  gYearForTesting = year;
}

}  // namespace kelpdex
