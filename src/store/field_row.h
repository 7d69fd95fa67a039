// A field as its catalogue row describes it: name, type, sort index, formula or default value, and
// its expression of the default key. Reading and writing a row is all there is to the schema.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "store/catalogue.h"
#include "store/field_default.h"

namespace kelpdex {

// Field names and formula or value texts are at most this long.
constexpr size_t kFieldTextMax = 1024;

// The "Type" cell's text of a type and link flag; "Unknown" for a type without one.
const char* FieldTypeText(FieldType type, bool link);
// By exact match; no match is kUnknown without link.
void ParseFieldTypeText(std::string_view text, FieldType& type, bool& link);

struct FieldSpec {
  std::string name;
  FieldType type = FieldType::kText;
  bool link = false;
  uint16_t sortIndex = 0;
  std::string formulaOrValue;  // with its "F:" or "V:" prefix, or empty
  std::string firstKeyExpression;
};

// The fields of a table: the highest used row of its catalogue.
uint16_t FieldCount(const TableSpec& table);
// False past the last field, or when the name or type cell is not text or the sort index is not
// a number.
bool ReadField(const TableSpec& table, uint16_t fieldIndex, FieldSpec& fieldRow);
// Writes the five cells of the field's row; an empty text deletes its cell. False with code 21.
bool WriteField(const TableSpec& table, uint16_t fieldIndex, const FieldSpec& fieldRow);

// Splits a "Formula / Value" text by its two marker characters, compared without regard to case.
void SplitFormulaOrValue(std::string_view text, std::string& formula, std::string& value);

// One entry per field of the table, in field order; Long Text and Images/Files fields hold an
// entry of their type with nothing else, so that indexes stay field indexes.
std::vector<FieldDefault> BuildFieldDefaults(const TableSpec& table);

}  // namespace kelpdex
