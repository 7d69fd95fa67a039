// The field types, and a field as records and formulas see it, kept in the workbook for the
// current table.
#pragma once

#include <cstdint>
#include <string>

#include "core/field_type.h"

namespace kelpdex {

// A Text or Number field as records and formulas see it.
struct FieldDefault {
  FieldType type = FieldType::kText;
  std::string name;
  std::string formula;       // the text behind "F:"
  std::string defaultValue;  // the text behind "V:"
  bool link = false;

  // Only a formula beginning with "=" or "+" is ever evaluated.
  bool IsCalculated() const { return !formula.empty() && (formula[0] == '=' || formula[0] == '+'); }
};

}  // namespace kelpdex
