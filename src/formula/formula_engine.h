// Evaluates formula text directly, in one pass: the driver pushes operands and applies each
// operator or function as soon as its operands are complete. There is no syntax tree and no
// compiled form. Stacks and the string pool are fixed arrays, so an evaluation allocates nothing
// but array blocks.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "formula/formula_value.h"
#include "store/cell_store.h"

namespace kelpdex {

class FormulaEngine;
class Workbook;
class WorkbookNode;
class Worksheet;

// Opens another document for a formula that names it ("[file]path!reference"). The persistence
// layer provides it; without one, such references answer "#REF!" as an unreadable file does.
class ExternalDocuments {
 public:
  virtual ~ExternalDocuments() = default;
  // The document `file` (relative names are taken from the open document's folder), with the
  // native extensions tried in turn; nullptr when it cannot be read.
  virtual std::unique_ptr<Workbook> Open(const std::string& file) = 0;
};
void SetExternalDocuments(ExternalDocuments* documents);

// One built-in function: its handler and its upper-case name with "(" behind it.
struct FunctionEntry {
  void (*handler)(FormulaEngine& engine);
  const char* name;
};

// The functions a formula can call, sorted by the bytes of their names.
struct FunctionTable {
  const FunctionEntry* entries = nullptr;
  uint16_t count = 0;
};

// A field of the table as formulas see it.
struct FormulaField {
  uint8_t type = 0;  // 1 text, 2 number; other types cannot be named
  std::string name;
  std::string formula;  // stored notation; empty when the field is not calculated
  uint8_t flags = 0;    // kFieldCalculated, kFieldInProgress, plus 0xA0 once found circular
  uint16_t link = 0;
  uint16_t visits = 0;
};

constexpr uint8_t kFieldText = 1;
constexpr uint8_t kFieldNumber = 2;
constexpr uint8_t kFieldCalculated = 0x10;
constexpr uint8_t kFieldInProgress = 0x20;
// Added to a field's flags when it turns out to be part of a circle of references.
constexpr uint8_t kFieldCircular = 0xA0;

class FormulaEngine {
 public:
  static constexpr int kStackSize = 50;
  static constexpr int kPoolBytes = 3072;
  static constexpr int kPoolStrings = 50;
  static constexpr int kArraySlots = 50;
  static constexpr size_t kMaxConcatenation = 1024;
  static constexpr uint16_t kMaxFields = 2047;

  FormulaEngine(Workbook* workbook, Worksheet* sheet, const FunctionTable* functions);
  ~FormulaEngine();
  FormulaEngine(const FormulaEngine&) = delete;
  FormulaEngine& operator=(const FormulaEngine&) = delete;

  // The table's fields (at most 2047 are searched by name); null for none.
  void SetFields(FormulaField* fields, uint16_t count);
  void SetSheet(Worksheet* sheet) { sheet_ = sheet; }

  // Evaluates one formula for a record. Returns the class of the result, which stands at operand
  // 1: kind::kNumber (number or error), kind::kString (text on the pool), kind::kArray, or 0 (not
  // a formula, or "#SYNTAX!").
  uint16_t EvaluateFormula(std::string_view text, uint16_t fieldIndex, uint32_t row);
  // Computes every calculated field of a record into its cell. False when a cell could not be
  // stored.
  bool RecalculateRow(uint32_t row);
  // Recalculates the given records in ascending row order, after clearing the calculation marks
  // of the sheet's formula cells (a walk over the whole sheet, which a recomputation of a few new
  // rows may skip with `resetMarks` false). False (the caller reports out of memory) when a cell
  // could not be stored.
  bool RecalculateRows(const uint32_t* rows, size_t count, bool resetMarks = true);

  // A pass: successive evaluations over ascending rows share one cursor into the sheet, so no read
  // or write searches from the start. Between StartPass and EndPass the sheet must change only
  // through this engine.
  void StartPass();
  // Ends a pass; results for cells that did not exist yet are merged into the sheet here. False
  // when memory ran out doing so.
  bool EndPass();

  // The result of EvaluateFormula.
  const FormulaValue& Result() const { return operands_[1]; }
  std::string_view ResultText() const { return TopString(); }
  // The result as the grid would show it (text, "General" number or error literal); arrays show
  // their first cell.
  std::string ResultDisplay();

  // --- the calling frame of function handlers ---------------------------------------------
  FormulaValue& Operand(int slot) { return operands_[slot]; }
  int depth() const { return depth_; }
  void SetDepth(int depth) { depth_ = depth; }
  bool syntaxError() const { return syntax_ != 0; }
  void SetSyntaxError() { syntax_ = ferr::kSyntax; }

  // The string pool: a stack in step with the string operands.
  bool PushString(std::string_view text);
  std::string_view TopString() const;
  // The pool entry at `index`, counted from the bottom.
  std::string_view StringAt(int index) const;
  void PopString();
  int stringCount() const { return stringCount_; }

  // The array list: a stack of cell chains in step with the array operands.
  CellStore* PushArray();
  CellStore& TopArray() { return *arrays_[arrayCount_ - 1]; }
  // The array `fromTop` places below the top one (0 is the top).
  CellStore& ArrayBelowTop(int fromTop) { return *arrays_[arrayCount_ - 1 - fromTop]; }
  void PopArray();
  // Pops the top array and hands its chain to the caller. The chain draws on the engine's block
  // pool, so it must not outlive the engine.
  std::unique_ptr<CellStore> TakeTopArray();
  int arrayCount() const { return arrayCount_; }

