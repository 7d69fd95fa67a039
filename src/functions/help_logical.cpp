// Help entries of the category "logical".
#include "functions/help_table.h"

namespace kelpdex {

namespace {

constexpr uint8_t kCategory = help::kLogical;

const HelpEntry kEntries[] = {
    {HelpCode(kCategory, kVariableArguments),
     "and",
     {"x1", "x2", "..."},
     "11",
     "and(x1, x2, ...)\r\n\r\n"
     "Returns 1 (true) if all the arguments are true, 0 (false) otherwise. Each number is "
     "rounded to an integer: positive is true, 0 is false, and a negative number or a text "
     "that is no number returns the #VALUE! error value. Empty cells are ignored.\r\n\r\n"
     "=and(1, 2, true, \"10\") returns 1\r\n"
     "=and(1, 0) returns 0\r\n"
     "=and(1, -1) returns #VALUE!\r\n"},
    {HelpCode(kCategory, 0),
     "false",
     {},
     "",
     "false()\r\n\r\n"
     "Returns 0, the logical value false.\r\n\r\n"
     "=false() returns 0\r\n"},
    {HelpCode(kCategory, 3),
     "if",
     {"test", "a", "b"},
     "000",
     "if(test, a, b)\r\n\r\n"
     "Returns a if test is true (a positive number) and b if it's false (0). A negative test "
     "returns the #NUM! error value. a and b may be arrays. Both are calculated, but an error "
     "in the one that is not returned has no effect.\r\n\r\n"
     "=if(3 > 2, \"more\", \"less\") returns \"more\"\r\n"
     "=if(0, 1/0, 7) returns 7\r\n"
     "=if(0, {1, 2}, {3, 4}) returns {3, 4}\r\n"},
    {HelpCode(kCategory, 1),
     "not",
     {"x"},
     "0",
     "not(x)\r\n\r\n"
     "Reverses a logical value: returns 1 if x, rounded to an integer, is 0, and 0 if it's "
     "positive.\r\n\r\n"
     "=not(0) returns 1\r\n"
     "=not(2) returns 0\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "or",
     {"x1", "x2", "..."},
     "11",
     "or(x1, x2, ...)\r\n\r\n"
     "Returns 1 (true) if at least one argument is true, 0 (false) otherwise. The arguments "
     "are read as in and.\r\n\r\n"
     "=or(0, 0.5) returns 1\r\n"
     "=or(0, 0.4) returns 0\r\n"},
    {HelpCode(kCategory, 0),
     "true",
     {},
     "",
     "true()\r\n\r\n"
     "Returns 1, the logical value true.\r\n\r\n"
     "=true() returns 1\r\n"},
};

}  // namespace

std::span<const HelpEntry> LogicalHelp() {
  return kEntries;
}

}  // namespace kelpdex
