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

std::vector<FormulaField> FormulaFields(const std::vector<FieldDefault>& defaults) {
  std::vector<FormulaField> fields(defaults.size());
  for (size_t i = 0; i < defaults.size(); ++i) {
    const FieldDefault& d = defaults[i];
    // The formula engine knows Text and Number; other types pass as their own number.
    fields[i].type = d.type == FieldType::kNumber ? kFieldNumber
                     : d.type == FieldType::kText ? kFieldText
                                                  : static_cast<uint8_t>(d.type);
    fields[i].name = d.name;
    if (d.IsCalculated() && (d.type == FieldType::kText || d.type == FieldType::kNumber)) {
      fields[i].formula = d.formula;
    }
  }
  return fields;
}

}  // namespace kelpdex
