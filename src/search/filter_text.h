// One field's filter as the catalogue keeps it: "%d:%s", an operator digit and the operand as it
// was typed, and its expansion into the formula that tests a record.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "core/field_type.h"

namespace kelpdex {

// The input controls take no more than this; a longer text is refused before it is stored.
constexpr size_t kFilterTextMax = 1024;
// An expansion fills at most this many characters and its terminator.
constexpr size_t kFilterFormulaRoom = 1025;

namespace filter_op {
constexpr int kExpression = 0;  // the operand is the whole expression (Long Text: the needle)
constexpr int kPattern = 1;
constexpr int kEqual = 2;
constexpr int kNotEqual = 3;
constexpr int kGreater = 4;
constexpr int kLess = 5;
constexpr int kBetween = 6;
constexpr int kAnd = 7;
constexpr int kOr = 8;
constexpr int kLast = 8;
}  // namespace filter_op

// The operator list of the filter dialog; entry i is digit i + 1.
constexpr const char* kFilterOperatorNames[filter_op::kLast] = {
    "Pattern", "Equal", "Not Equal", "Greater Then", "Less Then", "Between", "AND", "OR"};

// The digit and the operand of a stored filter; false for an empty text or one that does not
// start with a digit and a colon.
bool SplitFilterText(std::string_view text, int& digit, std::string_view& operand);
std::string MakeFilterText(int digit, std::string_view operand);

// The formula that tests one record of a field named `field` of `type`, written into `out`
// (kFilterFormulaRoom characters) and cut there as the buffer cuts it. Returns its length; 0
// means no test. Operands go in as typed: a quote in one ends the formula's string.
size_t BuildFilterFormula(std::string_view field, FieldType type, std::string_view filterText,
                          char* out);

}  // namespace kelpdex
