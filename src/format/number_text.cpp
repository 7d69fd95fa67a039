#include "format/number_text.h"

#include <charconv>
#include <cmath>
#include <cstring>

namespace kelpdex {

namespace {

size_t WriteFixed(double x, int precision, char* out, size_t size) {
  auto r = std::to_chars(out, out + size, x, std::chars_format::fixed, precision);
  return r.ec == std::errc() ? static_cast<size_t>(r.ptr - out) : 0;
}

// For a well-formed number that does not fit a double: +1 when it is too large, -1 too small.
int OverflowDirection(std::string_view number) {
  size_t e = number.find('e');
  long exponent = 0;
  if (e != std::string_view::npos) {
    std::from_chars(number.data() + e + 1, number.data() + number.size(), exponent);
  }
  std::string_view mantissa = number.substr(0, e);
  if (!mantissa.empty() && mantissa[0] == '-') mantissa.remove_prefix(1);
  size_t point = mantissa.find('.');
  std::string_view whole = mantissa.substr(0, point);
  size_t firstDigit = whole.find_first_not_of('0');
  if (firstDigit != std::string_view::npos) {
    return static_cast<long>(whole.size() - firstDigit) - 1 + exponent > 0 ? 1 : -1;
  }
  return -1;
}

}  // namespace

size_t NumberToGeneral(double x, char* out, const LocaleSettings* settings) {
  // Whole numbers, the common case of counts and codes, are their digits: the formatted way
  // below costs a multiple of that, which "&" with a number pays for every record.
  if (x == std::trunc(x) && std::fabs(x) <= 999999999999999.0 && !(x == 0 && std::signbit(x))) {
    auto r = std::to_chars(out, out + 31, static_cast<long long>(x));
    *r.ptr = '\0';
    return static_cast<size_t>(r.ptr - out);
  }
  char buf[400];
  size_t n = 0;
  double magnitude = std::fabs(x);
  if (magnitude <= 999999999999999.0 && (x == 0 || magnitude >= 1e-14)) {
    // The integer part's length decides how many decimals fit in 15 digits.
    size_t integerLength = WriteFixed(x, 0, buf, sizeof buf);
    int precision = (x < 0 ? 16 : 15) - static_cast<int>(integerLength);
    n = WriteFixed(x, precision < 0 ? 0 : precision, buf, sizeof buf);
  } else {
    auto r = std::to_chars(buf, buf + sizeof buf, x, std::chars_format::scientific, 0);
    int length = static_cast<int>(r.ptr - buf);
    int precision = 20 - length + (x < 0 ? 1 : 0);
    // "%.*lg" counts significant digits; to_chars' general format does the same.
    r = std::to_chars(buf, buf + sizeof buf, x, std::chars_format::general,
                      precision < 1 ? 1 : precision);
    n = static_cast<size_t>(r.ptr - buf);
  }
  buf[n] = '\0';
  if (std::strchr(buf, '.') != nullptr && std::strpbrk(buf, "eEgG") == nullptr) {
    while (n > 0 && buf[n - 1] == '0') --n;
    if (n > 0 && buf[n - 1] == '.') --n;
  }
  if (n > 31) n = 31;
  std::memcpy(out, buf, n);
  out[n] = '\0';
  if (settings != nullptr) {
    char* dot = std::strchr(out, '.');
    if (dot != nullptr) *dot = settings->decimalSeparator;
  }
  return n;
}

std::string NumberToGeneral(double x, const LocaleSettings* settings) {
  char buf[32];
  size_t n = NumberToGeneral(x, buf, settings);
  return std::string(buf, n);
}

size_t ScanNumber(std::string_view text, char decimal, bool allowSign, double& value) {
  char scratch[400];
  size_t i = 0;
  size_t w = 0;
  auto isDigit = [&](size_t at) { return at < text.size() && text[at] >= '0' && text[at] <= '9'; };
  if (allowSign && i < text.size() && text[i] == '-') scratch[w++] = text[i++];
  size_t digits = 0;
  while (isDigit(i) && w < sizeof scratch - 8) {
    scratch[w++] = text[i++];
    ++digits;
  }
  if (i < text.size() && text[i] == decimal) {
    scratch[w++] = '.';
    ++i;
    while (isDigit(i) && w < sizeof scratch - 8) {
      scratch[w++] = text[i++];
      ++digits;
    }
  }
  if (digits == 0) return 0;
  if (i < text.size() && (text[i] == 'E' || text[i] == 'e')) {
    size_t j = i + 1;
    char sign = 0;
    if (j < text.size() && (text[j] == '+' || text[j] == '-')) sign = text[j++];
    if (!isDigit(j)) return 0;
    scratch[w++] = 'e';
    if (sign == '-') scratch[w++] = '-';
    while (isDigit(j) && w < sizeof scratch - 1) scratch[w++] = text[j++];
    i = j;
  }
  auto r = std::from_chars(scratch, scratch + w, value);
  if (r.ec == std::errc::result_out_of_range) {
    // Out of range still reads as a value, so that the caller's range test can reject it: an
    // overflow as infinity, an underflow as zero.
    value = OverflowDirection(std::string_view(scratch, w)) > 0 ? HUGE_VAL : 0.0;
    if (scratch[0] == '-') value = -value;
  } else if (r.ec != std::errc()) {
    return 0;
  }
  return i;
}

bool TextToNumber(std::string_view text, char decimal, double& value) {
  size_t start = text.find_first_not_of(' ');
  if (start == std::string_view::npos) return false;
  size_t used = ScanNumber(text.substr(start), decimal, true, value);
  if (used == 0) return false;
  size_t rest = start + used;
  while (rest < text.size() && text[rest] == ' ') ++rest;
  return rest == text.size();
}

}  // namespace kelpdex
