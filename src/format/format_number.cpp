#include "format/format_number.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>

#include "format/number_text.h"
#include "format/text_writer.h"

namespace kelpdex {

namespace {

// Decimal placeholders beyond this count add nothing a double can hold.
constexpr int kMaxDecimals = 340;

bool ConditionHolds(const FormatSection& s, double x, bool& hasCondition) {
  for (int b = 0; b < s.bracketCount; ++b) {
    const FormatBracket& br = s.brackets[b];
    if (br.type != bracket::kCondition) continue;
    hasCondition = true;
    switch (br.op) {
      case condition::kEqual:
        return x == br.value;
      case condition::kNotEqual:
        return x != br.value;
      case condition::kLess:
        return x < br.value;
      case condition::kLessEqual:
        return x <= br.value;
      case condition::kGreater:
        return x > br.value;
      default:
        return x >= br.value;
    }
  }
  return true;
}

// The section for x: by conditions where the format states them, else by sign and zero. -1 when
// no section takes the value.
int ChooseSection(const CompiledFormat& f, double x) {
  int numberSections = f.sectionCount > 3 ? 3 : f.sectionCount;
  bool conditional = false;
  bool first = ConditionHolds(f.sections[0], x, conditional);
  if (conditional) {
    if (first) return 0;
    if (numberSections >= 2) {
      bool second = false;
      if (ConditionHolds(f.sections[1], x, second) || !second) {
        if (!second && numberSections == 3 && !(x < 0)) return 2;
        return 1;
      }
    }
    return numberSections == 3 ? 2 : -1;
  }
  if (numberSections >= 2 && x < 0) return 1;
  if (numberSections == 3 && x == 0) return 2;
  return 0;
}

// Digits of a fixed exponent written as a literal behind the exponent mark ("0.00e+\"03\"").
bool FixedExponent(const CompiledFormat& f, const FormatSection& s, int& power) {
  if (s.exponentDigits != 0) return false;
  int end = s.first + s.count;
  int at = s.first;
  while (at < end && f.items[at].kind != item::kExponent) ++at;
  int digits = 0;
  power = 0;
  for (++at; at < end && f.items[at].kind == item::kLiteral; ++at) {
    char c = f.items[at].ch;
    if (c < '0' || c > '9' || digits == 3) break;
    power = power * 10 + (c - '0');
    ++digits;
  }
  return digits > 0;
}

// The best fraction for x with a denominator up to maxDen, by continued fractions and the last
// semiconvergent.
void BestFraction(double x, int64_t maxDen, int64_t& num, int64_t& den) {
  if (x <= 0) {
    num = 0;
    den = 1;
    return;
  }
  double p0 = 0, q0 = 1, p1 = 1, q1 = 0;
  double v = x;
  for (int step = 0; step < 64; ++step) {
    double a = std::floor(v);
    double p2 = a * p1 + p0;
    double q2 = a * q1 + q0;
    if (q2 > static_cast<double>(maxDen)) break;
    p0 = p1, q0 = q1, p1 = p2, q1 = q2;
    double rest = v - a;
    if (rest < 1e-12) break;
    v = 1 / rest;
  }
  if (q1 == 0) {  // x beyond every bounded fraction's reach: round it whole
    num = static_cast<int64_t>(std::llround(x));
    den = 1;
    return;
  }
  double k = std::floor((static_cast<double>(maxDen) - q0) / q1);
  double sp = p0 + k * p1, sq = q0 + k * q1;
  if (sq >= 1 && std::fabs(x - sp / sq) < std::fabs(x - p1 / q1)) {
    num = static_cast<int64_t>(sp);
    den = static_cast<int64_t>(sq);
  } else {
    num = static_cast<int64_t>(p1);
    den = static_cast<int64_t>(q1);
  }
}

// Writes a digit string into the section's placeholders between items [from, to) that belong
// to one number part; right-aligned, extra digits going in front of the first placeholder.
class DigitFiller {
 public:
  DigitFiller(std::string_view digits, int placeholders, bool grouping, char group)
      : digits_(digits), placeholders_(placeholders), grouping_(grouping), group_(group) {}

