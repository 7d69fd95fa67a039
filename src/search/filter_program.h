// The compiled form of a filter whose formula only compares one field with constants, or looks
// for patterns at the start of a text field with SEARCH, which is what every operator of the
// filter dialog makes. It answers for a record straight
// from the field's cell, with the evaluator's own comparison rules, and leaves to the evaluator
// the records it cannot answer for (a calculated field's cell). Filters of any other shape are
// not compiled and go through the formula text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/field_type.h"
#include "formula/formula_engine.h"
#include "store/cell_record.h"

namespace kelpdex {

class FilterProgram {
 public:
  enum class Verdict : uint8_t { kKeep, kDrop, kEvaluate };

  // Compiles the filter `digit`:`operand` of field `field` (named `name`, of `type`) against the
  // fields the evaluator resolves names among. False when its formula is of another shape.
  bool Compile(const std::vector<FormulaField>& fields, std::string_view name, FieldType type,
               int digit, std::string_view operand);
  // The column whose cell decides: the field the formula's name resolves to.
  uint16_t column() const { return column_; }
  // The verdict on a record from the decisive cell (null when the record has none).
  Verdict Test(const CellRecord* cell) const;

 private:
  struct Term {
    uint16_t op = 0;  // kind::kEqual .. kind::kNotEqual; 0 for a SEARCH pattern at the start
    bool number = false;
    double value = 0;
    std::string text;
  };
  enum class Combine : uint8_t { kOne, kBoth, kAll, kAny };
  enum class Outcome : uint8_t { kFalse, kTrue, kError };

  bool AddTerm(uint16_t op, bool number, std::string_view operand);
  bool AddPattern(std::string_view pattern);
  Outcome Compare(const Term& term, const CellRecord* cell) const;

  uint16_t column_ = 0;
  Combine combine_ = Combine::kOne;
  std::vector<Term> terms_;
  bool patterns_ = false;
};

}  // namespace kelpdex
