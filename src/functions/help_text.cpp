// Help entries of the category "text". The texts stand as the function picker has always shown
// them, slips included.
#include "functions/help_table.h"

namespace kelpdex {

namespace {

constexpr uint8_t kCategory = help::kText;

const HelpEntry kEntries[] = {
    {HelpCode(kCategory, 1),
     "char",
     {"n"},
     "0",
     "char(n)\r\n"
     "\r\n"
     "Returns the character specified by n.\r\n"
     "\r\n"
     "=char(65) returns \"A\"\r\n"},
    {HelpCode(kCategory, 1),
     "clean",
     {"text"},
     "0",
     "clean(text)\r\n"
     "\r\n"
     "Removes non-printable characters from text.\r\n"
     "\r\n"
     "=clean(char(7) & \"abc\") returns \"abc\".\r\n"},
    {HelpCode(kCategory, 1),
     "code",
     {"text"},
     "0",
     "code(text)\r\n"
     "\r\n"
     "Returns the code of the first character in text.\r\n"
     "\r\n"
     "=code(\"ABC\") returns 65\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "concatenate",
     {"t1", "t2", "..."},
     "11",
     "concatenate(t1, t2, ...)\r\n"
     "\r\n"
     "Merges all strings specified by the arguments which can be text strings, numbers or "
     "arrays. Empty cells in arrays are ignored.\r\n"
     "\r\n"
     "=concatenate(\"abc\", 1, \"abc\", 2) returns \"abc1abc2\"\r\n"},
    {HelpCode(kCategory, 1),
     "dollar",
     {"x", "[decimals]"},
     "00",
     "dollar(x, [decimals])\r\n"
     "\r\n"
     "Converts x to a text string using the default currency format and the specified "
     "precision. If the 'digits' argument is greater than 0, then x is rounded to the "
     "specified number of decimal places. If it's 0, then x is rounded to the nearest integer. "
     "If it's less than 0, then x is rounded to the left of the decimal point. The default "
     "value of 'digits' is 2.\r\n"
     "\r\n"
     "=dollar(10.95,) returns \"$10.95\"\r\n"
     "=dollar(10.9487, 3) returns \"$10.949\"\r\n"},
    {HelpCode(kCategory, 2),
     "exact",
     {"text1", "text2"},
     "00",
     "exact(text1, text2)\r\n"
     "\r\n"
     "Returns 1 if text1 and text2 are the same, 0 otherwise. The comparison is "
     "case-sensitive.\r\n"
     "\r\n"
     "=exact(\"Abc\", \"abc\") returns 0\r\n"
     "=exact(\"Abc\", \"Abc\") returns 1\r\n"},
    {HelpCode(kCategory, 2),
     "find",
     {"searchText", "withinText", "[n]"},
     "000",
     "find(searchText, withinText, [n])\r\n"
     "\r\n"
     "Finds searchText in withinText starting at the position n and returns the position of "
     "the found text in withinText. If the string is not found or if n is invalid (less than 1 "
     "or greater that the length of the withinText), it returns the #VALUE! error value.\r\n"
     "\r\n"
     "=find(\"text\", \"sample text\", 1) returns 8\r\n"},
    {HelpCode(kCategory, 1),
     "fixed",
     {"x", "[digits]", "[no_separators]"},
     "000",
     "fixed(x, [digits], [no_separators])\r\n"
     "\r\n"
     "Rounds x to the specified number of digits and formats it using the general format. If "
     "the 'digits' argument is greater than 0, then x is rounded to the specified number of "
     "decimal places. If it's 0, then x is rounded to the nearest integer. If it's less than "
     "0, then x is rounded to the left of the decimal point. If no_separators is 0, the number "
     "is formatted using thousand separators. If 'digits' is omitted, it's assumed to be 2. "
     "The default value of 'no_separators' is 0.\r\n"
     "\r\n"
     "=fixed(10.956,,) returns \"10.96\"\r\n"
     "=fixed(1234.89, -2, 0) returns \"1,200\"\r\n"},
    {HelpCode(kCategory, 1),
     "left",
     {"text", "[n]"},
     "00",
     "left(text, [n])\r\n"
     "\r\n"
     "Returns the first n characters from text. If n is omitted, it's assumed to be 1. If n is "
     "greater than the number of characters in text, the entire text is returned.\r\n"
     "\r\n"
     "=left(\"abc\",) returns \"a\"\r\n"},
    {HelpCode(kCategory, 1),
     "len",
     {"text"},
     "0",
     "len(text)\r\n"
     "\r\n"
     "Returns the number of characters in text.\r\n"
     "\r\n"
     "=len(\"text\") returns 4\r\n"},
    {HelpCode(kCategory, 1),
     "lower",
     {"text"},
     "0",
     "lower(text)\r\n"
     "\r\n"
     "Converts all letters in text to lowercase.\r\n"
     "\r\n"
     "=lower(\"TEXT\") returns \"text\"\r\n"},
    {HelpCode(kCategory, 3),
     "mid",
     {"text", "n1", "n2"},
     "000",
     "mid(text, n1, n2)\r\n"
     "\r\n"
     "Returns (up to) n2 characters from text starting at the position n1. If n1 is greater "
     "than the number of characters in text, it returns an empty string. If n1 is less than 1 "
     "or if n2 is negative, mid returns the #VALUE! error value.\r\n"
     "\r\n"
     "=mid(\"some text\", 3, 2) returns \"me\"\r\n"},
    {HelpCode(kCategory, 1),
     "proper",
     {"text"},
     "0",
     "proper(text)\r\n"
     "\r\n"
     "Converts the first character of each word in text to uppercase and all other characters "
     "to lowercase.\r\n"
     "\r\n"
     "=proper(\"some teXT\") returns \"Some Text\")\r\n"},
    {HelpCode(kCategory, 4),
     "replace",
     {"originalText", "n1", "n2", "replaceText"},
     "0000",
     "replace(originalText, n1, n2, replaceText)\r\n"
     "\r\n"
     "Removes n2 characters from originalText at the position n1 and replaces them with "
     "replaceText.\r\n"
     "\r\n"
     "=replace(\"abcd\", 3, 2, \"*\") returns \"ab*\"\r\n"},
    {HelpCode(kCategory, 2),
     "rept",
     {"text", "n"},
     "00",
     "rept(text, n)\r\n"
     "\r\n"
     "Duplicates text n times.\r\n"
     "\r\n"
     "=rept(\"abc\", 3) returns \"abcabcabc\"\r\n"},
    {HelpCode(kCategory, 1),
     "right",
     {"text", "[n]"},
     "00",
     "right(text, [n])\r\n"
     "\r\n"
     "Returns the last n characters from text. If n is omitted, it's assumed to be 1. If n is "
     "greater than the number of characters in text, the entire text is returned.\r\n"
     "\r\n"
     "=right(\"abc\",) returns \"c\"\r\n"},
    {HelpCode(kCategory, 2),
     "search",
     {"searchText", "withinText", "[n]"},
     "000",
     "search(searchText, withinText, [n])\r\n"
     "\r\n"
     "Finds the first occurrence of searchText in withinText and returns its position. It "
     "starts searching at the position n. If n is omitted, it's assumed to be 1 (the 1st "
     "character).The seachText argument can represent a search pattern containing special "
     "characters '?' (any character) or '*' (any string). To search for '?' or '*' place a "
     "tilde (~) before them.\r\n"
     "\r\n"
     "=search(\"text\", \"some text\", 1) returns 6\r\n"
     "=search(\"?bc?e*\", \"abc abcd abcde ab\",) returns 10\r\n"},
    {HelpCode(kCategory, 3),
     "substitute",
     {"searchText", "withinText", "replaceText", "[n]"},
     "0000",
     "substitute(searchText, withinText, replaceText, [n]\r\n"
     "\r\n"
     "Finds the n-th occurrence of searchText in withinText and substitutes searchText for "
     "replaceText. To replace all occurrences of searchText, type 0 as the n parameter. The "
     "default value of n is 0.\r\n"
     "\r\n"
     "=substitute(\"a1b1c1d\", \"1\", \"-\", 0) returns \"a-b-c-d\"\r\n"
     "=substitute(\"abc abcd abcde ab\", \"?bc?e*a\", \"x\", 1) returns \"abc abcd xb\"\r\n"},
    {HelpCode(kCategory, 1),
     "trim",
     {"text"},
     "0",
     "trim(text)\r\n"
     "\r\n"
     "Removes all whitespaces from text except single spaces between words.\r\n"
     "\r\n"
     "=trim(\" abc def ghi\") returns \"abc def ghi\"\r\n"},
    {HelpCode(kCategory, 1),
     "upper",
     {"text"},
     "0",
     "upper(text)\r\n"
     "\r\n"
     "Converts all letters in text to upppercase.\r\n"
     "\r\n"
     "=upper(\"text\") returns \"TEXT\"\r\n"},
    {HelpCode(kCategory, 1),
     "value",
     {"text"},
     "0",
     "value(text)\r\n"
     "\r\n"
     "Converts text to a number.\r\n"
     "\r\n"
     "=value(\"123.45\") returns 123.45\r\n"
     "=value(\"10 4/5\") returns 10.8\r\n"},
};

}  // namespace

std::span<const HelpEntry> TextHelp() {
  return kEntries;
}

}  // namespace kelpdex
