#include "format/parse_number.h"

#include <charconv>
#include <cmath>
#include <cstring>

#include "text/code_page.h"

namespace kelpdex {

namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// One left-to-right pass; `mask` says which parts may still come.
class NumberScanner {
 public:
  NumberScanner(std::string_view text, const LocaleSettings& settings)
      : text_(text), settings_(settings) {
    currency_ = std::string_view(settings.currencySymbol,
                                 strnlen(settings.currencySymbol, sizeof settings.currencySymbol));
  }

  NumberParse Scan(double& value, NumberStyle& formatOut) {
    if (!ScanText()) return NumberParse::kNotANumber;
    // The digits in the plain notation from_chars reads.
    char number[kMaxNumberText + 32];
    size_t n = 0;
    auto put = [&](std::string_view part) {
      std::memcpy(number + n, part.data(), part.size());
      n += part.size();
    };
    put(integerLength_ == 0 ? std::string_view("0") : std::string_view(integer_, integerLength_));
    if (decimalLength_ > 0) {
      number[n++] = '.';
      put(std::string_view(decimals_, decimalLength_));
    }
    if (exponentLength_ > 0) {
      number[n++] = 'e';
      if (exponentNegative_) number[n++] = '-';
      put(std::string_view(exponent_, exponentLength_));
    }
    double x = 0;
    auto r = std::from_chars(number, number + n, x);
    if (r.ec == std::errc::result_out_of_range) return NumberParse::kOutOfRange;
    if (r.ec != std::errc() || r.ptr != number + n) return NumberParse::kNotANumber;
    if (fraction_) {
      double num = 0, den = 0;
      std::from_chars(numerator_.data(), numerator_.data() + numerator_.size(), num);
      std::from_chars(denominator_.data(), denominator_.data() + denominator_.size(), den);
      if (den == 0) return NumberParse::kNotANumber;
      x += num / den;
    }
    if (percent_) x /= 100;
    if (negative_ || bracket_) x = -x;
    if (!std::isfinite(x)) return NumberParse::kOutOfRange;
    value = x;
    formatOut = Style();
    return NumberParse::kNumber;
  }

 private:
  bool ScanText() {
    size_t i = 0;
    SkipBlanks(i);
    // In front of the number: a sign, a bracket, a percent, the currency, in any order, each once.
    while (i < text_.size() && !IsDigit(text_[i]) && text_[i] != settings_.decimalSeparator) {
      char c = text_[i];
      if ((c == '+' || c == '-') && !signed_ && !bracket_) {
        signed_ = true;
        negative_ = c == '-';
        ++i;
      } else if (c == '(' && !bracket_ && !signed_) {
        bracket_ = true;
        ++i;
      } else if (c == '%' && !percent_) {
        percent_ = true;
        ++i;
      } else if (!currency_.empty() && currencyAt_ == 0 &&
                 text::StartsWithNoCase(text_.substr(i), currency_)) {
        i += currency_.size();
        currencyAt_ = 1;
        if (i < text_.size() && text_[i] == ' ') currencyBlank_ = true;
      } else {
        return false;
      }
      SkipBlanks(i);
    }
    if (!ScanDigits(i)) return false;
    // Behind the number: the closing bracket, a percent, the currency.
    SkipBlanks(i);
    while (i < text_.size()) {
      char c = text_[i];
      if (c == ')' && bracket_ && !closed_) {
        closed_ = true;
        ++i;
      } else if (c == '%' && !percent_) {
        percent_ = true;
        ++i;
      } else if (!currency_.empty() && currencyAt_ == 0 &&
                 text::StartsWithNoCase(text_.substr(i), currency_)) {
        currencyBlank_ = i > 0 && text_[i - 1] == ' ';
        currencyAt_ = 2;
        i += currency_.size();
      } else {
        return false;
      }
      SkipBlanks(i);
    }
    if (bracket_ != closed_) return false;
    // One notation decides the format; a percent of money has none.
    return !(percent_ && currencyAt_ != 0);
  }

  void SkipBlanks(size_t& i) {
    while (i < text_.size() && text_[i] == ' ') ++i;
  }

  size_t DigitRun(size_t i) const {
    size_t j = i;
    while (j < text_.size() && IsDigit(text_[j])) ++j;
    return j - i;
  }

