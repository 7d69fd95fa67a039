#include "search/sort_keys.h"

#include "search/search_keys.h"
#include "search/sort_rows.h"
#include "store/field_row.h"

namespace kelpdex {

namespace {

// The catalogue rows of every field, read once; a change writes back only the rows it touched.
struct FieldRows {
  explicit FieldRows(const TableSpec& table) : table(table), rows(FieldCount(table)) {
    for (uint16_t f = 0; f < rows.size(); ++f) readable.push_back(ReadField(table, f, rows[f]));
  }
  bool SetSortIndex(uint16_t field, uint16_t value) {
    if (field >= rows.size() || !readable[field] || rows[field].sortIndex == value) return true;
    rows[field].sortIndex = value;
    if (WriteField(table, field, rows[field])) return true;
    table.workbook->errorCode = err::kOutOfMemory;
    return false;
  }
  uint16_t Place(uint16_t field) const {
    return readable[field] ? SortKeyPlace(rows[field].sortIndex) : 0;
  }

  const TableSpec& table;
  std::vector<FieldSpec> rows;
  std::vector<bool> readable;
};

}  // namespace

ErrorCode SortByFields(const TableSpec& table, uint16_t first, uint16_t last, bool descending,
                       bool keepOthers) {
  if (!RecordTableDefinition(table)) return table.workbook->errorCode;
  FieldRows fields(table);
  uint16_t count = static_cast<uint16_t>(fields.rows.size());
  if (last >= count) last = count > 0 ? static_cast<uint16_t>(count - 1) : 0;
  uint16_t retained = 0;
  for (uint16_t f = 0; f < count; ++f) {
    bool selected = f >= first && f <= last;
    if (!selected && keepOthers) {
      if (fields.Place(f) != 0) ++retained;
      continue;
    }
    if (!fields.SetSortIndex(f, 0)) return table.workbook->errorCode;
  }
  uint32_t selectedCount = count > first ? last - first + 1u : 0;
  if (retained + selectedCount >= kMaxSortKeys) return err::kTooManySortKeys;
  uint16_t base = descending ? kSortBaseReversed : kSortBaseNatural;
  for (uint16_t f = first; f < count && f <= last; ++f) {
    if (!fields.SetSortIndex(f, static_cast<uint16_t>(base + ++retained))) {
      return table.workbook->errorCode;
    }
  }
  return err::kNone;
}

ErrorCode SetSortKeys(const TableSpec& table,
                      const std::vector<std::pair<uint16_t, bool>>& fieldsDescending) {
  if (fieldsDescending.size() >= kMaxSortKeys) return err::kTooManySortKeys;
  if (!RecordTableDefinition(table)) return table.workbook->errorCode;
  FieldRows fields(table);
  for (uint16_t f = 0; f < fields.rows.size(); ++f) {
    if (!fields.SetSortIndex(f, 0)) return table.workbook->errorCode;
  }
  uint16_t position = 0;
  for (const auto& [field, descending] : fieldsDescending) {
    uint16_t base = descending ? kSortBaseReversed : kSortBaseNatural;
    if (!fields.SetSortIndex(field, static_cast<uint16_t>(base + ++position))) {
      return table.workbook->errorCode;
    }
  }
  return err::kNone;
}

bool RemoveSortKeys(const TableSpec& table, uint16_t first, uint16_t last) {
  if (!RecordTableDefinition(table)) return false;
  FieldRows fields(table);
  uint16_t count = static_cast<uint16_t>(fields.rows.size());
  std::vector<uint16_t> removed;
  for (uint16_t f = first; f < count && f <= last; ++f) {
    if (fields.Place(f) != 0) removed.push_back(fields.Place(f));
    if (!fields.SetSortIndex(f, 0)) return false;
  }
  // Each key behind a removed one moves up a place, keeping its direction.
  for (uint16_t f = 0; f < count; ++f) {
    uint16_t place = fields.Place(f);
    if (place == 0) continue;
    uint16_t lower = 0;
    for (uint16_t gone : removed) lower += gone < place ? 1 : 0;
    uint16_t value = fields.rows[f].sortIndex;
    if (lower > 0 && !fields.SetSortIndex(f, static_cast<uint16_t>(value - lower))) return false;
  }
  return true;
}

bool HasSortKeys(const TableSpec& table) {
  return CollectSortKeys(table).count > 0;
}

SortOrderDialogModel::SortOrderDialogModel(const TableSpec& table) {
  choices_.push_back("Select a field");
  FieldRows fields(table);
  for (uint16_t f = 0; f < fields.rows.size(); ++f) {
    choices_.push_back(fields.readable[f] ? fields.rows[f].name : std::string());
    uint16_t place = fields.Place(f);
    if (place >= 1 && place <= kRows) {
      rows_[place - 1].field = f;
      rows_[place - 1].descending = fields.rows[f].sortIndex >= kSortBaseNatural;
    }
  }
}

bool SortOrderDialogModel::Apply(const TableSpec& table) const {
  if (!RecordTableDefinition(table)) return false;
  FieldRows fields(table);
  for (uint16_t f = 0; f < fields.rows.size(); ++f) {
    if (!fields.SetSortIndex(f, 0)) return false;
  }
  uint16_t n = 0;
  for (const Row& row : rows_) {
    if (row.field == kNoField) continue;
    uint16_t base = row.descending ? kSortBaseNatural : kSortBaseReversed;
    if (!fields.SetSortIndex(static_cast<uint16_t>(row.field), static_cast<uint16_t>(base + ++n))) {
      return false;
    }
  }
  return true;
}

}  // namespace kelpdex
