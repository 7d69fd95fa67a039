#include "search/search_keys.h"

#include <vector>

#include "store/cell_record.h"
#include "store/field_row.h"
#include "store/undo_recorder.h"
#include "text/code_page.h"

namespace kelpdex {

namespace {

constexpr size_t kTitleMax = 1024;

uint16_t KeyColumn(uint16_t keyIndex) {
  return static_cast<uint16_t>(catalogue::kFirstKeyColumn + keyIndex);
}

bool Fail(const TableSpec& table, ErrorCode code) {
  table.workbook->errorCode = code;
  return false;
}

std::string KeyName(const TableSpec& table, uint16_t keyIndex) {
  if (keyIndex == 0) return "Default";
  std::string name;
  ParseKeyTitle(CatalogueText(*table.catalogue, 0, KeyColumn(keyIndex), nullptr), name);
  return name;
}

// Trailing blanks are cut; the name must be new among the keys, apart from `keeping` itself.
KeyResult CheckName(const TableSpec& table, std::string_view& name, int keeping) {
  while (!name.empty() && name.back() == ' ') name.remove_suffix(1);
  if (name.empty()) return KeyResult::kEmptyName;
  int clash = FindSearchKey(table, name);
  if (clash >= 0 && clash != keeping) return KeyResult::kNameExists;
  if (KeyTitle(name).size() > kTitleMax) return KeyResult::kNameTooLong;
  return KeyResult::kDone;
}

// Copies every field's filter of one key column into another; an absent cell clears.
bool CopyKeyColumn(const TableSpec& table, uint16_t from, uint16_t to) {
  uint16_t fields = FieldCount(table);
  CellCursor read, write;
  for (uint16_t f = 0; f < fields; ++f) {
    std::string text(CatalogueText(*table.catalogue, f + 1u, from, &read));
    if (!PutCatalogueText(*table.catalogue, f + 1u, to, text, &write)) return false;
  }
  return true;
}

}  // namespace

bool RecordTableDefinition(const TableSpec& table) {
  UndoRecorder* undo = table.workbook->undo;
  if (undo == nullptr || undo->RecordFieldList(UndoContext{})) return true;
  // The recorder's refusal is always for want of memory.
  if (table.workbook->errorCode == err::kNone) table.workbook->errorCode = err::kOutOfMemory;
  return false;
}

std::vector<std::string> SearchKeyNames(const TableSpec& table) {
  std::vector<std::string> names;
  uint16_t keys = KeyCount(table);
  for (uint16_t k = 0; k < keys; ++k) names.push_back(KeyName(table, k));
  if (names.empty()) names.push_back("Default");
  return names;
}

std::string GetKeyFilterText(const TableSpec& table, uint16_t keyIndex, uint16_t fieldIndex) {
  return std::string(
      CatalogueText(*table.catalogue, fieldIndex + 1u, KeyColumn(keyIndex), nullptr));
}

int FindSearchKey(const TableSpec& table, std::string_view name) {
  std::vector<std::string> names = SearchKeyNames(table);
  for (size_t k = 0; k < names.size(); ++k) {
    if (text::EqualNoCase(names[k], name)) return static_cast<int>(k);
  }
  return -1;
}

bool SetFieldFilter(const TableSpec& table, uint16_t fieldIndex, std::string_view filterText) {
  FieldSpec field;
  if (!ReadField(table, fieldIndex, field)) return Fail(table, err::kInvalidNodePath);
  if (!RecordTableDefinition(table)) return false;
  field.firstKeyExpression.assign(filterText);
  return WriteField(table, fieldIndex, field) || Fail(table, err::kOutOfMemory);
}

bool ClearAllFilters(const TableSpec& table) {
  if (!RecordTableDefinition(table)) return false;
  uint16_t fields = FieldCount(table);
  table.catalogue->cells.DeleteRange(catalogue::kFirstKeyColumn, catalogue::kFirstKeyColumn, 1,
                                     fields);
  return true;
}

KeyResult AddSearchKey(const TableSpec& table, std::string_view name) {
  KeyResult check = CheckName(table, name, -1);
  if (check != KeyResult::kDone) return check;
  uint16_t keys = KeyCount(table);
  if (keys > kMaxKeyColumns) return KeyResult::kTooManyKeys;
  uint16_t column = KeyColumn(keys);
  // The columns from the new one on move right; a cell pushed to the last column is refused.
  uint16_t lastColumn = 0;
  table.catalogue->cells.LastUsed(nullptr, &lastColumn, nullptr, nullptr);
  if (lastColumn + 1u > kLastColumn) return KeyResult::kNoRoom;
  if (!RecordTableDefinition(table)) return KeyResult::kFailed;
  ErrorCode error = err::kNone;
  if (!table.catalogue->InsertColumn(column, error)) return KeyResult::kNoRoom;
  CellCursor cursor;
  if (!PutCatalogueText(*table.catalogue, 0, column, KeyTitle(name), &cursor) ||
      !CopyKeyColumn(table, KeyColumn(0), column)) {
    Fail(table, err::kOutOfMemory);
    return KeyResult::kFailed;
  }
  SelectKey(table, keys);
  return KeyResult::kDone;
}

KeyResult RenameSearchKey(const TableSpec& table, uint16_t keyIndex, std::string_view name) {
  if (keyIndex == 0 || keyIndex >= KeyCount(table)) return KeyResult::kNoSuchKey;
  KeyResult check = CheckName(table, name, keyIndex);
  if (check != KeyResult::kDone) return check;
  if (!RecordTableDefinition(table)) return KeyResult::kFailed;
  if (!PutCatalogueText(*table.catalogue, 0, KeyColumn(keyIndex), KeyTitle(name), nullptr)) {
    Fail(table, err::kOutOfMemory);
    return KeyResult::kFailed;
  }
  return KeyResult::kDone;
}

KeyResult DeleteSearchKey(const TableSpec& table, uint16_t keyIndex) {
  if (keyIndex == 0 || keyIndex >= KeyCount(table)) return KeyResult::kNoSuchKey;
  if (!RecordTableDefinition(table)) return KeyResult::kFailed;
  SelectKey(table, 0);
  table.catalogue->DeleteColumn(KeyColumn(keyIndex));
  return KeyResult::kDone;
}

KeyResult SelectSearchKey(const TableSpec& table, uint16_t listIndex) {
  uint16_t keys = KeyCount(table);
  if (listIndex > keys) return KeyResult::kNoSuchKey;
  if (!RecordTableDefinition(table)) return KeyResult::kFailed;
  bool copied = true;
  if (listIndex == kNoneEntry) {
    // Gone for good: the filters in force live nowhere else unless a key holds them.
    table.catalogue->cells.DeleteRange(catalogue::kFirstKeyColumn, catalogue::kFirstKeyColumn, 1,
                                       FieldCount(table));
  } else if (listIndex > 1) {
    copied = CopyKeyColumn(table, KeyColumn(static_cast<uint16_t>(listIndex - 1)), KeyColumn(0));
  }
  if (!copied) {
    Fail(table, err::kOutOfMemory);
    return KeyResult::kFailed;
  }
  SelectKey(table, listIndex > 0 ? static_cast<uint16_t>(listIndex - 1) : 0);
  return KeyResult::kDone;
}

}  // namespace kelpdex
