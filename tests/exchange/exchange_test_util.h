// Reading an imported table back in the tests: cells by position and the fields of the catalogue.
#pragma once

#include <string>

#include "store/catalogue.h"
#include "store/field_row.h"
#include "store/workbook.h"
#include "table/table_state.h"

namespace kelpdex::testing {

// "" for no cell, the text of a text cell, "#" and the number for a number cell.
inline std::string CellAt(Workbook& book, uint32_t row, uint16_t column) {
  const CellRecord* cell = book.currentSheet->cells.GetCell(row, column);
  if (cell == nullptr) return "";
  if (cell::IsText(cell)) return std::string(cell::Text(cell));
  char text[64];
  std::snprintf(text, sizeof text, "#%.15g", cell::Number(cell));
  return text;
}

inline FieldSpec FieldAt(Workbook& book, uint16_t index) {
  TableSpec table;
  FieldSpec field;
  if (CurrentTable(book, table)) ReadField(table, index, field);
  return field;
}

inline uint16_t FieldCountOf(Workbook& book) {
  TableSpec table;
  return CurrentTable(book, table) ? FieldCount(table) : 0;
}

}  // namespace kelpdex::testing