  void Fill(TextWriter& w, char placeholder) {
    int fromRight = placeholders_ - 1 - seen_;  // digit position counted from the right
    int len = static_cast<int>(digits_.size());
    if (seen_ == 0) {
      for (int r = len - 1; r > fromRight; --r) Digit(w, digits_[len - 1 - r], r);
    }
    ++seen_;
    if (fromRight < len) {
      Digit(w, digits_[len - 1 - fromRight], fromRight);
    } else if (placeholder == '0') {
      Digit(w, '0', fromRight);
    } else if (placeholder == '?') {
      w.Put(' ');
    }
  }

 private:
  void Digit(TextWriter& w, char d, int fromRight) {
    w.Put(d);
    if (grouping_ && fromRight > 0 && fromRight % 3 == 0) w.Put(group_);
  }

  std::string_view digits_;
  int placeholders_;
  bool grouping_;
  char group_;
  int seen_ = 0;
};

// Fills decimals from the left: a "0" shows a trailing zero, "#" drops it, "?" leaves a blank.
class DecimalFiller {
 public:
  explicit DecimalFiller(std::string_view digits) : digits_(digits) {
    last_ = static_cast<int>(digits.size()) - 1;
    while (last_ >= 0 && digits_[last_] == '0') --last_;
  }
  void Fill(TextWriter& w, char placeholder) {
    int at = seen_++;
    if (at <= last_) {
      w.Put(digits_[at]);
    } else if (placeholder == '0') {
      w.Put('0');
    } else if (placeholder == '?') {
      w.Put(' ');
    }
  }

 private:
  std::string_view digits_;
  int last_;
  int seen_ = 0;
};

// Left-aligned digits for a denominator.
class LeftFiller {
 public:
  explicit LeftFiller(std::string_view digits) : digits_(digits) {}
  void Fill(TextWriter& w, char placeholder) {
    int at = seen_++;
    if (at < static_cast<int>(digits_.size())) {
      w.Put(digits_[at]);
    } else if (placeholder == '?') {
      w.Put(' ');
    }
  }
  // Digits left over after the last placeholder.
  void Finish(TextWriter& w) {
    for (size_t at = static_cast<size_t>(seen_); at < digits_.size(); ++at) w.Put(digits_[at]);
  }

