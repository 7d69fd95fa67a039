// The current table as the commands see it: its two sheets, its Text and Number fields, and its
// record set, rebuilt after every change of table or schema.
#pragma once

#include <cstdint>
#include <vector>

#include "formula/formula_engine.h"
#include "store/catalogue.h"
#include "store/field_row.h"
#include "store/workbook.h"

namespace kelpdex {

// The sheets of the current table; false with code 25 when there is none.
bool CurrentTable(Workbook& workbook, TableSpec& table);
// The place of a data sheet among the tables; -1 when it is none.
int TableIndexOf(const Workbook& workbook, const Worksheet* data);

// Rebuilds `fieldDefaults` and the record set of the current table. The set is rebuilt in row
// order; a narrowed or sorted set is the search's to restore. False with code 21.
bool RefreshCurrentTable(Workbook& workbook);

// Where the free rows of the set's tail begin: behind the last used row of the sheet, and behind
// every row the set holds, since an empty record inside the set still owns its row.
uint32_t FirstFreeRow(const RecordSet& records, const Worksheet& data);

// The fields as the formula engine takes them: only a formula that begins with "=" or "+" is
// handed on, so a stored text such as "x+1" is never evaluated.
std::vector<FormulaField> FormulaFields(const std::vector<FieldDefault>& defaults);

}  // namespace kelpdex
