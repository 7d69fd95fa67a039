// Conversions between binary, octal, decimal and hexadecimal. Texts have at most ten digits, and
// a ten-digit text whose leading digit has its top bit set is negative in two's complement.
#include <cmath>
#include <cstdint>

#include "functions/arguments.h"
#include "functions/engineering_functions.h"
#include "functions/scalar_call.h"

namespace kelpdex::fn {

namespace {

constexpr int kDigits = 10;

// radix^10, the modulus of the two's complement.
int64_t Modulus(int radix) {
  int64_t m = 1;
  for (int i = 0; i < kDigits; ++i) m *= radix;
  return m;
}

// The values a result in `radix` can hold: binary -512..511, octal -2^29..2^29-1, hexadecimal
// -2^39..2^39-1.
bool Fits(int64_t value, int radix) {
  int64_t half = Modulus(radix) / 2;
  return value >= -half && value < half;
}

int DigitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return 99;
}

// The value of a text in `radix`; false for more than ten characters or a digit outside it. An
// empty text is 0.
bool ParseBase(std::string_view text, int radix, int64_t& value) {
  if (text.size() > kDigits) return false;
  value = 0;
  for (char c : text) {
    int d = DigitValue(c);
    if (d >= radix) return false;
    value = value * radix + d;
  }
  if (text.size() == kDigits && value >= Modulus(radix) / 2) value -= Modulus(radix);
  return true;
}

// Writes `value` in `radix`: a negative one in all ten digits, a positive one in the digits it
// needs, padded with zeros to `width` when one is given. A value that needs more digits than the
// width, or that the base cannot hold, is "#NUM!".
uint8_t WriteBase(int64_t value, int radix, bool widthGiven, int32_t width, char* out,
                  size_t& length) {
  if (!Fits(value, radix) || (widthGiven && (width < 0 || width > kDigits))) return ferr::kNum;
  uint64_t v = static_cast<uint64_t>(value < 0 ? value + Modulus(radix) : value);
  char digits[kDigits];
  int n = 0;
  do {
    digits[n++] = "0123456789ABCDEF"[v % static_cast<uint64_t>(radix)];
    v /= static_cast<uint64_t>(radix);
  } while (v != 0);
  if (value < 0) {
    while (n < kDigits) digits[n++] = radix == 2 ? '1' : (radix == 8 ? '7' : 'F');
  }
  if (widthGiven && width > 0 && n > width) return ferr::kNum;
  int total = widthGiven && width > n ? width : n;
  length = 0;
  for (int i = total; i > n; --i) out[length++] = '0';
  while (n > 0) out[length++] = digits[--n];
  return 0;
}

// A text in one base to a text in another, with the optional width.
void RunTextToText(FormulaEngine& e, int from, int to) {
  ScalarCall call;
  if (!ReadScalarCall(e, "ti", 1, call)) return;
  uint8_t error = call.error;
  int64_t value = 0;
  if (error == 0 && !ParseBase(call.text[0], from, value)) error = ferr::kNum;
  char out[kDigits];
  size_t length = 0;
  bool widthGiven = call.count == 2 && call.given[1];
  if (error == 0) error = WriteBase(value, to, widthGiven, call.integer[1], out, length);
  SetTextResult(e, call.slot, std::string_view(out, length), error);
}

// A text in one base to its number. hex2dec and oct2dec take a width that they do not use.
void RunTextToNumber(FormulaEngine& e, int from, const char* kinds) {
  ScalarCall call;
  if (!ReadScalarCall(e, kinds, 1, call)) return;
  uint8_t error = call.error;
  int64_t value = 0;
  if (error == 0 && !ParseBase(call.text[0], from, value)) error = ferr::kNum;
  SetNumberResult(e, call.slot, static_cast<double>(value), error);
}

// A number, rounded to a whole one as every whole-number argument is, to a text in `to`.
void RunNumberToText(FormulaEngine& e, int to) {
  ScalarCall call;
  if (!ReadScalarCall(e, "ni", 1, call)) return;
  uint8_t error = call.error;
  double x = RoundHalfAway(call.number[0]);
  if (error == 0 && !(std::fabs(x) < 1e15)) error = ferr::kNum;
  char out[kDigits];
  size_t length = 0;
  bool widthGiven = call.count == 2 && call.given[1];
  if (error == 0) {
    error = WriteBase(static_cast<int64_t>(x), to, widthGiven, call.integer[1], out, length);
  }
  SetTextResult(e, call.slot, std::string_view(out, length), error);
}

}  // namespace

void Bin2Dec(FormulaEngine& e) {
  RunTextToNumber(e, 2, "t");
}
void Oct2Dec(FormulaEngine& e) {
  RunTextToNumber(e, 8, "tn");
}
void Hex2Dec(FormulaEngine& e) {
  RunTextToNumber(e, 16, "tn");
}

void Bin2Oct(FormulaEngine& e) {
  RunTextToText(e, 2, 8);
}
void Bin2Hex(FormulaEngine& e) {
  RunTextToText(e, 2, 16);
}
void Oct2Bin(FormulaEngine& e) {
  RunTextToText(e, 8, 2);
}
void Oct2Hex(FormulaEngine& e) {
  RunTextToText(e, 8, 16);
}
void Hex2Bin(FormulaEngine& e) {
  RunTextToText(e, 16, 2);
}
void Hex2Oct(FormulaEngine& e) {
  RunTextToText(e, 16, 8);
}

void Dec2Bin(FormulaEngine& e) {
  RunNumberToText(e, 2);
}
void Dec2Oct(FormulaEngine& e) {
  RunNumberToText(e, 8);
}
void Dec2Hex(FormulaEngine& e) {
  RunNumberToText(e, 16);
}

}  // namespace kelpdex::fn
