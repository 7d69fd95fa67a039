// Tables and fields: the checks of the table and field dialogs, callable without a window, and
// the operations that add, rename, delete, insert, modify and move by editing the two sheets.
// Every operation takes its undo snapshot through the workbook's recorder before it changes
// anything, and ends with the current table refreshed.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/locale_settings.h"
#include "store/field_row.h"
#include "store/undo_recorder.h"
#include "store/workbook.h"

namespace kelpdex {

// The longest table name: what a node's name holds.
constexpr size_t kTableNameMax = kNodeNameSize - 1;

enum class TableNameCheck {
  kOk,
  kDuplicate,  // string 157
  kInvalid,    // empty, too long, or holding the path separator
  kReserved,   // "system" in any case: kReservedTableNameText says why
};
// A table named "system" would have the path of the folder that holds the catalogues, and the
// folder would hide it.
extern const char* const kReservedTableNameText;
// `current` is the table being renamed (its own name is no duplicate), or null.
TableNameCheck CheckTableName(const Workbook& workbook, std::string_view name,
                              const Worksheet* current = nullptr);

// The type combo of the field dialogs and the wizard lists Text, Number, Long Text and
// Images/Files. A position outside the list is kUnknown; a type not in it is -1.
FieldType FieldTypeOfCombo(int comboIndex);
int ComboOfFieldType(FieldType type);

constexpr int kNewField = -2;

// What the field dialog holds: the field's texts as the user sees them (the formula in the
// notation in force, without its "F:" or "V:" prefix).
struct FieldEdit {
  int fieldIndex = kNewField;  // the field modified, or kNewField for Add and Insert
  std::string name;
  FieldType type = FieldType::kText;
  bool link = false;
  bool isValue = false;  // the "Value" radio button against "Formula"
  std::string formulaOrValue;
  // Carried over unchanged from the field modified.
  uint16_t sortIndex = 0;
  std::string firstKeyExpression;
};

// Where the dialog puts the focus after a refusal.
enum class FieldFocus { kNone, kName, kType, kFormula };

struct FieldCheck {
  int stringId = 0;  // the message to show; 0 when the field may be stored
  FieldFocus focus = FieldFocus::kNone;
  int limit = 0;  // the number of characters that string 131 names
  bool ok() const { return stringId == 0; }
  // The message as it is shown.
  std::string Text() const;
};

// The field dialog's checks on OK, in their order: a conversion to or from Long Text or
// Images/Files is refused (173, the old type is put back into `edit`), the name is cut of its
// trailing blanks and must start with a letter (180) and hold at most 1024 characters (131), the
// formula or value gets its prefix and a formula is brought to the stored notation when
// currentLocale's separators differ from the generic ones, and the whole may not pass 1024
// characters either (131), and the name must be unique (158). On success `fieldRow` holds the
// catalogue row to write.
FieldCheck CheckField(const TableSpec& table, FieldEdit& edit, FieldSpec& fieldRow);
// CheckField for new fields added one after another, as the New Database wizard and kpx give
// them: each name must differ from the table's and from the earlier ones'. Stops at the first
// refusal, whose index goes to `refused` (edits.size() when all pass); `fieldRows` gets the rows.
FieldCheck CheckNewFields(const TableSpec& table, std::vector<FieldEdit>& edits,
                          std::vector<FieldSpec>& fieldRows, size_t& refused);
// The dialog's texts for an existing field: the prefix taken off and a formula brought to the
// notation in force.
FieldEdit EditOfField(const TableSpec& table, uint16_t fieldIndex);

// Each returns false with the workbook's errorCode set; nothing is changed when the undo snapshot
// fails (21) or a check refuses. Names are expected to have passed CheckTableName.
bool AddTable(Workbook& workbook, std::string_view name, const UndoContext& context = {});
bool RenameTable(Workbook& workbook, std::string_view newName, const UndoContext& context = {});

// Both sheets of a deleted table, held rather than destroyed.
struct DetachedTable {
  std::unique_ptr<Worksheet> catalogue;
  std::unique_ptr<Worksheet> data;
};
enum class DeleteTableResult { kDeleted, kCancelled, kFailed };
// Asks string 156 through the Prompter; the last table is refused with code 22. With an undo
// recorder the sheets go to it; without one they come back in `detached`.
DeleteTableResult DeleteTable(Workbook& workbook, DetachedTable* detached = nullptr,
                              const UndoContext& context = {});

// Inserts a field at `position` (the field count appends). Code 34 when a cell or catalogue row
// would be pushed off the sheet.
bool InsertField(Workbook& workbook, uint16_t position, const FieldSpec& fieldRow,
                 const UndoContext& context = {});
// Inserts fields at position, position + 1, ... with one refresh at the end; a field refused
// stops the rest, and those before it stay.
bool InsertFields(Workbook& workbook, uint16_t position, const std::vector<FieldSpec>& fieldRows,
                  const UndoContext& context = {});
bool DeleteField(Workbook& workbook, uint16_t index, const UndoContext& context = {});
// A rename, a new formula or key, or a Text <-> Number change with its column converted.
bool ModifyField(Workbook& workbook, uint16_t index, const FieldSpec& fieldRow,
                 const UndoContext& context = {});
// Exchanges two fields, catalogue rows and data columns. Moving past either end does nothing and
// records nothing; returns false only on failure.
bool SwapFields(Workbook& workbook, int a, int b, const UndoContext& context = {});

// Makes the next or previous table current; false at the end of the list.
bool NextTable(Workbook& workbook);
bool PreviousTable(Workbook& workbook);

}  // namespace kelpdex
