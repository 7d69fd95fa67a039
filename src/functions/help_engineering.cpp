// Help entries of the category "engineering". The texts stand as the function picker has always
// shown them, slips included.
#include "functions/help_table.h"

namespace kelpdex {

namespace {

constexpr uint8_t kCategory = help::kEngineering;

const HelpEntry kEntries[] = {
    {HelpCode(kCategory, 2),
     "besselJ",
     {"x", "n"},
     "00",
     "bessellJ(x, n)\r\n"
     "\r\n"
     "Returns the Bessel function of the n-th order for a given value 'x'.\r\n"
     "\r\n"
     "=besselJ(1.9, 2) returns 0.32992572769239\r\n"},
    {HelpCode(kCategory, 2),
     "besselY",
     {"x", "n"},
     "00",
     "besselY(x, n)\r\n"
     "\r\n"
     "Returns the Bessel/Weber function of the n-th order for a given value 'x'.\r\n"
     "\r\n"
     "=besselY(2.5, 1) returns 0.14591813796679\r\n"},
    {HelpCode(kCategory, 1),
     "bin2dec",
     {"n"},
     "0",
     "bin2dec(n)\r\n"
     "\r\n"
     "Converts 'n' representing a binary number to a decimal number. The 'n' argument can contain "
     "up to 10 characters. The most significant bit in 'n' determines its sign. Negative numbers "
     "are represented in two's complement format.\r\n"
     "\r\n"
     "=bin2dec(\"1100100\") returns 100\r\n"
     "=bin2dec(\"1111111111\") returns -1\r\n"},
    {HelpCode(kCategory, 1),
     "bin2hex",
     {"n", "[l]"},
     "00",
     "bin2hex(n, [l])\r\n"
     "\r\n"
     "Converts 'n' representing a binary number to a string representing a hexadecimal number "
     "consisting of 'l' characters. The 'n' argument can contain up to 10 characters. The most "
     "significant bit in 'n' determines its sign. Negative numbers are represented in two's "
     "complement format. The 'l' argument must be in the range [0, 10]. If it's omitted, it's "
     "assumed to be 10.\r\n"
     "\r\n"
     "=bin2hex(11111011, 4) returns \"00FB\"\r\n"
     "=bin2hex(\"1111111111\", ) returns \"FFFFFFFFFF\"\r\n"},
    {HelpCode(kCategory, 1),
     "bin2oct",
     {"n", "[l]"},
     "00",
     "bin2oct(n, [l])\r\n"
     "\r\n"
     "Converts 'n' representing a binary number to a string representing an octal number "
     "consisting of 'l' characters. The 'n' argument can contain up to 10 characters. The most "
     "significant bit in 'n' determines its sign. Negative numbers are represented in two's "
     "complement format. The 'l' argument must be in the range [0, 10]. If it's omitted, it's "
     "assumed to be 10.\r\n"
     "\r\n"
     "=bin2oct(1001, 3) returns \"011\"\r\n"
     "=bin2oct(1111111111, ) returns \"7777777777\"\r\n"},
    {HelpCode(kCategory, 2),
     "complex",
     {"x", "y", "[i]"},
     "000",
     "complex(x, y, [i])\r\n"
     "\r\n"
     "Converts real and imaginary coefficients into a string representing a complex number. The "
     "optional 'i' argument specifies the suffix of the imaginary 'y' coefficient. The default "
     "value of 'i' is 'i'.\r\n"
     "\r\n"
     "=complex(1, 2,) returns \"1 + 2i\"\r\n"
     "=complex(3.5, 4.6, \"j\") returns \"3.5 + 4.6j\"\r\n"},
    {HelpCode(kCategory, 1),
     "dec2bin",
     {"n", "[l]"},
     "00",
     "dec2bin(n, [l])\r\n"
     "\r\n"
     "Converts a given number to a string representing a binary number consisting of 'l' "
     "characters. The 'n' argument must be in the range [-512, 511]. The most significant bit in "
     "'n' determines its sign. Negative numbers are represented in two's complement format. The "
     "'l' argument must be in the range [0, 10]. If it's omitted, it's assumed to be 10.\r\n"
     "\r\n"
     "=dec2bin(9, 4) returns \"1001\"\r\n"
     "=dec2bin(-1,) returns \"1111111111\"\r\n"},
    {HelpCode(kCategory, 1),
     "dec2hex",
     {"n", "[l]"},
     "00",
     "dec2hex(n, [l])\r\n"
     "\r\n"
     "Converts a given number to a string representing a hexadecimal number consisting of 'l' "
     "characters. The most significant bit in 'n' determines its sign. Negative numbers are "
     "represented in two's complement format. The 'l' argument must be in the range [0, 10]. If "
     "it's omitted, it's assumed to be 10.\r\n"
     "\r\n"
     "=dec2hex(100, 4) returns \"064\"\r\n"
     "=dec2hex(-1,) returns \"FFFFFFFFFF\"\r\n"},
    {HelpCode(kCategory, 1),
     "dec2oct",
     {"n", "[l]"},
     "00",
     "dec2oct(n, [l])\r\n"
     "\r\n"
     "Converts a given number to a string representing an octal number consisting of 'l' "
     "characters. The 'number' argument must be in the range [-536870912, 536870911]. The most "
     "significant bit in 'n' determines its sign. Negative numbers are represented in two's "
     "complement format. The 'l' argument must be in the range [0, 10]. If it's omitted, it's "
     "assumed to be 10.\r\n"
     "\r\n"
     "=dec2oct(58, 3) returns \"1001\"\r\n"
     "=dec2oct(-1,) returns \"7777777777\"\r\n"},
    {HelpCode(kCategory, 1),
     "delta",
     {"x", "[y]"},
     "00",
     "delta(x, [y])\r\n"
     "\r\n"
     "Returns 1 if 'x' = 'y', 0 otherwise. If 'y' is omitted, it's assumed to be 0.\r\n"
     "\r\n"
     "=delta(12, 11) returns 0\r\n"
     "=delta(0,) returns 1\r\n"},
    {HelpCode(kCategory, 1),
     "erf",
     {"x1", "[x2]"},
     "00",
     "erf(x1, [x2])\r\n"
     "\r\n"
     "Returns the value of the error function integrated between the specified limits. If the 'x2' "
     "argument is omitted, the integration is performed between 0 and 'x1'.\r\n"
     "\r\n"
     "=erf(0.745, ) returns 0.70792891807065\r\n"},
    {HelpCode(kCategory, 1),
     "erfc",
     {"x"},
     "0",
     "erfc(x)\r\n"
     "\r\n"
     "Returns the value of the complementary error function integrated between x and the "
     "infinity.\r\n"
     "\r\n"
     "=erfc(1) returns 0.15722921001143\r\n"},
    {HelpCode(kCategory, 1),
     "getStep",
     {"x", "[y]"},
     "00",
     "getStep(x, [y])\r\n"
     "\r\n"
     "Returns 1 if x > y, 0 otherwise. The default value of y is 0.\r\n"
     "\r\n"
     "=getStep(1.4,) returns 1\r\n"},
    {HelpCode(kCategory, 1),
     "hex2bin",
     {"n", "[l]"},
     "00",
     "hex2bin(n, [l])\r\n"
     "\r\n"
     "Converts 'n' representing a hexadecimal number to a string representing a binary number "
     "consisting of 'l' characters. The 'n' argument can contain up to 10 characters and it must "
     "be in the range [-512, 511]. The most significant bit in 'n' determines its sign. Negative "
     "numbers are represented in two's complement format. If 'l' is omitted, it's assumed to be "
     "10.\r\n"
     "\r\n"
     "=hex2bin(\"F\", 8) returns \"00001111\"\r\n"
     "=hex2bin(\"FFFFFFFFFF\", ) returns \"1111111111\"\r\n"},
    {HelpCode(kCategory, 1),
     "hex2dec",
     {"n", "[l]"},
     "00",
     "hex2dec(n, [l])\r\n"
     "\r\n"
     "Converts 'n' representing a hexadecimal number to a decimal number. The 'n' argument can "
     "contain up to 10 characters. The most significant bit in 'n' determines its sign. Negative "
     "numbers are represented in two's complement format.\r\n"
     "\r\n"
     "=hex2dec(\"A5\") returns 165\r\n"
     "=hex2dec(\"FFFFFFFFFF\") returns -1\r\n"},
    {HelpCode(kCategory, 1),
     "hex2oct",
     {"n", "[l]"},
     "00",
     "hex2oct(n, [l])\r\n"
     "\r\n"
     "Converts 'n' representing a hexadecimal number to a string representing an octal number "
     "consisting of 'l' characters. The 'n' argument can contain up to 10 characters and must be "
     "in the range [-536870912, 536870911]. The most significant bit in 'n' determines its sign. "
     "Negative numbers are represented in two's complement format. If 'l' is omitted, it's assumed "
     "to be 10.\r\n"
     "\r\n"
     "=hex2oct(\"F\", 3) returns \"017\"\r\n"
     "=hex2oct(\"FFFFFFFFFF\", ) returns \"7777777777\"\r\n"},
    {HelpCode(kCategory, 1),
     "imAbs",
     {"z"},
     "0",
     "imAbs(z)\r\n"
     "\r\n"
     "Returns the absolute value of a given complex number. The 'z' argument represents a complex "
     "number in the form: 'x + yi', x, or 'yi'.\r\n"
     "\r\n"
     "=imAbs(\"5 + 12i\") returns 13\r\n"},
    {HelpCode(kCategory, 1),
     "imaginary",
     {"z"},
     "0",
     "imaginary(z)\r\n"
     "\r\n"
     "Returns the imaginary coefficient of a given imaginary number. The 'z' argument represents a "
     "complex number in the form: 'x + yi', x, or 'yi'.\r\n"
     "\r\n"
     "=imaginary(\"5 + 12i\") returns 12.\r\n"},
    {HelpCode(kCategory, 1),
     "imArgument",
     {"z"},
     "0",
     "imArgument(z)\r\n"
     "\r\n"
     "Returns an angle, such that z = /z/(cos(t) + sin(t)i) The 'z' argument represents a complex "
     "number in the form: 'x + yi', x, or 'yi'.\r\n"
     "\r\n"
     "=imArgument(\"3 + 4i\") returns 0.92727521800161\r\n"},
    {HelpCode(kCategory, 1),
     "imConjugate",
     {"z"},
     "0",
     "imConjugate(z)\r\n"
     "\r\n"
     "Returns the complex conjugate of 'z'. The 'z' argument represents a complex number in the "
     "form: 'x + yi', x, or 'yi'.\r\n"
     "\r\n"
     "=imConjugate(\"3 + 4i\") returns \"3 - 4i\".\r\n"},
    {HelpCode(kCategory, 1),
     "imCos",
     {"z"},
     "0",
     "imCos(z)\r\n"
     "\r\n"
     "Returns the cosine of 'z'. The 'z' argument represents a complex number in the form: 'x + "
     "yi', x, or 'yi'.\r\n"
     "\r\n"
     "=imCos(\"1 + 1i\") returns \"0.83373002513115 + 0.98889770576287i\"\r\n"},
    {HelpCode(kCategory, 2),
     "imDiv",
     {"z1", "z2"},
     "00",
     "imDiv(z1, z2)\r\n"
     "\r\n"
     "Devides 'z1' by 'z2' and returns the result. The 'z1' and 'z2' arguments represent complex "
     "numbers in the form: 'x + yi', x, or 'yi'.\r\n"
     "\r\n"
     "=imDiv(\"1 + 2i\", \"2 + 1i\") returns \"0.8 + 0.6i\"\r\n"},
    {HelpCode(kCategory, 1),
     "imExp",
     {"z"},
     "0",
     "imExp(z)\r\n"
     "\r\n"
     "Raises 'e' to the power of 'z'. The 'z' argument represents a complex number in the form: 'x "
     "+ yi', x, or 'yi'.\r\n"
     "\r\n"
     "=imExp(\"1 + 1i\") returns \"1.43869393991589 + 2.28735528717884i\"\r\n"},
    {HelpCode(kCategory, 1),
     "imLn",
     {"z"},
     "0",
     "imLn(z)\r\n"
     "\r\n"
     "Returns the natural logarithm of 'z'. The 'z' argument represents a complex number in the "
     "form: 'x + yi', x, or 'yi'.\r\n"
     "\r\n"
     "=imLn(\"3 + 4i\") returns \"1.6094379124341 + 0.92729521800161i\"\r\n"},
    {HelpCode(kCategory, 1),
     "imLog10",
     {"z"},
     "0",
     "imLog10(z)\r\n"
     "\r\n"
     "Returns the base-10 logarithm of 'z'. The 'z' argument represents a complex number in the "
     "form: 'x + yi', x, or 'yi'.\r\n"
     "\r\n"
     "=imLog10(\"3+4i\") returns \"0.69897000433601 + 0.40271919627337i\"\r\n"},
    {HelpCode(kCategory, 1),
     "imLog2",
     {"z"},
     "0",
     "imLog2(z)\r\n"
     "\r\n"
     "Returns the base-2 logarithm of 'z'. The 'z' argument represents a complex number in the "
     "form: 'x + yi', x, or 'yi'.\r\n"
     "\r\n"
     "=imLog2(\"3 + 4i\") returns \"2.23192809488732 + 1.33780421245095i\"\r\n"},
    {HelpCode(kCategory, 2),
     "imPower",
     {"z", "n"},
     "00",
     "imPower(z, n)\r\n"
     "\r\n"
     "Raises 'z' to the power of 'n' and returns the result. The 'z' argument represents a complex "
     "number in the form: 'x + yi', x, or 'yi'.\r\n"
     "\r\n"
     "=imPower(\"2+3i\", 3) returns \"-46 + 9i\"\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "imProduct",
     {"z1", "z2", "..."},
     "11",
     "imProduct(z1, z2, ...)\r\n"
     "\r\n"
     "Multiplies all the specified arguments which can be complex numbers or arrays of complex "
     "numbers in the form: 'x + yi', x, or 'yi'. Empty cells in arrays are skipped.\r\n"
     "\r\n"
     "=imProduct(\"3+4i\", \"5-3i\") returns \"27 + 11i\"\r\n"},
    {HelpCode(kCategory, 1),
     "imReal",
     {"z"},
     "0",
     "imReal(z)\r\n"
     "\r\n"
     "Returns the real coefficient of 'z'. The 'z' argument represents a complex number in the "
     "form: 'x + yi', x, or 'yi'.\r\n"
     "\r\n"
     "=imReal(\"3 + 4i\") returns 3\r\n"},
    {HelpCode(kCategory, 1),
     "imSin",
     {"z"},
     "0",
     "imSin(z)\r\n"
     "\r\n"
     "Returns the sine of 'z'. The 'z' argument represents a complex number in the form: 'x + yi', "
     "x, or 'yi'.\r\n"
     "\r\n"
     "=imSin(\"3 + 4i\") returns \"3.85373803791938 - 27.0168132580039i\"\r\n"},
    {HelpCode(kCategory, 1),
     "imSqrt",
     {"z"},
     "0",
     "imSqrt(z)\r\n"
     "\r\n"
     "Returns the squre root of 'z'. The 'z' argument represents a complex number in the form: 'x "
     "+ yi', x, or 'yi'.\r\n"
     "\r\n"
     "=imSqrt(\"1 + i\") returns 1.09868411346781 + 0.45508986056223i\"\r\n"},
    {HelpCode(kCategory, 2),
     "imSub",
     {"z1", "z2"},
     "00",
     "imSub(z1, z2)\r\n"
     "\r\n"
     "Returns the difference between of 'z1' and 'z2'. The 'z1' and 'z2' arguments represent "
     "complex numbers in the form: 'x + yi', x, or 'yi'.\r\n"
     "\r\n"
     "=imSub(\"10 + 5i\", \"9 + 4i\") returns \"1 + 1i\"\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "imSum",
     {"z1", "z2", "..."},
     "11",
     "imSum(z1, z2, ...)\r\n"
     "\r\n"
     "Adds all the specified arguments which can be complex numbers or arrays of complex numbers "
     "in the form: 'x + yi', x, or 'yi'.\r\n"
     "\r\n"
     "=imSum(\"1 + 1i\", \"2 + 2i\", {\"1 + 1i\", \"1 + 1i\"}, 1, \"1i\") returns \"6 + 6i\"\r\n"},
    {HelpCode(kCategory, 1),
     "oct2bin",
     {"n", "[l]"},
     "00",
     "oct2bin(n, [l])\r\n"
     "\r\n"
     "Converts 'n' representing an octal number to a string representing a binary number "
     "consisting of 'l' characters. The 'n' argument can contain up to 10 characters and it must "
     "be in the range [-512, 511]. The most significant bit in 'n' determines its sign. Negative "
     "numbers are represented in two's complement format. The 'l' argument must be in the range "
     "[0, 10]. If it's omitted, it's assumed to be 10.\r\n"
     "\r\n"
     "=oct2bin(3, 3) returns \"011\"\r\n"
     "=oct2bin(7777777000, ) returns \"1000000000\"\r\n"},
    {HelpCode(kCategory, 1),
     "oct2dec",
     {"n", "[l]"},
     "00",
     "oct2dec(n, [l])\r\n"
     "\r\n"
     "Converts 'n' representing an octal number to a decimal number. The 'n' argument can contain "
     "up to 10 characters. The most significant bit in 'n' determines its sign. Negative numbers "
     "are represented in two's complement format.\r\n"
     "\r\n"
     "=oct2dec(54) returns 44\r\n"
     "=oct2dec(7777777777) returns -1\r\n"},
    {HelpCode(kCategory, 1),
     "oct2hex",
     {"n", "[l]"},
     "00",
     "oct2hex(n, [l])\r\n"
     "\r\n"
     "Converts 'n' representing an octal number to a string representing a hexadecimal number "
     "consisting of 'l' characters. The 'n' argument can contain up to 10 characters. The most "
     "significant bit in 'n' determines its sign. Negative numbers are represented in two's "
     "complement format. The 'l' argument must be in the range [0, 10]. If it's omitted, it's "
     "assumed to be 10.\r\n"
     "\r\n"
     "=oct2hex(100, 4) returns \"0040\"\r\n"
     "=oct2hex(7777777777, ) returns \"FFFFFFFFFF\"\r\n"},
};

}  // namespace

std::span<const HelpEntry> EngineeringHelp() {
  return kEntries;
}

}  // namespace kelpdex
