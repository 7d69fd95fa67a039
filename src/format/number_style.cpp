#include "format/number_style.h"

#include <cstring>
#include <string_view>

#include "format/text_writer.h"
#include "store/bytes.h"

namespace kelpdex {

bool operator==(const NumberStyle& a, const NumberStyle& b) {
  return a.kind == b.kind && a.fixedDecimals == b.fixedDecimals &&
         a.decimalDigits == b.decimalDigits && a.leadingZeroesSet == b.leadingZeroesSet &&
         a.leadingZeroes == b.leadingZeroes && a.groupDigits == b.groupDigits &&
         a.negative == b.negative && a.symbolPosition == b.symbolPosition &&
         std::strcmp(a.symbol, b.symbol) == 0 && a.index == b.index && a.timeIndex == b.timeIndex &&
         a.dateAfterTime == b.dateAfterTime && a.systemDateOrder == b.systemDateOrder &&
         a.denominatorDigits == b.denominatorDigits && a.denominator == b.denominator &&
         a.exponent == b.exponent && a.exponentPower == b.exponentPower &&
         std::strcmp(a.userFormat, b.userFormat) == 0;
}

NumberStyle ReadNumberStyle(const StyleRecord& record) {
  using namespace number_style;
  const uint8_t* b = record.bytes;
  NumberStyle s;
  s.kind = b[kKindAt];
  s.fixedDecimals = b[kFixedDecimalsAt] != 0;
  s.decimalDigits = b[kDecimalDigitsAt];
  s.leadingZeroesSet = b[kLeadingZeroesSetAt] != 0;
  s.leadingZeroes = b[kLeadingZeroesAt];
  s.groupDigits = b[kGroupDigitsAt] != 0;
  s.negative = b[kNegativeAt];
  s.symbolPosition = b[kSymbolPositionAt];
  s.index = b[kIndexAt];
  s.timeIndex = b[kTimeIndexAt];
  s.dateAfterTime = b[kDateAfterTimeAt] != 0;
  s.systemDateOrder = b[kSystemDateOrderAt] != 0;
  s.denominatorDigits = b[kDenominatorDigitsAt];
  s.denominator = static_cast<int64_t>(LoadU64(b + kDenominatorAt));
  s.exponent = b[kExponentAt];
  s.exponentPower = b[kExponentPowerAt];
  // Both texts are NUL terminated within their areas, whatever a file put there.
  std::memcpy(s.symbol, b + kSymbolAt, sizeof s.symbol - 1);
  std::memcpy(s.userFormat, b + kUserFormatAt, kFormatTextMax);
  return s;
}

void WriteNumberStyle(const NumberStyle& s, StyleRecord& record) {
  using namespace number_style;
  uint8_t* b = record.bytes;
  std::memset(b + style::kNumberFormatAt, 0, style::kFontSetAt - style::kNumberFormatAt);
  b[kKindAt] = s.kind;
  b[kFixedDecimalsAt] = s.fixedDecimals;
  b[kDecimalDigitsAt] = s.decimalDigits;
  b[kLeadingZeroesSetAt] = s.leadingZeroesSet;
  b[kLeadingZeroesAt] = s.leadingZeroes;
  b[kGroupDigitsAt] = s.groupDigits;
  b[kNegativeAt] = s.negative;
  b[kSymbolPositionAt] = s.symbolPosition;
  b[kIndexAt] = s.index;
  b[kTimeIndexAt] = s.timeIndex;
  b[kDateAfterTimeAt] = s.dateAfterTime;
  b[kSystemDateOrderAt] = s.systemDateOrder;
  b[kDenominatorDigitsAt] = s.denominatorDigits;
  StoreU64(b + kDenominatorAt, static_cast<uint64_t>(s.denominator));
  b[kExponentAt] = s.exponent;
  b[kExponentPowerAt] = s.exponentPower;
  std::memcpy(b + kSymbolAt, s.symbol, strnlen(s.symbol, sizeof s.symbol - 1));
  std::memcpy(b + kUserFormatAt, s.userFormat, strnlen(s.userFormat, kFormatTextMax));
}

const char* FormatKindName(uint8_t kind) {
  static const char* const kNames[format_kind::kCount] = {
      "Default",  "General",    "Currency", "Accounting", "Date",       "Time",
      "DateTime", "Percentage", "Fraction", "Scientific", "UserDefined"};
  return kind < format_kind::kCount ? kNames[kind] : "";
}

const char* NegativeName(uint8_t value) {
  static const char* const kNames[4] = {"Minus", "Red", "Brackets", "RedAndBrackets"};
  return value < 4 ? kNames[value] : "";
}

const char* SymbolPositionName(uint8_t value) {
  static const char* const kNames[4] = {"$1.1", "$ 1.1", "1.1$", "1.1 $"};
  return value < 4 ? kNames[value] : "";
}

namespace {

// The date pictures by index and by date order (month, day or year first); '%' stands for the
// date separator.
const char* const kDatePictures[11][3] = {
    {"m%d%yyyy", "d%m%yyyy", "yyyy%m%d"},
    {"mm%dd%yyyy", "dd%mm%yyyy", "yyyy%mm%dd"},
    {"m%d%yy", "d%m%yy", "yy%m%d"},
    {"mm%dd%yy", "dd%mm%yy", "yy%mm%dd"},
    {"m%d", "d%m", "m%d"},
    {"mm%yy", "mm%yy", "yy%mm"},
    {"mmm-d", "d-mmm", "mmm-d"},
    {"mmm-d-yyyy", "d-mmm-yyyy", "yyyy-mmm-d"},
    {"mmm-d-yy", "d-mmm-yy", "yy-mmm-d"},
    {"mmmm d, yyyy", "d mmmm, yyyy", "yyyy, mmmm d"},
    {"dddd, mmmm dd, yyyy", "dddd, dd mmmm, yyyy", "yyyy, mmmm dd, dddd"},
};

// The time pictures by index; '%' is the time separator, '!' the decimal separator.
const char* const kTimePictures[10] = {"h%mm",      "h%mm AM/PM",    "hh%mm",    "hh%mm AM/PM",
                                       "h%mm%ss",   "h%mm%ss AM/PM", "hh%mm%ss", "hh%mm%ss AM/PM",
                                       "[m]%ss!00", "[h]%mm%ss"};

void PutPicture(TextWriter& w, const char* picture, char separator, char decimal) {
  for (const char* p = picture; *p != '\0'; ++p) {
    w.Put(*p == '%' ? separator : *p == '!' ? decimal : *p);
  }
}

void PutDate(TextWriter& w, const NumberStyle& s, uint8_t index, const LocaleSettings& settings) {
  uint8_t order = s.systemDateOrder ? settings.dateOrder : genericLocale.dateOrder;
  if (order > 2) order = 0;
  if (index > 10) index = 0;
  PutPicture(w, kDatePictures[index][order], settings.dateSeparator, settings.decimalSeparator);
}

void PutTime(TextWriter& w, uint8_t index, const LocaleSettings& settings) {
  if (index > 9) index = 0;
  PutPicture(w, kTimePictures[index], settings.timeSeparator, settings.decimalSeparator);
}

// "#,##0", with the grouping character of the settings.
void PutGroupedInteger(TextWriter& w, char group) {
  w.Put('#');
  w.Put(group);
  w.Put("##0");
}

// The decimal point and `digits` zeros; nothing for no digits.
void PutFixedDecimals(TextWriter& w, int digits, char decimal) {
  if (digits <= 0) return;
  w.Put(decimal);
  w.Repeat('0', digits);
}

void BuildGeneral(TextWriter& w, const NumberStyle& s, const LocaleSettings& settings) {
  auto picture = [&] {
    if (s.leadingZeroesSet) {
      w.Zeros(s.leadingZeroes);
    } else if (s.groupDigits) {
      PutGroupedInteger(w, settings.thousandSeparator);
    } else {
      w.Put('0');
    }
    if (!s.fixedDecimals) {
      w.Put(settings.decimalSeparator);
      w.Put('#');
    } else {
      PutFixedDecimals(w, s.decimalDigits, settings.decimalSeparator);
    }
  };
  picture();
  switch (s.negative) {
    case negative::kRed:
      w.Put(";[red]");
      picture();
      break;
    case negative::kBrackets:
      w.Put(";(");
      picture();
      w.Put(')');
      break;
    case negative::kRedAndBrackets:
      w.Put(";[red](");
      picture();
      w.Put(')');
      break;
    default:
      break;
  }
}

void BuildCurrency(TextWriter& w, const NumberStyle& s, const LocaleSettings& settings) {
  char quoted[24];
  TextWriter q(quoted, sizeof quoted);
  q.Put('"');
  if (s.symbolPosition == 3) q.Put(' ');
  q.Put(std::string_view(s.symbol, strnlen(s.symbol, sizeof s.symbol)));
  if (s.symbolPosition == 1) q.Put(' ');
  q.Put('"');
  bool front = s.symbolPosition < 2;
  // `fixedComma` is the bracket section of the symbol-first picture without decimals, which has
  // always carried a literal comma whatever the locale's grouping character.
  auto picture = [&](bool fixedComma) {
    if (front) w.Put(std::string_view(quoted, q.length()));
    PutGroupedInteger(w, fixedComma ? ',' : settings.thousandSeparator);
    PutFixedDecimals(w, s.decimalDigits, settings.decimalSeparator);
    if (!front) w.Put(std::string_view(quoted, q.length()));
  };
  picture(false);
  switch (s.negative) {
    case negative::kRed:
      w.Put(";[red]");
      picture(false);
      break;
    case negative::kBrackets:
      w.Put(";(");
      picture(front && s.decimalDigits == 0);
      w.Put(')');
      break;
    case negative::kRedAndBrackets:
      w.Put(";[red](");
      picture(false);
      w.Put(')');
      break;
    default:
      break;
  }
}

void BuildAccounting(TextWriter& w, const NumberStyle& s, const LocaleSettings& settings) {
  std::string_view symbol(s.symbol, strnlen(s.symbol, sizeof s.symbol));
  auto number = [&] {
    PutGroupedInteger(w, settings.thousandSeparator);
    PutFixedDecimals(w, s.decimalDigits, settings.decimalSeparator);
  };
  auto symbolFill = [&] {
    w.Put('"');
    w.Put(symbol);
    w.Put("\"* ");
  };
  w.Put("_(");
  symbolFill();
  number();
  w.Put("_);\\(");
  symbolFill();
  number();
  w.Put("\\);_(");
  symbolFill();
  w.Put('-');
  w.Repeat('?', s.decimalDigits);
  w.Put("_);_(@_)");
}

void BuildFraction(TextWriter& w, const NumberStyle& s) {
  w.Put("?\\ ");
  if (s.denominator != 0) {
    char digits[24];
    TextWriter d(digits, sizeof digits);
    d.Unsigned(static_cast<unsigned long long>(s.denominator < 0 ? -s.denominator : s.denominator));
    w.Repeat('?', static_cast<int>(d.length()));
    w.Put("/\"");
    if (s.denominator < 0) w.Put('-');
    w.Put(std::string_view(digits, d.length()));
    w.Put('"');
    return;
  }
  int digits = s.denominatorDigits == 0 ? 1 : s.denominatorDigits;
  w.Repeat('?', digits);
  w.Put('/');
  w.Repeat('?', digits);
}

void BuildScientific(TextWriter& w, const NumberStyle& s, const LocaleSettings& settings) {
  if (s.exponent > 2) {
    w.Put('#');
    w.Put(settings.decimalSeparator);
    w.Put('#');
    return;
  }
  w.Put('0');
  if (!s.fixedDecimals) {
    w.Put(settings.decimalSeparator);
    w.Put('#');
  } else {
    PutFixedDecimals(w, s.decimalDigits, settings.decimalSeparator);
  }
  if (s.exponent == 0) {
    w.Put("e+00");
    return;
  }
  w.Put(s.exponent == 1 ? "e+\"" : "e-\"");
  w.Unsigned(s.exponentPower, 2);
  w.Put('"');
}

}  // namespace

size_t BuildFormatString(const NumberStyle& s, char* out, const LocaleSettings* settings) {
  const LocaleSettings& ls = settings != nullptr ? *settings : genericLocale;
  TextWriter w(out, kBuiltFormatMax);
  switch (s.kind) {
    case format_kind::kGeneral:
      BuildGeneral(w, s, ls);
      break;
    case format_kind::kCurrency:
      BuildCurrency(w, s, ls);
      break;
    case format_kind::kAccounting:
      BuildAccounting(w, s, ls);
      break;
    case format_kind::kDate:
      PutDate(w, s, s.index, ls);
      break;
    case format_kind::kTime:
      PutTime(w, s.index, ls);
      break;
    case format_kind::kDateTime:
      if (s.dateAfterTime) {
        PutTime(w, s.timeIndex, ls);
        w.Put("\\ ");
        PutDate(w, s, s.index, ls);
      } else {
        PutDate(w, s, s.index, ls);
        w.Put("\\ ");
        PutTime(w, s.timeIndex, ls);
      }
      break;
    case format_kind::kPercentage:
      PutGroupedInteger(w, ls.thousandSeparator);
      if (!s.fixedDecimals) {
        w.Put(ls.decimalSeparator);
        w.Put('#');
      } else {
        PutFixedDecimals(w, s.decimalDigits, ls.decimalSeparator);
      }
      w.Put("\\%");
      break;
    case format_kind::kFraction:
      BuildFraction(w, s);
      break;
    case format_kind::kScientific:
      BuildScientific(w, s, ls);
      break;
    case format_kind::kUserDefined:
      w.Put(std::string_view(s.userFormat, strnlen(s.userFormat, kFormatTextMax)));
      break;
    default:
      break;
  }
  return w.length();
}

std::string BuildFormatString(const NumberStyle& s, const LocaleSettings* settings) {
  char buf[kBuiltFormatMax];
  size_t n = BuildFormatString(s, buf, settings);
  return std::string(buf, n);
}

}  // namespace kelpdex
