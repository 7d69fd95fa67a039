// Handlers of the engineering family: complex numbers written as text ("3 + 4i"), conversions
// between bases in ten-digit two's complement, error and Bessel functions, and the two
// comparisons delta and getStep.
#pragma once

#include <cstddef>
#include <string_view>

#include "formula/formula_engine.h"

namespace kelpdex {

// Reads "x + yi", "x - yj", "x", "yi" or "i": an optional "-", a number, then an "i" or "j"
// that makes it the imaginary part, or a sign and the imaginary part with its "i" or "j" (alone,
// "i" is 1). Blanks may stand between the pieces. `suffix` receives 'i', 'j', or 0 when the text
// wrote none. False for any other text, or a part that is no valid number.
bool ParseComplexArg(std::string_view text, double& re, double& im, char* suffix = nullptr);

// Room for a complex number's text: two "General" numbers and the punctuation between them.
constexpr size_t kComplexTextSize = 72;
// Writes "x + yi" (always both parts, the sign of the imaginary one between them) and a null;
// returns the length.
size_t FormatComplex(double re, double im, char suffix, char* out);

namespace fn {

void Complex(FormulaEngine& e);
void ImAbs(FormulaEngine& e);
void Imaginary(FormulaEngine& e);
void ImArgument(FormulaEngine& e);
void ImConjugate(FormulaEngine& e);
void ImCos(FormulaEngine& e);
void ImDiv(FormulaEngine& e);
void ImExp(FormulaEngine& e);
void ImLn(FormulaEngine& e);
void ImLog10(FormulaEngine& e);
void ImLog2(FormulaEngine& e);
void ImPower(FormulaEngine& e);
void ImProduct(FormulaEngine& e);
void ImReal(FormulaEngine& e);
void ImSin(FormulaEngine& e);
void ImSqrt(FormulaEngine& e);
void ImSub(FormulaEngine& e);
void ImSum(FormulaEngine& e);

void Bin2Dec(FormulaEngine& e);
void Bin2Hex(FormulaEngine& e);
void Bin2Oct(FormulaEngine& e);
void Dec2Bin(FormulaEngine& e);
void Dec2Hex(FormulaEngine& e);
void Dec2Oct(FormulaEngine& e);
void Hex2Bin(FormulaEngine& e);
void Hex2Dec(FormulaEngine& e);
void Hex2Oct(FormulaEngine& e);
void Oct2Bin(FormulaEngine& e);
void Oct2Dec(FormulaEngine& e);
void Oct2Hex(FormulaEngine& e);

void BesselJ(FormulaEngine& e);
void BesselY(FormulaEngine& e);
void Delta(FormulaEngine& e);
void Erf(FormulaEngine& e);
void Erfc(FormulaEngine& e);
void GetStep(FormulaEngine& e);

}  // namespace fn
}  // namespace kelpdex
