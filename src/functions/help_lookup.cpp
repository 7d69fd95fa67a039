// Help entries of the category "lookup & reference".
#include "functions/help_table.h"

namespace kelpdex {

namespace {

constexpr uint8_t kCategory = help::kLookup;

const HelpEntry kEntries[] = {
    {HelpCode(kCategory, 1),
     "columns",
     {"array"},
     "1",
     "columns(array)\r\n\r\n"
     "Returns the number of columns in 'array'.\r\n\r\n"
     "=columns({1, 2, 3; 4, 5, 6}) returns 3\r\n"},
    {HelpCode(kCategory, 3),
     "hLookUp",
     {"v", "array", "n", "[type]"},
     "0100",
     "hLookUp(v, array, n, [type])\r\n\r\n"
     "Searches the top row of the specified 'array' for the 'v' value and - if found - returns a "
     "value from the same column and the n-th row of 'array'. The 'type' argument specifies how "
     "the searching procedure should be performed: 0 - hLookUp will search for an exact match; "
     "'v' can be a search pattern containing '?' (any single character) and '*' (any string); to "
     "search for '?' or '*' place a tilde (~) before them, 1 - if an exact match is not found, "
     "hLookUp will search for the largest value that is not greater than 'v', -1 - if an exact "
     "match is not found, hLookUp will search for the smallest value than is not smaller than "
     "'v'. If the match is not found, it returns the #N/A! error value. If 'type' is omitted, "
     "it's assumed to be 1.\r\n\r\n"
     "=hLookUp(2, {1, 2, 3; \"a\", \"b\", \"c\"}, 2, 0) returns \"b\"\r\n"
     "=hLookUp(2.5, {1, 2, 3; \"a\", \"b\", \"c\"}, 2, -1) returns \"c\"\r\n"},
    {HelpCode(kCategory, 3),
     "index",
     {"x", "m", "n"},
     "100",
     "index(x, m, n)\r\n\r\n"
     "If 'x' is a cell reference (a range of cells) and 'm' and 'n' are numbers, the function "
     "returns the reference of the cell from the m-th row and the n-th column of 'x'. If either "
     "'m' or 'n' is omitted or is 0, the function returns a reference respectively of the n-th "
     "column or the m-th row. If 'x' is not a reference, the function returns cell value(s) "
     "instead of references. If either 'm' or 'n' is an array of numbers, the functions returns "
     "respectively a set of rows (of cell values) of 'x' or a set of columns. If 'm' is an "
     "array, the 'n' argument must be omitted. If 'n' is an array, the 'm' argument must be "
     "omitted.\r\n\r\n"
     "=index(A1:D4, 2, 2) returns B2\r\n"
     "=index({1, 3, 5; 2, 4, 6}, 2, 2) returns 4\r\n"},
    {HelpCode(kCategory, 3),
     "lookUp",
     {"v", "searchArray", "resultArray"},
     "011",
     "lookUp(v, searchArray, resultArray)\r\n\r\n"
     "lookUp(v, searchArray, resultArray) The first version searches either (1) the top row of "
     "'array' (if 'array' has more columns than rows) or (2) the leftmost column of 'array' (if "
     "'array' has more rows than columns) and returns a value respectively from either (1) the "
     "same column and the last row or (2) the same row and the last column. The second version "
     "of the 'lookUp' function uses the 'searchArray' and 'resultArray' arguments that are "
     "one-column or one-row arrays with the same number of cells. After finding the 'v' value "
     "in 'searchArray', the corresponding value from 'resultValue' is returned. If an exact "
     "match can't be found, the largest value not greater than 'v' is returned. On failure, "
     "both versions return the #N/A error value.\r\n\r\n"
     "=lookUp(3, {1, 5, 3, 4; \"a\", \"b\", \"c\", \"d\"}) returns \"c\"\r\n"
     "=lookUp(3, {1, 5, 3, 4}, {\"a\", \"b\", \"c\", \"d\"}) returns \"c\"\r\n"},
    {HelpCode(kCategory, 2),
     "match",
     {"v", "array", "[type]"},
     "010",
     "match(v, array, [type])\r\n\r\n"
     "Returns the relative position of the 'v' value in the specified 'array'. The 'type' "
     "argument specifies how the searching procedure should be performed: 0 - the function "
     "searches for an exact match; 'v' can be a search pattern containing '?' (any single "
     "character) and '*' (any string); to search for '?' or '*' place a tilde (~) before them, "
     "1 - if an exact match is not found, the function will search for the largest value that "
     "is not greater than 'v', -1 - if an exact match is not found, the function will search "
     "for the smallest value than is not smaller than 'v'. If 'type' is omitted, it's assumed "
     "to be 1. If the searched 'v' value is not found, 'match' returns the #N/A! error "
     "value.\r\n\r\n"
     "=match(2, {1, 2, 3}, 0) returns 2\r\n"
     "=match(\"b\", {1, 2, 3; \"a\", \"b\", \"c\"}, 0) return 5\r\n"},
    {HelpCode(kCategory, 1),
     "rows",
     {"array"},
     "1",
     "rows(array)\r\n\r\n"
     "Returns the number of rows in 'array'.\r\n\r\n"
     "=rows({1, 2, 3; 4, 5, 6}) returns 2\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "rtd",
     {"prog_id", "machine", "theme1", "..."},
     "000",
     "rtd(prog_id, machine, theme1, ..., themeN\r\n\r\n"
     "Receives data from a COM (automation) server identified by its registered 'prog_id' name. "
     "The COM server application can be run on a remote computer or - if the 'machine' argument "
     "is omitted - locally. The 'theme1',...'themeN' arguments specify the names of the "
     "requested properties. Each property can return a variant of the following types: (1) "
     "VT_EMPTY (empty cells) (2) VT_UI1 (error codes) (3) VT_R8 (numbers) (4) VT_BSTR (text "
     "strings) (5) SAFEARRAY: an array of (1)-(4). If there are two or more names specified, "
     "the function returns a vector (a one column array) of values. If a given property returns "
     "an array, it must be the only 'theme' argument.\r\n\r\n"
     "=rtd(\"MSComCtl2.MonthView.2\",, \"Day\")\r\n"},
    {HelpCode(kCategory, 7),
     "sort",
     {"array", "column1", "order1", "column2", "order2", "column3", "order3"},
     "1000000",
     "sort(array, column1, order1, column2, order2, column3, order3)\r\n\r\n"
     "Sorts 'array' based on the specified 'column/order' pairs and returns the result as a "
     "vector of relative rows indices. The 'column(n)' arguments specified the relative "
     "position of the columns that should be used as the sort keys and the 'order(n)' argument "
     "specifies the sort order: 0 - descending order, 1 - ascending order. Use the 'index' "
     "function to obtain the final sorted array.\r\n\r\n"
     "=sort({3; 1; 5; 2; 4}, 1, 1) returns {2; 4; 1; 5; 3}\r\n"
     "=sort({3; 1; 5; 2; 4}, 1, 0) returns {3; 5; 1; 4; 2}\r\n"},
    {HelpCode(kCategory, 1),
     "transpose",
     {"array"},
     "1",
     "=transpose(array)\r\n\r\n"
     "Transpose a given array.\r\n\r\n"
     "=transpose({1, 2, 3; 4, 5, 6}) returns {1, 4; 2, 5; 3, 6}\r\n"},
    {HelpCode(kCategory, 3),
     "vLookUp",
     {"v", "array", "n", "[type]"},
     "0100",
     "vLookUp(v, array, n, [type])\r\n\r\n"
     "Searches for the 'v' value in the leftmost column of the specified 'array' and - if found "
     "- returns a value from the same row and the n-th column of 'array'. The 'type' argument "
     "specifies how the searching procedure should be performed: 0 - hLookUp will search for an "
     "exact match; 'v' can be a search pattern containing '?' (any single character) and '*' "
     "(any string); to search for '?' or '*' place a tilde (~) before them, 1 - if an exact "
     "match is not found, hLookUp will search for the largest value that is not greater than "
     "'v', -1 - if an exact match is not found, hLookUp will search for the smallest value than "
     "is not smaller than 'v'. If 'type' is omitted, it's assumed to be 1. If the match is not "
     "found, the function returns the #N/A! error value.\r\n\r\n"
     "=vLookUp(2, {1, \"a\"; 2, \"b\"; 3, \"c\"}, 2, 0) returns \"b\"\r\n"
     "=vLookUp(2.5, {1, \"a\"; 2, \"b\"; 3, \"c\"}, 2, -1) returns \"c\"\r\n"},
    {HelpCode(kCategory, 4),
     "vLookUp2",
     {"v", "table", "f1", "f2", "[type]"},
     "00000",
     "vLookUp2(v, table, f1, f2, [type])\r\n\r\n"
     "Searches the 'f1' field of the specified 'table' for the 'v' value and - if found - "
     "returns a value from the same record and the 'f2' field of that table. Save the 'v' "
     "argument, all other arguments must be placed in quotation marks. The 'type' argument "
     "specifies how the searching procedure should be performed: 0 - hLookUp will search for an "
     "exact match; 'v' can be a search pattern containing '?' (any single character) and '*' "
     "(any string); to search for '?' or '*' place a tilde (~) before them, 1 - if an exact "
     "match is not found, hLookUp will search for the largest value that is not greater than "
     "'v', -1 - if an exact match is not found, hLookUp will search for the smallest value than "
     "is not smaller than 'v'. If 'type' is omitted, it's assumed to be 0. If the match is not "
     "found, the function returns the #N/A! error value. If the result is an empty/null cell, "
     "the function returns #NULL!.\r\n\r\n"
     "=vLookUp2(ProductID, \"products\", \"ProductID\", \"ProductName\",)\r\n"
     "=vLookUp2(ProductID, \"products\", \"ProductID\", \"UnitPrice\",)\r\n"},
    {HelpCode(kCategory, 1),
     "unique",
     {"vector", "[type]"},
     "10",
     "unique(vector, [type])\r\n\r\n"
     "Searches 'search' (a one-column array) for unique values. If 'type' is 0, the 'unique' "
     "function returns a vector of indices to the subsequent unique values found in 'vector'. "
     "If 'type' is 1, the 'unique' function returns a vector of unique values found in "
     "'vector'. If 'type' is 2, the 'unique' function returns a two-column array. The first "
     "column contains unique values, the second one: the number of occurrences of the "
     "corresponding value. If 'type' is omitted, it's assumed to be 1.\r\n\r\n"
     "=unique({2; 3; 1; 2; 5; 3; 1}, 1) returns {1; 2; 3; 5}\r\n"
     "=unique({\"a\"; \"b\"; \"cd\"; \"a\"; \"cd\"; \"b\"; \"d\"}, 0) returns {4; 2; 5; 7}\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "udf",
     {"prog_id", "machine", "method", "param1", "..."},
     "0001",
     "udf(prog_id, machine, method, param1, ..., paramN)\r\n\r\n"
     "Executes a method on a COM (automation) server identified by its registered 'prog_id' "
     "name. The COM server application be run on a remote computer or - if the 'machine' "
     "argument is omitted - locally. The 'param1',...,'paramN' arguments are the input argument "
     "for the called method. The arguments are passed via the variant structures of the "
     "following types: (1) VT_EMPTY (empty cells) (2) VT_UI1 (error codes) (3) VT_R8 (numbers) "
     "(4) VT_BSTR (text strings) (5) SAFEARRAY: an array of (1)-(4) (when ranges/arrays are "
     "passed).\r\n\r\n"
     "=udf(\"\",, \"test\", 1, 1, 0)\r\n"},
};

}  // namespace

std::span<const HelpEntry> LookupHelp() {
  return kEntries;
}

}  // namespace kelpdex
