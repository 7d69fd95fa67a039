#include "table/table_state.h"

#include <algorithm>

namespace kelpdex {

bool CurrentTable(Workbook& workbook, TableSpec& table) {
  if (workbook.currentSheet == nullptr) {
    workbook.errorCode = err::kNoTableSelected;
    return false;
  }
  return MakeTableSpec(workbook, workbook.currentSheet->Name(), table);
}

int TableIndexOf(const Workbook& workbook, const Worksheet* data) {
  for (uint32_t i = 0;; ++i) {
    const Worksheet* sheet = workbook.TableByIndex(i);
    if (sheet == nullptr) return -1;
    if (sheet == data) return static_cast<int>(i);
  }
}

bool RefreshCurrentTable(Workbook& workbook) {
  workbook.fieldDefaults.clear();
  TableSpec table;
  if (workbook.currentSheet == nullptr || !CurrentTable(workbook, table)) {
    workbook.records.SetCount(0);
    return workbook.currentSheet == nullptr;
  }
  workbook.fieldDefaults = BuildFieldDefaults(table);
  if (!workbook.records.BuildInOrder(table.data->UsedRows())) {
    workbook.errorCode = err::kOutOfMemory;
    return false;
  }
  workbook.records.RewriteFreeTail(workbook.records.count());
  return true;
}

uint32_t FirstFreeRow(const RecordSet& records, const Worksheet& data) {
  uint32_t first = data.UsedRows();
  for (uint32_t i = 0; i < records.count(); ++i) first = std::max(first, records[i] + 1);
  return first;
}

// The formula engine names Text and Number fields by the catalogue's own numbers; other types
// pass as theirs, which it cannot name.
static_assert(kFieldText == static_cast<uint8_t>(FieldType::kText) &&
              kFieldNumber == static_cast<uint8_t>(FieldType::kNumber));

std::vector<FormulaField> FormulaFields(const std::vector<FieldDefault>& defaults) {
  std::vector<FormulaField> fields(defaults.size());
  for (size_t i = 0; i < defaults.size(); ++i) {
    const FieldDefault& d = defaults[i];
    fields[i].type = static_cast<uint8_t>(d.type);
    fields[i].name = d.name;
    if (d.IsCalculated() && HoldsCellValues(d.type)) {
      fields[i].formula = d.formula;
    }
  }
  return fields;
}

}  // namespace kelpdex