  bool ScanDigits(size_t& i) {
    // The integer part, with groups of three behind each thousands separator.
    int groupDigits = -1;  // digits since the last separator; -1 before any
    while (i < text_.size()) {
      char c = text_[i];
      if (IsDigit(c)) {
        if (groupDigits >= 0 && ++groupDigits > 3) return false;
        integer_[integerLength_++] = c;
        ++i;
      } else if (c == settings_.thousandSeparator && integerLength_ > 0 &&
                 (groupDigits < 0 ? integerLength_ <= 3 : groupDigits == 3) &&
                 i + 1 < text_.size() && IsDigit(text_[i + 1])) {
        grouped_ = true;
        groupDigits = 0;
        ++i;
      } else {
        break;
      }
    }
    // A group must be whole, so "1,5" is not read as fifteen where "," groups.
    if (grouped_ && groupDigits != 3) return false;
    if (i < text_.size() && text_[i] == settings_.decimalSeparator) {
      ++i;
      size_t run = DigitRun(i);
      std::memcpy(decimals_, text_.data() + i, run);
      decimalLength_ = run;
      i += run;
      if (integerLength_ == 0 && run == 0) return false;
    } else if (integerLength_ == 0) {
      return false;
    }
    if (i < text_.size() && (text_[i] == 'E' || text_[i] == 'e')) return ScanExponent(i);
    if (grouped_ || decimalLength_ > 0 || i >= text_.size()) return true;
    // "4/5" or "10 4/5": a fraction, whole part optional.
    if (text_[i] == '/') {
      numerator_ = std::string_view(integer_, integerLength_);
      integerLength_ = 0;
      return ScanDenominator(++i);
    }
    if (text_[i] == ' ') {
      size_t j = i;
      SkipBlanks(j);
      size_t run = DigitRun(j);
      if (run > 0 && j + run < text_.size() && text_[j + run] == '/') {
        numerator_ = text_.substr(j, run);
        i = j + run + 1;
        return ScanDenominator(i);
      }
    }
    return true;
  }

  bool ScanDenominator(size_t& i) {
    size_t run = DigitRun(i);
    if (run == 0) return false;
    denominator_ = text_.substr(i, run);
    i += run;
    fraction_ = true;
    return true;
  }

  bool ScanExponent(size_t& i) {
    ++i;
    SkipBlanks(i);
    if (i < text_.size() && (text_[i] == '+' || text_[i] == '-')) {
      exponentNegative_ = text_[i] == '-';
      ++i;
    }
    size_t run = DigitRun(i);
    if (run == 0 || run > 8) return false;
    std::memcpy(exponent_, text_.data() + i, run);
    exponentLength_ = run;
    i += run;
    return true;
  }

  NumberStyle Style() const {
    NumberStyle s;
    uint8_t decimals = static_cast<uint8_t>(decimalLength_ > 14 ? 14 : decimalLength_);
    if (currencyAt_ != 0) {
      s.kind = format_kind::kCurrency;
      std::memcpy(s.symbol, currency_.data(),
                  currency_.size() < sizeof s.symbol ? currency_.size() : sizeof s.symbol - 1);
      s.symbolPosition =
          static_cast<uint8_t>((currencyAt_ == 1 ? 0 : 2) + (currencyBlank_ ? 1 : 0));
      s.decimalDigits = decimals;
      s.fixedDecimals = true;
      s.negative = bracket_ ? negative::kBrackets : negative::kMinus;
    } else if (percent_) {
      s.kind = format_kind::kPercentage;
      s.fixedDecimals = true;
      s.decimalDigits = decimals;
    } else if (fraction_) {
      s.kind = format_kind::kFraction;
      s.denominatorDigits = static_cast<uint8_t>(denominator_.size() > 9 ? 9 : denominator_.size());
    } else if (exponentLength_ > 0) {
      s.kind = format_kind::kScientific;
      s.fixedDecimals = true;
      s.decimalDigits = decimals;
    } else if (grouped_ || bracket_) {
      s.kind = format_kind::kGeneral;
      s.groupDigits = grouped_;
      s.fixedDecimals = true;
      s.decimalDigits = decimals;
      s.negative = bracket_ ? negative::kBrackets : negative::kMinus;
    }
    return s;
  }

  std::string_view text_;
  const LocaleSettings& settings_;
  std::string_view currency_;
  char integer_[kMaxNumberText];
  size_t integerLength_ = 0;
  char decimals_[kMaxNumberText];
  size_t decimalLength_ = 0;
  char exponent_[8];
  size_t exponentLength_ = 0;
  bool exponentNegative_ = false;
  std::string_view numerator_, denominator_;
  bool fraction_ = false;
  bool grouped_ = false;
  bool signed_ = false;
  bool negative_ = false;
  bool bracket_ = false;
  bool closed_ = false;
  bool percent_ = false;
  int currencyAt_ = 0;  // 1 in front, 2 behind
  bool currencyBlank_ = false;
};

}  // namespace

NumberParse ParseNumberText(std::string_view text, double& value, NumberStyle& formatOut,
                            const LocaleSettings* settings) {
  if (text.size() > kMaxNumberText) return NumberParse::kNotANumber;
  NumberScanner scanner(text, settings != nullptr ? *settings : genericLocale);
  return scanner.Scan(value, formatOut);
}

}  // namespace kelpdex