 private:
  std::string_view digits_;
  int seen_ = 0;
};

std::string_view Digits(char* buf, unsigned long long value) {
  auto r = std::to_chars(buf, buf + 24, value);
  return std::string_view(buf, static_cast<size_t>(r.ptr - buf));
}

// Splits a fixed-notation text at its point; a zero integer part gives no integer digits.
void SplitFixed(std::string_view fixed, std::string_view& whole, std::string_view& fraction) {
  size_t point = fixed.find('.');
  whole = fixed.substr(0, point);
  fraction = point == std::string_view::npos ? std::string_view() : fixed.substr(point + 1);
  size_t nonZero = whole.find_first_not_of('0');
  whole = nonZero == std::string_view::npos ? std::string_view() : whole.substr(nonZero);
}

bool AllZero(std::string_view a, std::string_view b) {
  return a.find_first_not_of('0') == std::string_view::npos &&
         b.find_first_not_of('0') == std::string_view::npos;
}

// A magnitude as its first 15 significant digits: 0.d1d2... times 10 to the power x10 + 1. Fifteen
// digits is what a double holds for certain, so rounding on them gives 1.005 -> "1.01" and
// 2.5 -> "3" the way the user reads the value, not the way binary ties fall.
struct Decimal {
  char d[16];
  int n;    // digits in d; 0 for zero
  int x10;  // the power of ten of the first digit
};

Decimal ToDecimal(double magnitude) {
  Decimal dec{};
  // Callers pass finite values; anything else reads as zero rather than past the buffer.
  if (magnitude == 0 || !std::isfinite(magnitude)) return dec;
  char buf[32];
  auto r = std::to_chars(buf, buf + sizeof buf, magnitude, std::chars_format::scientific, 14);
  std::string_view text(buf, static_cast<size_t>(r.ptr - buf));
  size_t e = text.find('e');
  for (size_t k = 0; k < e; ++k) {
    if (text[k] != '.') dec.d[dec.n++] = text[k];
  }
  std::from_chars(text.data() + e + 1 + (text[e + 1] == '+'), text.data() + text.size(), dec.x10);
  while (dec.n > 0 && dec.d[dec.n - 1] == '0') --dec.n;
  return dec;
}

// Keeps `keep` significant digits, rounding half up.
void RoundTo(Decimal& dec, int keep) {
  if (keep >= dec.n) return;
  if (keep < 0) {
    dec.n = 0;
    return;
  }
  bool up = dec.d[keep] >= '5';
  dec.n = keep;
  if (!up) {
    while (dec.n > 0 && dec.d[dec.n - 1] == '0') --dec.n;
    return;
  }
  int k = keep - 1;
  while (k >= 0 && dec.d[k] == '9') --k;
  if (k < 0) {  // 999 became 1000
    dec.d[0] = '1';
    dec.n = 1;
    ++dec.x10;
    return;
  }
  ++dec.d[k];
  dec.n = k + 1;
}

// The digits of a rounded decimal around its point: `whole` without leading zeros, `fraction`
// exactly `decimals` long.
void Place(const Decimal& dec, int decimals, char* buf, std::string_view& whole,
           std::string_view& fraction) {
  size_t at = 0;
  if (dec.n > 0) {
    for (int i = 0; i <= dec.x10; ++i) buf[at++] = i < dec.n ? dec.d[i] : '0';
  }
  whole = std::string_view(buf, at);
  size_t start = at;
  for (int j = 0; j < decimals; ++j) {
    int index = dec.x10 + 1 + j;
    buf[at++] = (dec.n > 0 && index >= 0 && index < dec.n) ? dec.d[index] : '0';
  }
  fraction = std::string_view(buf + start, at - start);
}

bool FormatSectionNumber(double x, const CompiledFormat& f, int sectionIndex, TextWriter& w,
                         const LocaleSettings* settings) {
  const FormatSection& s = f.sections[sectionIndex];
  if (s.kinds & item::kDateTokens) return false;
  const int end = s.first + s.count;
  double value = sectionIndex == 0 ? x : std::fabs(x);
  for (int k = 0; k < s.percentCount; ++k) value *= 100;
  for (int k = 0; k < s.thousandsScale; ++k) value /= 1000;
  bool negative = value < 0;
  double magnitude = std::fabs(value);
  if (!std::isfinite(magnitude)) return false;

  if (s.kinds & item::kGeneral) {
    for (int at = s.first; at < end; ++at) {
      const FormatItem& it = f.items[at];
      if (it.kind == item::kGeneral) {
        char general[32];
        size_t n = NumberToGeneral(value, general, settings);
        w.Put(std::string_view(general, n));
      } else if (it.kind & (item::kLiteral | item::kDateSeparator | item::kTimeSeparator)) {
        w.Put(it.ch);
      } else if (it.kind == item::kPercent) {
        w.Put('%');
      } else if (it.kind == item::kBlank) {
        w.Put(' ');
      }
    }
    return true;
  }

  char digitBuf[kMaxDecimals + 400];
  std::string_view whole, fraction;
  int exponent = 0;
  bool hasExponent = (s.kinds & item::kExponent) != 0;
  bool hasFraction = s.barAt >= 0;
  int fixedPower = 0;
  bool fixedExponent = hasExponent && FixedExponent(f, s, fixedPower);
  int decimals = s.decimalDigits > kMaxDecimals ? kMaxDecimals : s.decimalDigits;
  int64_t num = 0, den = 1;
  char numBuf[24], denBuf[24], wholeBuf[400];

  if (hasExponent && fixedExponent) {
    int power = s.exponentSign == '-' ? -fixedPower : fixedPower;
    // A fixed exponent far from the value's own leaves no double to show ("0e-488" of 5).
    double scaled = magnitude / std::pow(10.0, power);
    if (!std::isfinite(scaled)) return false;
    Decimal dec = ToDecimal(scaled);
    RoundTo(dec, dec.x10 + 1 + decimals);
    Place(dec, decimals, digitBuf, whole, fraction);
  } else if (hasExponent) {
    int integerDigits = s.integerDigits < 1 ? 1 : s.integerDigits;
    bool engineering = false;
    for (int at = s.first; at < end; ++at) {
      if (f.items[at].kind == item::kDigit && f.items[at].ch == '#' &&
          (s.pointAt < 0 || at < s.pointAt)) {
        engineering = integerDigits > 1;
        break;
      }
    }
    Decimal dec = ToDecimal(magnitude);
    // Engineering forms take exponents in steps of the integer placeholders, so the digits
    // before the point depend on the exponent, which rounding may raise by one.
    int leading = integerDigits;
    for (int pass = 0; pass < 2; ++pass) {
      Decimal rounded = dec;
      RoundTo(rounded, leading + decimals);
      int x10 = rounded.x10;
      int want = integerDigits;
      if (rounded.n == 0) {
        exponent = 0;
      } else if (engineering) {
        int q = x10 >= 0 ? x10 / integerDigits : -((-x10 + integerDigits - 1) / integerDigits);
        exponent = q * integerDigits;
        want = x10 - exponent + 1;
      } else {
        exponent = x10 - (integerDigits - 1);
      }
      if (want == leading || pass == 1) {
        rounded.x10 = leading - 1;  // the mantissa: `leading` digits before the point
        Place(rounded, decimals, digitBuf, whole, fraction);
        size_t nonZero = whole.find_first_not_of('0');
        whole = nonZero == std::string_view::npos ? std::string_view() : whole.substr(nonZero);
        break;
      }
      leading = want;
    }
  } else if (hasFraction) {
    double whole64 = s.integerDigits > 0 ? std::floor(magnitude) : 0;
    double part = magnitude - whole64;
    if (s.fixedDenominator > 0) {
      den = s.fixedDenominator;
      num = static_cast<int64_t>(std::llround(part * static_cast<double>(den)));
    } else {
      int digits =
          s.denominatorDigits < 1 ? 1 : (s.denominatorDigits > 9 ? 9 : s.denominatorDigits);
      int64_t maxDen = 1;
      for (int k = 0; k < digits; ++k) maxDen *= 10;
      BestFraction(part, maxDen - 1, num, den);
    }
    if (s.integerDigits > 0 && num == den) {
      whole64 += 1;
      num = 0;
    }
    auto r =
        std::to_chars(wholeBuf, wholeBuf + sizeof wholeBuf, whole64, std::chars_format::fixed, 0);
    SplitFixed(std::string_view(wholeBuf, static_cast<size_t>(r.ptr - wholeBuf)), whole, fraction);
    if (num == 0 && whole.empty()) negative = false;
  } else {
    Decimal dec = ToDecimal(magnitude);
    RoundTo(dec, dec.x10 + 1 + decimals);
    Place(dec, decimals, digitBuf, whole, fraction);
  }
  // A value that rounds to zero shows no sign.
  if (!hasFraction && AllZero(whole, fraction)) negative = false;
  if (negative) w.Put('-');

  char group = settings != nullptr ? settings->thousandSeparator : genericLocale.thousandSeparator;
  DigitFiller integer(whole, s.integerDigits, s.grouping, group);
  DecimalFiller decimalPart(fraction);
  std::string_view numText =
      hasFraction ? Digits(numBuf, static_cast<unsigned long long>(num)) : std::string_view();
  std::string_view denText =
      hasFraction ? Digits(denBuf, static_cast<unsigned long long>(den)) : std::string_view();
  bool blankFraction = hasFraction && num == 0 && s.integerDigits > 0;
  bool zeroWhole = hasFraction && whole.empty() && num == 0;
  DigitFiller numerator(numText, s.numeratorDigits, false, group);
  LeftFiller denominator(denText);
  char expBuf[8];
  bool expNegative = exponent < 0;
  std::string_view expText =
      Digits(expBuf, static_cast<unsigned long long>(expNegative ? -exponent : exponent));
  DigitFiller exponentDigits(expText, s.exponentDigits, false, group);

  enum Part { kInteger, kDecimal, kNumerator, kDenominator, kExponentPart } part = kInteger;
  bool integerDone = false;
  for (int at = s.first; at < end; ++at) {
    const FormatItem& it = f.items[at];
    if (at == s.numeratorAt) part = kNumerator;
    switch (it.kind) {
      case item::kDigit:
        if (part == kInteger) {
          if (zeroWhole && !integerDone && it.ch != '?') {
            // A zero value still shows its integer zero in a fraction format.
            integer.Fill(w, '0');
          } else {
            integer.Fill(w, it.ch);
          }
        } else if (part == kDecimal) {
          decimalPart.Fill(w, it.ch);
        } else if (part == kNumerator) {
          if (blankFraction) {
            if (it.ch == '?') w.Put(' ');
          } else {
            numerator.Fill(w, it.ch);
          }
        } else if (part == kDenominator) {
          if (blankFraction) {
            if (it.ch == '?') w.Put(' ');
          } else {
            denominator.Fill(w, it.ch);
          }
        } else {
          exponentDigits.Fill(w, it.ch);
        }
        break;
      case item::kPoint:
        integerDone = true;
        part = kDecimal;
        w.Put(it.ch);
        break;
      case item::kBar:
        integerDone = true;
        part = kDenominator;
        w.Put(blankFraction ? ' ' : '/');
        if (s.fixedDenominator > 0 && !blankFraction) w.Put(denText);
        if (s.fixedDenominator > 0 && blankFraction)
          w.Repeat(' ', static_cast<int>(denText.size()));
        break;
      case item::kExponent:
        integerDone = true;
        part = kExponentPart;
        w.Put(it.ch);
        if (fixedExponent) {
          w.Put(s.exponentSign == '-' ? '-' : '+');
        } else if (expNegative) {
          w.Put('-');
        } else if (s.exponentSign == '+') {
          w.Put('+');
        }
        break;
      case item::kThousands:
        break;  // grouping and scaling were applied to the digits
      case item::kPercent:
        w.Put('%');
        break;
      case item::kBlank:
        w.Put(' ');
        break;
      case item::kFill:
      case item::kText:
        break;
      default:
        w.Put(it.ch);
        break;
    }
  }
  if (part == kDenominator && !blankFraction && s.fixedDenominator == 0) denominator.Finish(w);
  return true;
}

}  // namespace

bool FormatNumber(double x, const CompiledFormat& format, char* out, size_t* length,
                  const LocaleSettings* settings, FormatColour* colour) {
  TextWriter w(out, kDisplayTextMax);
  if (length != nullptr) *length = 0;
  if (format.sectionCount == 0 || format.overflow) return false;
  int section = ChooseSection(format, x);
  if (section < 0) return false;
  if (!FormatSectionNumber(x, format, section, w, settings)) return false;
  if (colour != nullptr) {
    colour->set = false;
    const FormatSection& s = format.sections[section];
    for (int b = 0; b < s.bracketCount; ++b) {
      if (s.brackets[b].type == bracket::kColour) {
        colour->set = true;
        colour->colour = s.brackets[b].colour;
        break;
      }
    }
  }
  if (length != nullptr) *length = w.length();
  return true;
}

bool FormatNumber(double x, std::string_view formatText, char* out, size_t* length,
                  const LocaleSettings* settings, FormatColour* colour) {
  auto compiled = std::make_unique<CompiledFormat>();
  if (!ParseFormatString(formatText, *compiled, settings)) {
    out[0] = '\0';
    if (length != nullptr) *length = 0;
    return false;
  }
  return FormatNumber(x, *compiled, out, length, settings, colour);
}

std::string FormatNumber(double x, std::string_view formatText, const LocaleSettings* settings) {
  char buf[kDisplayTextMax];
  size_t n = 0;
  if (!FormatNumber(x, formatText, buf, &n, settings)) return NumberToGeneral(x, settings);
  return std::string(buf, n);
}

}  // namespace kelpdex
