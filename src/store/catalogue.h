// A table is two worksheets: the data sheet "\<table>", one record a row and one field a column,
// and the catalogue "\system\<table>", whose row 0 holds column titles and whose row i + 1
// describes the field in data column i. The schema is nothing but these cells.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "store/workbook.h"

namespace kelpdex {

// Catalogue columns.
namespace catalogue {
constexpr uint16_t kFieldColumn = 0;
constexpr uint16_t kTypeColumn = 1;
constexpr uint16_t kSortIndexColumn = 2;
constexpr uint16_t kFormulaColumn = 3;
constexpr uint16_t kFirstKeyColumn = 4;  // "Key{Default}"
}  // namespace catalogue

struct TableSpec {
  Workbook* workbook = nullptr;
  Worksheet* catalogue = nullptr;
  Worksheet* data = nullptr;
};

// A catalogue cell's text: the empty view when the cell is missing or holds no text.
std::string_view CatalogueText(const Worksheet& sheet, uint32_t row, uint16_t column,
                               CellCursor* cursor = nullptr);
// Writes a text cell; an empty text removes the cell, which is how the catalogue says "none".
// False when memory runs out.
bool PutCatalogueText(Worksheet& sheet, uint32_t row, uint16_t column, std::string_view text,
                      CellCursor* cursor = nullptr);

// Both sheets of a table; false with code 23 in the workbook when either is missing.
bool MakeTableSpec(Workbook& workbook, std::string_view table, TableSpec& out);
// The check of each table after a load: both sheets, and a catalogue that describes no more
// fields than a data sheet has columns. False with code 44.
bool CompileTableSpec(Workbook& workbook, std::string_view table, TableSpec& out);

// Search keys: the titles from column 4 on that begin with "k" or "K".
uint16_t KeyCount(const TableSpec& table);
// User forms: the titles behind "Std. Form{...}" that begin with "f" or "F".
uint16_t FormCount(const TableSpec& table);
uint16_t CurrentKey(const TableSpec& table);
// Moves the mark to key `index`; an index past the keys leaves it. Returns the key now marked.
uint16_t SelectKey(const TableSpec& table, uint16_t index);
// Views: 0 the table, 1 the standard form, 2 onward the user's forms.
uint16_t CurrentForm(const TableSpec& table);
// Moves the mark to view `index`; an index past the views does nothing and returns 0.
uint16_t SelectForm(const TableSpec& table, uint16_t index);

// Title formats of catalogue row 0.
std::string KeyTitle(std::string_view name);                          // "Key{%s}"
std::string FormTitle(int columns, int rows, std::string_view name);  // "form{%d,%d,%s}"
bool ParseKeyTitle(std::string_view title, std::string& name);
bool ParseStdFormTitle(std::string_view title, int& a, int& b, int& c);
bool ParseFormTitle(std::string_view title, int& columns, int& rows, std::string& name);

// "Sort Index" values: 0 no key; otherwise value % 10000 is the place among the keys (1 first),
// and values from 10001 to 20000 sort with the senses reversed.
inline uint16_t SortKeyPlace(uint32_t sortIndex) {
  return static_cast<uint16_t>(sortIndex % 10000);
}
inline bool SortKeyReversed(uint32_t sortIndex) {
  return sortIndex >= 10001 && sortIndex <= 20000;
}

// Creates the \system folder if missing, the table's catalogue with its titles and marks, and its
// data sheet, and makes the first table current. On failure (code 21) nothing of the new table
// remains.
bool CreateTable(Workbook& workbook, std::string_view name);

}  // namespace kelpdex
