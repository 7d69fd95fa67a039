#include "store/field_row.h"

#include <cmath>
#include <vector>

#include "store/cell_record.h"
#include "text/code_page.h"

namespace kelpdex {

namespace {

struct TypeName {
  const char* text;
  FieldType type;
  bool link;
};

// In the order a type text is matched.
constexpr TypeName kTypeNames[] = {{"Text", FieldType::kText, false},
                                   {"Text / Link", FieldType::kText, true},
                                   {"Number", FieldType::kNumber, false},
                                   {"Long Text", FieldType::kLongText, false},
                                   {"Images/Files", FieldType::kFiles, false}};

}  // namespace

const char* FieldTypeText(FieldType type, bool link) {
  for (const TypeName& t : kTypeNames) {
    if (t.type == type && t.link == (link && type == FieldType::kText)) return t.text;
  }
  return "Unknown";
}

void ParseFieldTypeText(std::string_view text, FieldType& type, bool& link) {
  for (const TypeName& t : kTypeNames) {
    if (text == t.text) {
      type = t.type;
      link = t.link;
      return;
    }
  }
  type = FieldType::kUnknown;
  link = false;
}

uint16_t FieldCount(const TableSpec& table) {
  // The chain is in row order, so its last record has the highest row; a walk over every record
  // here made reading all fields cost the square of their count.
  uint32_t maxRow = 0;
  table.catalogue->cells.LastRecordRow(maxRow);
  return static_cast<uint16_t>(maxRow > kLastColumn + 1u ? kLastColumn + 1u : maxRow);
}

bool ReadField(const TableSpec& table, uint16_t fieldIndex, FieldSpec& fieldRow) {
  if (fieldIndex >= FieldCount(table)) return false;
  CellStore& cells = table.catalogue->cells;
  uint32_t row = fieldIndex + 1u;
  CellCursor cursor;
  CellRecord* name = cells.GetCell(row, catalogue::kFieldColumn, &cursor);
  CellRecord* type = cells.GetCell(row, catalogue::kTypeColumn, &cursor);
  CellRecord* sort = cells.GetCell(row, catalogue::kSortIndexColumn, &cursor);
  if (name == nullptr || !cell::IsText(name) || type == nullptr || !cell::IsText(type) ||
      sort == nullptr || !cell::IsNumber(sort)) {
    return false;
  }
  fieldRow.name.assign(cell::Text(name));
  ParseFieldTypeText(cell::Text(type), fieldRow.type, fieldRow.link);
  double s = std::trunc(cell::Number(sort));
  fieldRow.sortIndex = static_cast<uint16_t>(static_cast<uint32_t>(s < 0 ? 0 : s > 4e9 ? 4e9 : s));
  CellRecord* formula = cells.GetCell(row, catalogue::kFormulaColumn, &cursor);
  fieldRow.formulaOrValue.assign(formula != nullptr && cell::IsText(formula) ? cell::Text(formula)
                                                                             : std::string_view());
  CellRecord* key = cells.GetCell(row, catalogue::kFirstKeyColumn, &cursor);
  fieldRow.firstKeyExpression.assign(key != nullptr && cell::IsText(key) ? cell::Text(key)
                                                                         : std::string_view());
  return true;
}

bool WriteField(const TableSpec& table, uint16_t fieldIndex, const FieldSpec& fieldRow) {
  Worksheet& sheet = *table.catalogue;
  uint32_t row = fieldIndex + 1u;
  CellCursor cursor;
  uint8_t number[cell::kNumberSize];
  cell::EncodeNumber(number, row, catalogue::kSortIndexColumn, fieldRow.sortIndex);
  bool ok =
      PutCatalogueText(sheet, row, catalogue::kFieldColumn, fieldRow.name, &cursor) &&
      PutCatalogueText(sheet, row, catalogue::kTypeColumn,
                       FieldTypeText(fieldRow.type, fieldRow.link), &cursor) &&
      sheet.cells.PutCell(number, &cursor) &&
      PutCatalogueText(sheet, row, catalogue::kFormulaColumn, fieldRow.formulaOrValue, &cursor) &&
      PutCatalogueText(sheet, row, catalogue::kFirstKeyColumn, fieldRow.firstKeyExpression,
                       &cursor);
  if (!ok) table.workbook->errorCode = err::kOutOfMemory;
  return ok;
}

void SplitFormulaOrValue(std::string_view text, std::string& formula, std::string& value) {
  formula.clear();
  value.clear();
  if (text.size() < 2 || text[1] != ':') return;
  char marker = text::CharUpper(text[0]);
  if (marker == 'F') formula.assign(text.substr(2));
  if (marker == 'V') value.assign(text.substr(2));
}

std::vector<FieldDefault> BuildFieldDefaults(const TableSpec& table) {
  std::vector<FieldDefault> defaults;
  uint16_t count = FieldCount(table);
  defaults.reserve(count);
  FieldSpec fieldRow;
  for (uint16_t i = 0; i < count; ++i) {
    FieldDefault d;
    if (ReadField(table, i, fieldRow)) {
      d.type = fieldRow.type;
      d.name = fieldRow.name;
      d.link = fieldRow.link;
      if (HoldsCellValues(fieldRow.type)) {
        SplitFormulaOrValue(fieldRow.formulaOrValue, d.formula, d.defaultValue);
      }
    } else {
      d.type = FieldType::kUnknown;
    }
    defaults.push_back(std::move(d));
  }
  return defaults;
}

}  // namespace kelpdex
