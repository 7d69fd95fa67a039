// Cx numbers held as text: the parser and printer of that text, and the im... handlers.
#include <cmath>
#include <complex>
#include <cstring>

#include "format/number_text.h"
#include "functions/arguments.h"
#include "functions/engineering_functions.h"
#include "functions/scalar_call.h"
#include "store/range_cursor.h"

namespace kelpdex {

namespace {

// Not named Complex: the handler of complex() has that name.
using Cx = std::complex<double>;

void SkipBlanks(std::string_view text, size_t& at) {
  while (at < text.size() && text[at] == ' ') ++at;
}

bool IsUnit(std::string_view text, size_t at) {
  return at < text.size() && (text[at] == 'i' || text[at] == 'j');
}

// The imaginary unit closes the text: only blanks may follow it.
bool EndsAfterUnit(std::string_view text, size_t at, char* suffix) {
  if (!IsUnit(text, at)) return false;
  if (suffix != nullptr) *suffix = text[at];
  ++at;
  SkipBlanks(text, at);
  return at == text.size();
}

}  // namespace

bool ParseComplexArg(std::string_view text, double& re, double& im, char* suffix) {
  if (suffix != nullptr) *suffix = 0;
  size_t at = 0;
  SkipBlanks(text, at);
  double sign = 1;
  if (at < text.size() && text[at] == '-') {
    sign = -1;
    ++at;
  }
  double first = 1;
  size_t used = ScanNumber(text.substr(at), '.', false, first);
  at += used;
  first *= sign;
  if (used > 0) SkipBlanks(text, at);
  if (IsUnit(text, at)) {
    // "yi", or "i" alone for 1.
    if (!EndsAfterUnit(text, at, suffix)) return false;
    re = 0;
    im = first;
    return !IsBadNumber(im);
  }
  if (used == 0) return false;
  if (at == text.size()) {
    re = first;
    im = 0;
    return !IsBadNumber(re);
  }
  if (text[at] != '+' && text[at] != '-') return false;
  double second = text[at] == '-' ? -1 : 1;
  ++at;
  SkipBlanks(text, at);
  double magnitude = 1;
  at += ScanNumber(text.substr(at), '.', false, magnitude);
  SkipBlanks(text, at);
  if (!EndsAfterUnit(text, at, suffix)) return false;
  re = first;
  im = second * magnitude;
  return !IsBadNumber(re) && !IsBadNumber(im);
}

size_t FormatComplex(double re, double im, char suffix, char* out) {
  // A negative zero prints as "-0" in the general form; it is no different from 0 here.
  char real[32], imaginary[32];
  size_t realLength = NumberToGeneral(re == 0 ? 0.0 : re, real);
  size_t imaginaryLength = NumberToGeneral(std::fabs(im), imaginary);
  size_t n = 0;
  std::memcpy(out + n, real, realLength);
  n += realLength;
  out[n++] = ' ';
  out[n++] = im < 0 ? '-' : '+';
  out[n++] = ' ';
  std::memcpy(out + n, imaginary, imaginaryLength);
  n += imaginaryLength;
  out[n++] = suffix;
  out[n] = '\0';
  return n;
}

namespace fn {

namespace {

constexpr double kLn2 = 0.693147180559945309417232121458;
constexpr double kLn10 = 2.30258509299404568401799145468;

void SetComplexResult(FormulaEngine& e, int slot, Cx z, char suffix, uint8_t error) {
  if (error == 0 && (IsBadNumber(z.real()) || IsBadNumber(z.imag()))) error = ferr::kNum;
  char out[kComplexTextSize];
  size_t n = error == 0 ? FormatComplex(z.real(), z.imag(), suffix == 0 ? 'i' : suffix, out) : 0;
  SetTextResult(e, slot, std::string_view(out, n), error);
}

// Reads the complex text argument `k` of a call; "#NUM!" when it does not parse. A 'j' written
// in any argument carries over to the result.
uint8_t ComplexOf(const ScalarCall& call, int k, Cx& z, char& suffix) {
  double re = 0, im = 0;
  char written = 0;
  if (!ParseComplexArg(call.text[k], re, im, &written)) return ferr::kNum;
  z = Cx(re, im);
  if (written == 'j' || suffix == 0) suffix = written;
  return 0;
}

// One complex number in; `f` gives a complex result, or sets an error for a point outside its
// domain.
void RunComplexUnary(FormulaEngine& e, Cx (*f)(Cx z, uint8_t& error)) {
  ScalarCall call;
  if (!ReadScalarCall(e, "t", 1, call)) return;
  Cx z;
  char suffix = 0;
  uint8_t error = call.error != 0 ? call.error : ComplexOf(call, 0, z, suffix);
  Cx result = error == 0 ? f(z, error) : Cx();
  SetComplexResult(e, call.slot, result, suffix, error);
}

// One complex number in, a real number out.
void RunComplexToNumber(FormulaEngine& e, double (*f)(Cx z, uint8_t& error)) {
  ScalarCall call;
  if (!ReadScalarCall(e, "t", 1, call)) return;
  Cx z;
  char suffix = 0;
  uint8_t error = call.error != 0 ? call.error : ComplexOf(call, 0, z, suffix);
  double result = error == 0 ? f(z, error) : 0;
  SetNumberResult(e, call.slot, result, error);
}

void RunComplexBinary(FormulaEngine& e, Cx (*f)(Cx a, Cx b, uint8_t& error)) {
  ScalarCall call;
  if (!ReadScalarCall(e, "tt", 2, call)) return;
  Cx a, b;
  char suffix = 0;
  uint8_t error = call.error;
  if (error == 0) error = ComplexOf(call, 0, a, suffix);
  if (error == 0) error = ComplexOf(call, 1, b, suffix);
  Cx result = error == 0 ? f(a, b, error) : Cx();
  SetComplexResult(e, call.slot, result, suffix, error);
}

Cx LogOf(Cx z, double scale, uint8_t& error) {
  if (z == Cx()) {
    error = ferr::kNum;
    return Cx();
  }
  return std::log(z) / scale;
}

// z^n: whole powers by repeated squaring, so that (2+3i)^3 comes out as -46 + 9i and not with
// the rounding of the polar form; other powers through the polar form.
Cx Power(Cx z, double n, uint8_t& error) {
  if (z == Cx()) {
    if (n <= 0) error = ferr::kNum;
    return Cx();
  }
  if (n == std::trunc(n) && std::fabs(n) < 2147483648.0) {
    auto k = static_cast<int64_t>(std::fabs(n));
    Cx result(1, 0), base = z;
    for (; k > 0; k >>= 1) {  // at most 31 rounds
      if (k & 1) result *= base;
      base *= base;
    }
    return n < 0 ? Cx(1, 0) / result : result;
  }
  return std::polar(std::pow(std::abs(z), n), std::arg(z) * n);
}

// imSum and imProduct: every argument, or every non-empty cell of an array or range, is a
// complex number.
struct Fold {
  Cx value;
  bool product = false;
  char suffix = 0;
  uint8_t error = 0;