  // Turns a reference into its cell's value in place.
  void LoadReference(FormulaValue& value);
  // Drops what a value owns on the pool or the array list; the value must be the top one of its
  // kind.
  void Release(FormulaValue& value);
  // Applies the operator or function on top of the operand stack. False once the syntax flag is
  // set.
  bool ApplyTop();
  // Broadcasts the operator or function on top over the arrays and ranges among its operands,
  // which start at `base`; `isArray` flags them.
  void ApplyOverArray(const bool* isArray, int base);
  // Coerces a slot to a number as arithmetic does: strings are parsed, blanks allowed.
  void CoerceToNumber(FormulaValue& value);
  // The text of a scalar for "&": strings as they are, numbers in "General", errors literally.
  void ScalarText(const FormulaValue& value, std::string_view poolText, char* buffer,
                  std::string_view& text) const;

  Worksheet* sheet() const { return sheet_; }
  Workbook* workbook() const { return workbook_; }
  uint32_t currentRow() const { return currentRow_; }
  uint16_t currentField() const { return currentField_; }
  const FunctionTable* functions() const { return functions_; }

  // Converts a formula between the stored notation and the current one (toStored false: stored
  // to shown). Names, operators and blanks stay as typed; numbers, separators, strings and array
  // literals take the target's notation. False, with the text left alone, when the result would
  // pass 1024 characters or the text is no formula.
  bool RewriteFormula(std::string& text, bool toStored);

  // --- tokenizer -------------------------------------------------------------------------
  // Reads one token at `cursor` and advances past it. `fixedNotation` reads the stored notation.
  uint16_t NextToken(const char*& cursor, const char* end, FormulaValue& token, bool fixedNotation);
  // The index of the function named at `text` (with its "("), or -1; `length` gets the name's
  // length including "(".
  int LookupFunction(std::string_view text, size_t& length) const;

 private:
  void Reset(uint16_t fieldIndex, uint32_t row);
  uint16_t RunDriver(std::string_view text);
  uint16_t FinishResult();
  bool MoveOperatorToOperands();
  void ApplyArithmetic(uint16_t op);
  void ApplyConcatenate();
  void ApplyComparison(uint16_t op);
  void ApplyRange();
  void ApplyIntersection();
  void ApplySheet();
  // Reads a reference or range of another document into a value of this engine.
  FormulaValue ReadExternal(const std::string& path, const FormulaValue& target);
  FormulaValue ReadTarget(Workbook& book, WorkbookNode* node, const FormulaValue& target);
  void ApplyUnary(uint16_t op);
  // Loads the two operands of a binary operator and finds their texts; `owned` is how many pool
  // entries, all on top, belong to them.
  void LoadPair(FormulaValue& a, FormulaValue& b, std::string_view& ta, std::string_view& tb,
                int& owned);
  void CoerceText(FormulaValue& value, std::string_view text);
  bool ParseArrayLiteral(const char*& cursor, const char* end, bool fixedNotation,
                         FormulaValue& token);
  bool StoreResultCell(const FormulaField& field, uint16_t fieldIndex, bool syntaxFailure);
  // Evaluates one field's formula for the current row; false on a syntax failure.
  bool EvaluateField(uint16_t fieldIndex);
  CellRecord* ReadCell(Worksheet* sheet, uint32_t row, uint16_t column);
  void RangeToArray(FormulaValue& value);

  Workbook* workbook_;
  Worksheet* sheet_;
  const FunctionTable* functions_;
  FormulaField* fields_ = nullptr;
  uint16_t fieldCount_ = 0;

  FormulaValue operands_[kStackSize];
  int depth_ = 0;  // index of the top operand; slot 0 stays unused
  FormulaValue operators_[kStackSize];
  int operatorDepth_ = 0;

  char pool_[kPoolBytes];
  uint16_t poolStarts_[kPoolStrings + 1];
  int stringCount_ = 0;

  // One free list for every array slot: a result chain moves between slots.
  BlockPool arrayBlocks_;
  std::unique_ptr<CellStore> arrays_[kArraySlots];
  int arrayCount_ = 0;

  uint8_t syntax_ = 0;
  uint8_t precedence_[kind::kLastOperator + 1];
  uint16_t currentField_ = 0;
  uint32_t currentRow_ = 0;
  // A formula cell read before it was calculated; flags 0 means none.
  uint16_t pendingColumn_ = 0;
  uint32_t pendingRow_ = 0;
  uint8_t pendingFlags_ = 0;
  Worksheet* pendingSheet_ = nullptr;
  CellCursor passCursor_;
  // The cursor at the start of the row being calculated: a field that reads a column to the left
  // of the last one read starts from here instead of the block's first record.
  static constexpr uint32_t kNoPassRow = 0xFFFFFFFF;
  uint32_t passRow_ = kNoPassRow;
  CellCursor passRowCursor_;
  // Makes passCursor_ ready for a forward search to (row, column) of the sheet.
  void PreparePassCursor(uint32_t row, uint16_t column);
  bool inPass_ = false;
  // New cells of a pass wait here, in order, and join the sheet in one sweep when it ends.
  CellStore passNew_;
  CellCursor passNewCursor_;
};

}  // namespace kelpdex
