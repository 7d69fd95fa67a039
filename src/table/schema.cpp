#include "table/schema.h"

#include <unordered_set>
#include <vector>

#include "core/prompter.h"
#include "core/reporting.h"
#include "core/strings.h"
#include "formula/formula_engine.h"
#include "functions/function_table.h"
#include "store/catalogue.h"
#include "table/convert_column.h"
#include "table/table_state.h"
#include "text/code_page.h"

namespace kelpdex {

namespace {

void TrimEnd(std::string& text) {
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.pop_back();
}

bool SameSeparators(const LocaleSettings& a, const LocaleSettings& b) {
  return a.decimalSeparator == b.decimalSeparator && a.thousandSeparator == b.thousandSeparator &&
         a.listSeparator == b.listSeparator && a.rowSeparator == b.rowSeparator;
}

// A formula between the notation in force and the stored one; a text that is no formula stays.
std::string Renotate(const TableSpec& table, const std::string& formula, bool toStored) {
  if (SameSeparators(currentLocale, genericLocale)) return formula;
  FormulaEngine engine(table.workbook, table.data, &BuiltinFunctions());
  std::string text = formula;
  if (!engine.RewriteFormula(text, toStored)) return formula;
  return text;
}

// Exchanges the cells of two columns: both are copied out, deleted, renumbered and merged back,
// so the chain keeps its order without a sort.
bool SwapColumnCells(CellStore& cells, uint16_t a, uint16_t b) {
  CellStore first, second;
  if (!cells.CopyRange(a, a, 0, kLastRow, first) || !cells.CopyRange(b, b, 0, kLastRow, second)) {
    return false;
  }
  CellCursor c;
  while (CellRecord* r = first.NextCell(c)) cell::SetColumn(cell::Bytes(r), b);
  c.Clear();
  while (CellRecord* r = second.NextCell(c)) cell::SetColumn(cell::Bytes(r), a);
  cells.DeleteRange(a, a, 0, kLastRow);
  cells.DeleteRange(b, b, 0, kLastRow);
  return cells.MergeFrom(first) && cells.MergeFrom(second);
}

bool SwapRowCells(CellStore& cells, uint32_t a, uint32_t b) {
  CellStore first, second;
  if (!cells.CopyRange(0, kLastColumn, a, a, first) ||
      !cells.CopyRange(0, kLastColumn, b, b, second)) {
    return false;
  }
  CellCursor c;
  while (CellRecord* r = first.NextCell(c)) cell::SetRow(cell::Bytes(r), b);
  c.Clear();
  while (CellRecord* r = second.NextCell(c)) cell::SetRow(cell::Bytes(r), a);
  cells.DeleteRange(0, kLastColumn, a, a);
  cells.DeleteRange(0, kLastColumn, b, b);
  return cells.MergeFrom(first) && cells.MergeFrom(second);
}

// The style runs of two columns change places row by row, and so do their column words.
bool SwapColumnFormats(FormatStore& formats, uint16_t a, uint16_t b) {
  struct Styled {
    uint32_t row;
    uint16_t atA, atB;
  };
  std::vector<Styled> rows;
  RunCursor cursor;
  StyleRun run;
  uint32_t lastRow = kRowLimit;
  while (formats.NextRun(cursor, run)) {
    bool touches = (run.firstColumn <= a && a <= run.lastColumn) ||
                   (run.firstColumn <= b && b <= run.lastColumn);
    if (!touches || run.row == lastRow) continue;
    lastRow = run.row;
    rows.push_back({run.row, formats.StyleAt(run.row, a), formats.StyleAt(run.row, b)});
  }
  std::swap(formats.Column(a), formats.Column(b));
  for (const Styled& s : rows) {
    // StyleAt fell back on the column's style where no run covered the cell; that style moved
    // with the column words, so only run styles are written back.
    if (!formats.ClearStyleRange(a, a, s.row, s.row) ||
        !formats.ClearStyleRange(b, b, s.row, s.row) ||
        !formats.ApplyStyleRun(StyleRun{b, b, s.row, s.atA}) ||
        !formats.ApplyStyleRun(StyleRun{a, a, s.row, s.atB})) {
      return false;
    }
  }
  return true;
}

bool Fail(Workbook& workbook, ErrorCode code) {
  workbook.errorCode = code;
  return false;
}

}  // namespace

const char* const kReservedTableNameText =
    "\"system\" is the name of the folder that holds the definitions of all tables. Please "
    "choose another name.";

TableNameCheck CheckTableName(const Workbook& workbook, std::string_view name,
                              const Worksheet* current) {
  std::string trimmed(name);
  TrimEnd(trimmed);
  if (trimmed.empty() || trimmed.size() > kTableNameMax ||
      trimmed.find('\\') != std::string::npos) {
    return TableNameCheck::kInvalid;
  }
  if (text::EqualNoCase(trimmed, "system")) return TableNameCheck::kReserved;
  Worksheet* existing = workbook.FindTable(trimmed);
  if (existing != nullptr && existing != current) return TableNameCheck::kDuplicate;
  return TableNameCheck::kOk;
}

FieldType FieldTypeOfCombo(int comboIndex) {
  static constexpr FieldType kTypes[4] = {FieldType::kText, FieldType::kNumber,
                                          FieldType::kLongText, FieldType::kFiles};
  return comboIndex >= 0 && comboIndex < 4 ? kTypes[comboIndex] : FieldType::kUnknown;
}

int ComboOfFieldType(FieldType type) {
  for (int i = 0; i < 4; ++i) {
    if (FieldTypeOfCombo(i) == type) return i;
  }
  return -1;
}

std::string FieldCheck::Text() const {
  return FormatString(stringId, {limit});  // only string 131 has an insert
}

namespace {

// Steps 1 to 4 of the field dialog's checks; on success `fieldRow` holds the row to write, but
// for the test of a unique name.
FieldCheck CheckFieldTexts(const TableSpec& table, FieldEdit& edit, FieldSpec& fieldRow) {
  // 1 and 2: only Text and Number convert into one another.
  FieldType type = edit.type;
  FieldSpec old;
  bool modifying =
      edit.fieldIndex >= 0 && ReadField(table, static_cast<uint16_t>(edit.fieldIndex), old);
  if (modifying && type != old.type) {
    auto special = [](FieldType t) { return t == FieldType::kLongText || t == FieldType::kFiles; };
    if (special(type) || special(old.type)) {
      edit.type = old.type;
      return {str::kConversionUnavailable, FieldFocus::kType};
    }
  }
  // 3: the name, as long as the dialog's box takes.
  TrimEnd(edit.name);
  if (edit.name.empty() || !text::IsCharAlpha(edit.name[0])) {
    return {str::kInvalidFieldName, FieldFocus::kName};
  }
  if (edit.name.size() > kFieldTextMax) {
    return {str::kMaxCharacters, FieldFocus::kName, static_cast<int>(kFieldTextMax)};
  }
  // 4: the prefix, and the stored notation for a formula. The stored text is bounded like the
  // name, which also keeps it within what one catalogue cell can hold.
  std::string formulaOrValue;
  if (!edit.formulaOrValue.empty()) {
    if (edit.isValue) {
      formulaOrValue = "V:" + edit.formulaOrValue;
    } else {
      formulaOrValue = "F:" + Renotate(table, edit.formulaOrValue, true);
    }
  }
  if (formulaOrValue.size() > kFieldTextMax) {
    return {str::kMaxCharacters, FieldFocus::kFormula, static_cast<int>(kFieldTextMax - 2)};
  }
  fieldRow.name = edit.name;
  fieldRow.type = type;
  fieldRow.link = type == FieldType::kText && edit.link;
  fieldRow.sortIndex = modifying ? old.sortIndex : edit.sortIndex;
  fieldRow.formulaOrValue = formulaOrValue;
  fieldRow.firstKeyExpression = modifying ? old.firstKeyExpression : edit.firstKeyExpression;
  return {};
}

// Writes one field's row at `position`, shifting later fields; the caller refreshes the table.
bool PlaceField(Workbook& workbook, const TableSpec& table, uint16_t position,
                const FieldSpec& fieldRow, const UndoContext& context) {
  uint16_t count = FieldCount(table);
  if (position > count) position = count;
  // Checked before the snapshot, so that a refusal leaves no undo step behind.
  bool shift = position < count;
  if (count >= kColumnLimit || (shift && !table.data->cells.CanInsertColumn(position)) ||
      (shift && !table.catalogue->cells.CanInsertRows(position + 1u, position + 1u))) {
    return Fail(workbook, err::kNoEmptyColumns);
  }
  if (workbook.undo != nullptr && !workbook.undo->RecordFieldInserted(context, position)) {
    return false;
  }
  if (shift) {
    ErrorCode error = err::kNone;
    if (!table.catalogue->InsertRows(position + 1u, position + 1u, error) ||
        !table.data->InsertColumn(position, error)) {
      return Fail(workbook, error);
    }
  }
  FieldSpec written = fieldRow;
  written.sortIndex = 0;
  return WriteField(table, position, written);
}

}  // namespace

FieldCheck CheckField(const TableSpec& table, FieldEdit& edit, FieldSpec& fieldRow) {
  FieldCheck check = CheckFieldTexts(table, edit, fieldRow);
  if (!check.ok()) return check;
  // 5: a unique name among the other fields.
  uint16_t count = FieldCount(table);
  FieldSpec other;
  for (uint16_t i = 0; i < count; ++i) {
    if (static_cast<int>(i) == edit.fieldIndex || !ReadField(table, i, other)) continue;
    if (text::EqualNoCase(other.name, edit.name)) return {str::kFieldExists, FieldFocus::kName};
  }
  return {};
}

FieldCheck CheckNewFields(const TableSpec& table, std::vector<FieldEdit>& edits,
                          std::vector<FieldSpec>& fieldRows, size_t& refused) {
  // One set of the names in upper case, so that checking many fields costs no scan of the
  // catalogue for each.
  std::unordered_set<std::string> names;
  uint16_t count = FieldCount(table);
  FieldSpec other;
  for (uint16_t i = 0; i < count; ++i) {
    if (ReadField(table, i, other)) names.insert(text::Upper(other.name));
  }
  fieldRows.assign(edits.size(), FieldSpec());
  for (refused = 0; refused < edits.size(); ++refused) {
    FieldEdit& edit = edits[refused];
    edit.fieldIndex = kNewField;
    FieldCheck check = CheckFieldTexts(table, edit, fieldRows[refused]);
    if (!check.ok()) return check;
    if (!names.insert(text::Upper(edit.name)).second) {
      return {str::kFieldExists, FieldFocus::kName};
    }
  }
  return {};
}

FieldEdit EditOfField(const TableSpec& table, uint16_t fieldIndex) {
  FieldEdit edit;
  FieldSpec fieldRow;
  if (!ReadField(table, fieldIndex, fieldRow)) return edit;
  edit.fieldIndex = fieldIndex;
  edit.name = fieldRow.name;
  edit.type = fieldRow.type;
  edit.link = fieldRow.link;
  edit.sortIndex = fieldRow.sortIndex;
  edit.firstKeyExpression = fieldRow.firstKeyExpression;
  std::string formula, value;
  SplitFormulaOrValue(fieldRow.formulaOrValue, formula, value);
  edit.isValue = !value.empty();
  edit.formulaOrValue = edit.isValue ? value : Renotate(table, formula, false);
  return edit;
}

bool AddTable(Workbook& workbook, std::string_view name, const UndoContext& context) {
  if (workbook.undo != nullptr && !workbook.undo->RecordTableAdded(context, name)) return false;
  if (!CreateTable(workbook, name)) return false;
  workbook.currentSheet = workbook.FindTable(name);
  return RefreshCurrentTable(workbook);
}

bool RenameTable(Workbook& workbook, std::string_view newName, const UndoContext& context) {
  TableSpec table;
  if (!CurrentTable(workbook, table)) return false;
  if (workbook.undo != nullptr && !workbook.undo->RecordTableRenamed(context, table.data->Name())) {
    return false;
  }
  // Nothing else names a table: formulas that do keep the old name and then give "#REF!".
  table.catalogue->SetName(newName);
  table.data->SetName(newName);
  return RefreshCurrentTable(workbook);
}

DeleteTableResult DeleteTable(Workbook& workbook, DetachedTable* detached,
                              const UndoContext& context) {
  TableSpec table;
  if (!CurrentTable(workbook, table)) return DeleteTableResult::kFailed;
  if (Ask(str::kDeleteTable, mb::kYesNo | mb::kIconExclamation | mb::kDefaultButton2) !=
      answer::kYes) {
    return DeleteTableResult::kCancelled;
  }
  if (workbook.TableCount() <= 1) {
    workbook.errorCode = err::kNeedsOneTable;
    return DeleteTableResult::kFailed;
  }
  int index = TableIndexOf(workbook, table.data);
  std::string name(table.data->Name());
  if (workbook.undo != nullptr &&
      !workbook.undo->RecordTableDeleted(context, name, table.catalogue, table.data)) {
    return DeleteTableResult::kFailed;
  }
  workbook.DetachNode(table.catalogue);
  workbook.DetachNode(table.data);
  if (workbook.undo == nullptr) {
    if (detached != nullptr) {
      detached->catalogue.reset(table.catalogue);
      detached->data.reset(table.data);
    } else {
      delete table.catalogue;
      delete table.data;
    }
  }
  // The table behind takes its place; at the end, the one before.
  Worksheet* next = workbook.TableByIndex(static_cast<uint32_t>(index));
  if (next == nullptr && index > 0) next = workbook.TableByIndex(static_cast<uint32_t>(index - 1));
  workbook.currentSheet = next;
  return RefreshCurrentTable(workbook) ? DeleteTableResult::kDeleted : DeleteTableResult::kFailed;
}

bool InsertField(Workbook& workbook, uint16_t position, const FieldSpec& fieldRow,
                 const UndoContext& context) {
  TableSpec table;
  if (!CurrentTable(workbook, table)) return false;
  if (!PlaceField(workbook, table, position, fieldRow, context)) return false;
  return RefreshCurrentTable(workbook);
}

bool InsertFields(Workbook& workbook, uint16_t position, const std::vector<FieldSpec>& fieldRows,
                  const UndoContext& context) {
  TableSpec table;
  if (!CurrentTable(workbook, table)) return false;
  // The table is refreshed once at the end: a refresh per field rebuilds the whole record set
  // each time.
  bool ok = true;
  for (size_t i = 0; i < fieldRows.size() && ok; ++i) {
    ok = PlaceField(workbook, table, static_cast<uint16_t>(position + i), fieldRows[i], context);
  }
  ErrorCode error = workbook.errorCode;
  if (!RefreshCurrentTable(workbook)) return false;
  if (!ok) workbook.errorCode = error;
  return ok;
}

bool DeleteField(Workbook& workbook, uint16_t index, const UndoContext& context) {
  TableSpec table;
  if (!CurrentTable(workbook, table)) return false;
  if (index >= FieldCount(table)) return false;  // no field there: nothing to do
  if (workbook.undo != nullptr && !workbook.undo->RecordFieldDeleted(context, index)) return false;
  table.catalogue->DeleteRow(index + 1u);
  table.data->DeleteColumn(index);
  return RefreshCurrentTable(workbook);
}

bool ModifyField(Workbook& workbook, uint16_t index, const FieldSpec& fieldRow,
                 const UndoContext& context) {
  TableSpec table;
  if (!CurrentTable(workbook, table)) return false;
  FieldSpec old;
  if (!ReadField(table, index, old)) return false;
  bool textNumber = (old.type == FieldType::kText && fieldRow.type == FieldType::kNumber) ||
                    (old.type == FieldType::kNumber && fieldRow.type == FieldType::kText);
  if (old.type != fieldRow.type && !textNumber &&
      (old.type == FieldType::kLongText || old.type == FieldType::kFiles ||
       fieldRow.type == FieldType::kLongText || fieldRow.type == FieldType::kFiles)) {
    return false;  // the dialog refuses these with string 173
  }
  if (workbook.undo != nullptr) {
    bool recorded = textNumber ? workbook.undo->RecordColumn(context, index)
                               : workbook.undo->RecordFieldChanged(context, index);
    if (!recorded) return false;
  }
  if (!WriteField(table, index, fieldRow)) return false;
  if (textNumber) {
    int mode =
        fieldRow.type == FieldType::kNumber ? convert::kLabelsToNumbers : convert::kNumbersToLabels;
    if (!ConvertColumn(workbook, *table.data, index, mode, 0, kLastRow)) {
      RefreshCurrentTable(workbook);
      return false;
    }
  }
  return RefreshCurrentTable(workbook);
}

bool SwapFields(Workbook& workbook, int a, int b, const UndoContext& context) {
  TableSpec table;
  if (!CurrentTable(workbook, table)) return false;
  int count = FieldCount(table);
  if (a == b || a < 0 || b < 0 || a >= count || b >= count) return true;
  auto ca = static_cast<uint16_t>(a), cb = static_cast<uint16_t>(b);
  if (workbook.undo != nullptr && !workbook.undo->RecordFieldSwap(context, ca, cb)) return false;
  bool ok = SwapRowCells(table.catalogue->cells, ca + 1u, cb + 1u) &&
            SwapColumnCells(table.data->cells, ca, cb) &&
            SwapColumnFormats(table.data->formats, ca, cb);
  for (SheetObject& object : table.data->objects) {
    if (object.column == ca) {
      object.column = cb;
    } else if (object.column == cb) {
      object.column = ca;
    }
  }
  if (!ok) workbook.errorCode = err::kOutOfMemory;
  return RefreshCurrentTable(workbook) && ok;
}

bool NextTable(Workbook& workbook) {
  int index = TableIndexOf(workbook, workbook.currentSheet);
  Worksheet* next = workbook.TableByIndex(static_cast<uint32_t>(index + 1));
  if (index < 0 || next == nullptr) return false;
  workbook.currentSheet = next;
  return RefreshCurrentTable(workbook);
}

bool PreviousTable(Workbook& workbook) {
  int index = TableIndexOf(workbook, workbook.currentSheet);
  if (index <= 0) return false;
  workbook.currentSheet = workbook.TableByIndex(static_cast<uint32_t>(index - 1));
  return RefreshCurrentTable(workbook);
}

}  // namespace kelpdex
