// The field types, and a field as records and formulas see it, kept in the workbook for the
// current table.
#pragma once

#include <cstdint>
#include <string>

namespace kelpdex {

namespace field_type {
constexpr uint8_t kUnknown = 0;
constexpr uint8_t kText = 1;
constexpr uint8_t kNumber = 2;
constexpr uint8_t kLongText = 4;
constexpr uint8_t kFiles = 8;  // "Images/Files"
}  // namespace field_type

// A Text or Number field as records and formulas see it.
struct FieldDefault {
  uint8_t type = field_type::kText;
  std::string name;
  std::string formula;       // the text behind "F:"
  std::string defaultValue;  // the text behind "V:"
  bool link = false;

  // Only a formula beginning with "=" or "+" is ever evaluated.
  bool IsCalculated() const { return !formula.empty() && (formula[0] == '=' || formula[0] == '+'); }
};

}  // namespace kelpdex