  void Add(std::string_view text) {
    double re = 0, im = 0;
    char written = 0;
    if (!ParseComplexArg(text, re, im, &written)) {
      error = LargerError(error, ferr::kNum);
      return;
    }
    if (written == 'j' || suffix == 0) suffix = written;
    Cx z(re, im);
    value = product ? value * z : value + z;
  }
  static void AddCell(void* context, const CellRecord* r) {
    auto* self = static_cast<Fold*>(context);
    uint8_t nibble = cell::ErrorNibble(r);
    char number[32];
    if (nibble != 0) {
      self->error = LargerError(self->error, nibble);
    } else if (cell::IsText(r)) {
      if (!cell::Text(r).empty()) self->Add(cell::Text(r));
    } else if (cell::IsFormula(r) && !cell::CachedString(r).empty()) {
      self->Add(cell::CachedString(r));
    } else {
      double x = cell::IsNumber(r) ? cell::Number(r) : cell::CachedNumber(r);
      self->Add(std::string_view(number, NumberToGeneral(x, number)));
    }
  }
};

void RunFold(FormulaEngine& e, bool product) {
  if (!HasArguments(e, 1)) return;
  int base = e.Operand(e.depth()).argumentBase;
  Fold fold;
  fold.product = product;
  fold.value = product ? Cx(1, 0) : Cx();
  for (int slot = e.depth() - 1; slot >= base; --slot) {
    FormulaValue& v = e.Operand(slot);
    if ((v.kind & kind::kArrayOrRange) != 0) {
      uint8_t error = ForEachCellOf(e, slot, &fold, Fold::AddCell);  // adds to fold.error too
      fold.error = LargerError(fold.error, error);
      continue;
    }
    if (v.kind == kind::kEmpty && v.errorCode == 0) continue;  // an omitted argument
    char buffer[kTextArgSize];
    std::string_view text;
    uint8_t error = GetTextArg(e, slot, buffer, text);
    fold.error = LargerError(fold.error, error);
    if (error == 0 && !text.empty()) fold.Add(text);
  }
  SetComplexResult(e, base, fold.value, fold.suffix, fold.error);
}

}  // namespace

void Complex(FormulaEngine& e) {
  ScalarCall call;
  if (!ReadScalarCall(e, "nnt", 2, call)) return;
  uint8_t error = call.error;
  char suffix = 'i';
  if (error == 0 && call.count == 3 && call.given[2]) {
    // Only the two usual names of the unit are accepted as its suffix.
    if (call.text[2] == "j") {
      suffix = 'j';
    } else if (call.text[2] != "i") {
      error = ferr::kValue;
    }
  }
  SetComplexResult(e, call.slot, Cx(call.number[0], call.number[1]), suffix, error);
}

void ImAbs(FormulaEngine& e) {
  RunComplexToNumber(e, [](Cx z, uint8_t&) { return std::abs(z); });
}
void Imaginary(FormulaEngine& e) {
  RunComplexToNumber(e, [](Cx z, uint8_t&) { return z.imag(); });
}
void ImReal(FormulaEngine& e) {
  RunComplexToNumber(e, [](Cx z, uint8_t&) { return z.real(); });
}
void ImArgument(FormulaEngine& e) {
  RunComplexToNumber(e, [](Cx z, uint8_t& error) {
    // The angle of 0 is undefined.
    if (z == Cx()) error = ferr::kDivZero;
    return std::arg(z);
  });
}

void ImConjugate(FormulaEngine& e) {
  RunComplexUnary(e, [](Cx z, uint8_t&) { return std::conj(z); });
}
void ImCos(FormulaEngine& e) {
  RunComplexUnary(e, [](Cx z, uint8_t&) { return std::cos(z); });
}
void ImSin(FormulaEngine& e) {
  RunComplexUnary(e, [](Cx z, uint8_t&) { return std::sin(z); });
}
void ImExp(FormulaEngine& e) {
  RunComplexUnary(e, [](Cx z, uint8_t&) { return std::exp(z); });
}
void ImSqrt(FormulaEngine& e) {
  RunComplexUnary(e, [](Cx z, uint8_t&) { return std::sqrt(z); });
}
void ImLn(FormulaEngine& e) {
  RunComplexUnary(e, [](Cx z, uint8_t& error) { return LogOf(z, 1, error); });
}
void ImLog10(FormulaEngine& e) {
  RunComplexUnary(e, [](Cx z, uint8_t& error) { return LogOf(z, kLn10, error); });
}
void ImLog2(FormulaEngine& e) {
  RunComplexUnary(e, [](Cx z, uint8_t& error) { return LogOf(z, kLn2, error); });
}

void ImDiv(FormulaEngine& e) {
  RunComplexBinary(e, [](Cx a, Cx b, uint8_t& error) {
    if (b == Cx()) error = ferr::kNum;
    return error == 0 ? a / b : Cx();
  });
}
void ImSub(FormulaEngine& e) {
  RunComplexBinary(e, [](Cx a, Cx b, uint8_t&) { return a - b; });
}

void ImPower(FormulaEngine& e) {
  ScalarCall call;
  if (!ReadScalarCall(e, "tn", 2, call)) return;
  Cx z;
  char suffix = 0;
  uint8_t error = call.error != 0 ? call.error : ComplexOf(call, 0, z, suffix);
  Cx result = error == 0 ? Power(z, call.number[1], error) : Cx();
  SetComplexResult(e, call.slot, result, suffix, error);
}

void ImSum(FormulaEngine& e) {
  RunFold(e, false);
}
void ImProduct(FormulaEngine& e) {
  RunFold(e, true);
}

}  // namespace fn
}  // namespace kelpdex
