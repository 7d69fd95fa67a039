// Help entries of the category "informational".
#include "functions/help_table.h"

namespace kelpdex {

namespace {

constexpr uint8_t kCategory = help::kInformational;

const HelpEntry kEntries[] = {
    {HelpCode(kCategory, kVariableArguments),
     "countBlank",
     {"a", "..."},
     "1",
     "countBlank(a, ...)\r\n\r\n"
     "Counts the empty cells and the cells holding an empty text in the specified ranges or "
     "arrays. An omitted argument counts as one empty value.\r\n\r\n"
     "=countBlank(1, , \"\") returns 2\r\n"},
    {HelpCode(kCategory, 1),
     "errorType",
     {"e"},
     "0",
     "errorType(e)\r\n\r\n"
     "Returns a number that identifies the error value e: 1 #DIV/0!, 2 #NAME?, 3 #NULL!, "
     "4 #N/A!, 5 #NUM!, 6 #REF!, 7 #VALUE!, 8 #MEMORY!, 9 #FILL!, 10 #CIRC!, 11 #IMPL!, "
     "12 #SYNTAX!. A value that is no error returns the #VALUE! error value.\r\n\r\n"
     "=errorType(1/0) returns 1\r\n"
     "=errorType(na()) returns 4\r\n"
     "=errorType(1) returns #VALUE!\r\n"},
    {HelpCode(kCategory, 1),
     "isBlank",
     {"x"},
     "0",
     "isBlank(x)\r\n\r\n"
     "Returns 1 if x is an empty cell or an empty text, 0 otherwise.\r\n\r\n"
     "=isBlank(\"\") returns 1\r\n"
     "=isBlank(0) returns 0\r\n"},
    {HelpCode(kCategory, 1),
     "isErr",
     {"x"},
     "0",
     "isErr(x)\r\n\r\n"
     "Returns 1 if x is any error value except #N/A!, 0 otherwise.\r\n\r\n"
     "=isErr(1/0) returns 1\r\n"
     "=isErr(na()) returns 0\r\n"},
    {HelpCode(kCategory, 1),
     "isError",
     {"x"},
     "0",
     "isError(x)\r\n\r\n"
     "Returns 1 if x is any error value, 0 otherwise.\r\n\r\n"
     "=isError(na()) returns 1\r\n"
     "=isError(1) returns 0\r\n"},
    {HelpCode(kCategory, 1),
     "isEven",
     {"n"},
     "0",
     "isEven(n)\r\n\r\n"
     "Returns 1 if n, rounded to the nearest integer, is even, 0 otherwise.\r\n\r\n"
     "=isEven(4) returns 1\r\n"
     "=isEven(12.6) returns 0\r\n"},
    {HelpCode(kCategory, 1),
     "isLogical",
     {"x"},
     "0",
     "isLogical(x)\r\n\r\n"
     "Returns 1 if x is a logical value, that is the number 1 (true) or 0 (false), 0 "
     "otherwise.\r\n\r\n"
     "=isLogical(true) returns 1\r\n"
     "=isLogical(2) returns 0\r\n"},
    {HelpCode(kCategory, 1),
     "isNA",
     {"x"},
     "0",
     "isNA(x)\r\n\r\n"
     "Returns 1 if x is the #N/A! error value, 0 otherwise.\r\n\r\n"
     "=isNA(na()) returns 1\r\n"
     "=isNA(1/0) returns 0\r\n"},
    {HelpCode(kCategory, 1),
     "isNonText",
     {"x"},
     "0",
     "isNonText(x)\r\n\r\n"
     "Returns 1 if x is not a text, 0 if it is.\r\n\r\n"
     "=isNonText(12) returns 1\r\n"
     "=isNonText(\"abc\") returns 0\r\n"},
    {HelpCode(kCategory, 1),
     "isNumber",
     {"x"},
     "0",
     "isNumber(x)\r\n\r\n"
     "Returns 1 if x is a number or a text that represents a number, 0 otherwise.\r\n\r\n"
     "=isNumber(\"12\") returns 1\r\n"
     "=isNumber(\"abc\") returns 0\r\n"},
    {HelpCode(kCategory, 1),
     "isOdd",
     {"n"},
     "0",
     "isOdd(n)\r\n\r\n"
     "Returns 1 if n, rounded to the nearest integer, is odd, 0 otherwise.\r\n\r\n"
     "=isOdd(3) returns 1\r\n"
     "=isOdd(12.6) returns 1\r\n"},
    {HelpCode(kCategory, 1),
     "isRef",
     {"x"},
     "1",
     "isRef(x)\r\n\r\n"
     "Returns 1 if x is a reference, such as a field name or a range, 0 if it's a value.\r\n\r\n"
     "=isRef(3) returns 0\r\n"},
    {HelpCode(kCategory, 1),
     "isText",
     {"x"},
     "0",
     "isText(x)\r\n\r\n"
     "Returns 1 if x is a text, 0 otherwise.\r\n\r\n"
     "=isText(\"abc\") returns 1\r\n"
     "=isText(12) returns 0\r\n"},
    {HelpCode(kCategory, 1),
     "n",
     {"x"},
     "0",
     "n(x)\r\n\r\n"
     "Returns x as a number: a text that represents a number is converted, any other text is "
     "0.\r\n\r\n"
     "=n(\"12\") returns 12\r\n"
     "=n(\"abc\") returns 0\r\n"},
    {HelpCode(kCategory, 0),
     "na",
     {},
     "",
     "na()\r\n\r\n"
     "Returns the #N/A! error value, which marks a value as not available.\r\n\r\n"
     "=na() returns #N/A!\r\n"},
    {HelpCode(kCategory, 1),
     "type",
     {"x"},
     "1",
     "type(x)\r\n\r\n"
     "Returns the type of x: 1 for a number, 2 for a text, 16 for an error value and 64 for an "
     "array or range.\r\n\r\n"
     "=type(1) returns 1\r\n"
     "=type(\"a\") returns 2\r\n"
     "=type(1/0) returns 16\r\n"
     "=type({1, 2}) returns 64\r\n"},
};

}  // namespace

std::span<const HelpEntry> InformationalHelp() {
  return kEntries;
}

}  // namespace kelpdex
