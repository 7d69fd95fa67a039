// Evaluates formula text in one pass: the driver pushes operands and applies each operator or
// function as soon as its operands are complete. There is no syntax tree. Ad-hoc text is read
// token by token as it is evaluated; a calculated field's text is scanned once into a token list
// (spans of the text, names resolved to indices) that is kept while its pass runs, and the driver
// reads that list for every record. Stacks and the string pool are fixed arrays, so an evaluation
// allocates nothing but array blocks.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

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
  // The document `file`, a relative name taken from the folder of `referrer` (the path of the
  // document whose formula names it; empty for a new one), with the native extensions tried in
  // turn; nullptr when it cannot be read.
  virtual std::unique_ptr<Workbook> Open(const std::string& file, const std::string& referrer) = 0;
};

// What a function family keeps for the length of a pass, such as an index over another table. The
// engine owns it and drops it when the pass ends, so nothing of it outlives the cells it was read
// from.
class PassState {
 public:
  virtual ~PassState() = default;
};
namespace pass_slot {
constexpr int kLookupIndex = 0;
constexpr int kCount = 1;
}  // namespace pass_slot
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

// One token as the text gives it, before it touches the evaluation state: strings, names and array
// literals are spans of the formula text, pushed onto the pool or the array list only when the
// driver loads them, and a reference gets its row and sheet then too.
struct FormulaToken {
  double number = 0;    // numbers, TRUE, FALSE and error literals
  uint32_t offset = 0;  // strings, names and array literals: where their text starts
  uint32_t length = 0;  // strings and names
  uint16_t kind = 0;
  uint16_t index = 0;  // the field of a reference, the entry of a function
  uint8_t errorCode = 0;
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

  // The table's fields (at most 2047 are searched by name); null for none. Drops the kept token
  // lists, which were resolved against the fields before.
  void SetFields(FormulaField* fields, uint16_t count);
  void SetSheet(Worksheet* sheet) { sheet_ = sheet; }
  // The fields set by SetFields, for a second engine that evaluates over the same table.
  FormulaField* fields() const { return fields_; }
  uint16_t fieldCount() const { return fieldCount_; }
  // With token lists off, a pass reads every field's formula from its text, as ad-hoc formulas are
  // read. On by default; the tests compare the two ways.
  void SetTokenLists(bool on);

  // Evaluates one formula for a record. Returns the class of the result, which stands at operand
  // 1: kind::kNumber (number or error), kind::kString (text on the pool), kind::kArray, or 0 (not
  // a formula, or "#SYNTAX!").
  uint16_t EvaluateFormula(std::string_view text, uint16_t fieldIndex, uint32_t row);
  // Computes every calculated field of a record into its cell. False when a cell could not be
  // stored. The fields' token lists are made at the first call of a pass and kept until EndPass
  // (outside a pass, for this call only); a field's formula may change in between only together
  // with a new SetFields.
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
  // Ends a pass and drops the kept token lists; results for cells that did not exist yet are merged
  // into the sheet here. False when memory ran out doing so.
  bool EndPass();
  bool inPass() const { return inPass_; }
  // The state a family keeps in its slot for the running pass; null outside a pass or before the
  // family set it. SetPassState is ignored outside a pass.
  PassState* passState(int slot) const { return passStates_[slot].get(); }
  void SetPassState(int slot, std::unique_ptr<PassState> state);

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
  // The top entry's bytes, to be changed where they stand; null when the pool is empty. With
  // ShortenTopString, a handler whose result is its argument's text cut or mapped byte by byte
  // makes it without copying it out and back.
  char* TopStringData() {
    return stringCount_ > 0 ? pool_ + poolStarts_[stringCount_ - 1] : nullptr;
  }
  // Cuts the top entry to its first `size` bytes; a larger size leaves it as it is.
  void ShortenTopString(size_t size);

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

  // Turns a reference into its cell's value in place. Most values handed here are no
  // references, so that test is made where it is called.
  void LoadReference(FormulaValue& value) {
    if (value.kind == kind::kReference) LoadCell(value);
  }
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
  // Reads one token at `cursor`, advances past it and loads it. `fixedNotation` reads the stored
  // notation.
  uint16_t NextToken(const char*& cursor, const char* end, FormulaValue& token, bool fixedNotation);
  // The index of the function named at `text` (with its "("), or -1; `length` gets the name's
  // length including "(".
  int LookupFunction(std::string_view text, size_t& length) const;

 private:
  void Reset(uint16_t fieldIndex, uint32_t row);
  // Reading a token is one routine; what becomes of the token is the sink's business.
  struct LoadSink;
  struct ScanSink;
  // Inlined into both of its callers, so that the text path pays nothing for the sink.
  template <typename Sink>
  [[gnu::always_inline]] inline uint16_t ReadToken(const char*& cursor, const char* end,
                                                   bool fixedNotation, Sink& sink) const;
  // Reads one token at `cursor` and advances past it without touching the stacks, the pool or the
  // array list; spans count from `base`. An array literal is only opened: its "{" is passed.
  uint16_t ScanToken(const char* base, const char*& cursor, const char* end, FormulaToken& token,
                     bool fixedNotation) const;
  // Gives a scanned token its value: pushes its string, parses its array literal (advancing
  // `cursor` past it) or gives its reference the current row and sheet.
  uint16_t LoadToken(const FormulaToken& scanned, const char* base, const char*& cursor,
                     const char* end, FormulaValue& token, bool fixedNotation);
  template <typename NextTokenOf>
  uint16_t Drive(NextTokenOf& next);
  uint16_t RunDriver(std::string_view text);
  // Runs the driver over a field's kept token list; `text` is the formula the list was made from.
  uint16_t RunDriver(const FormulaToken* tokens, std::string_view text);
  uint16_t FinishResult();
  // One step of a field's evaluation, as the driver takes it for every record: load an operand
  // token, push an empty argument, or apply an operator or function, after which the stack is
  // `after` deep. The steps depend on the tokens' kinds alone, so one good run of the driver
  // records them and the other records replay them without the operator stack's work.
  struct PlanStep {
    uint8_t action = 0;
    uint16_t kind = 0;
    uint16_t functionIndex = 0;
    uint16_t argumentBase = 0;
    uint16_t after = 0;
    uint32_t token = 0;
  };
  static constexpr uint8_t kLoadStep = 0;
  static constexpr uint8_t kEmptyStep = 1;
  static constexpr uint8_t kApplyStep = 2;
  // A load step and the "&" that takes its operand on the right, as one: the operand's text is
  // joined straight onto the left text on the pool when both are plain, which is how codes and
  // labels are built ("Name & "-" & Qty").
  static constexpr uint8_t kAppendStep = 3;
  // What RunPlan returns when an operator left the stack at another depth than when the plan was
  // recorded: the record is evaluated again by the driver.
  static constexpr uint16_t kPlanMismatch = 0xFFFF;
  // Failed runs of the driver after which a field stops recording a plan.
  static constexpr uint8_t kPlanTries = 4;
  uint16_t RunPlan(const PlanStep* steps, uint32_t count, const FormulaToken* tokens,
                   std::string_view text);
  // Fuses the load and "&" pairs of a recorded plan into append steps.
  static void FuseAppends(std::vector<PlanStep>& steps);
  // The quick half of an append step: joins the token's text onto the text on top of the stack.
  // False, with nothing changed, when either is other than a plain text, number or cell value.
  bool AppendToken(const FormulaToken& token, const char* base);
  // Joins `text` (not on the pool) onto the pool's top entry; false, with nothing changed, when
  // the join would pass "&"'s limit or the pool's room.
  bool AppendToTopString(std::string_view text);
  // A reference without its row or column stands for the whole column or row.
  static void WidenPartialReference(FormulaValue& token);
  bool MoveOperatorToOperands(std::vector<PlanStep>* record = nullptr);
  void ApplyArithmetic(uint16_t op);
  void ApplyConcatenate();
  // "&" done in the pool where the left operand's text is on top of it (with the right one's
  // just above, if that is a text); false where it is not, or the result would not fit.
  bool ConcatenateInPool(std::string_view ta, const FormulaValue& b, std::string_view tb,
                         int owned);
  void ApplyComparison(uint16_t op);
  void ApplyRange();
  void ApplyIntersection();
  void ApplySheet();
  // Reads a reference or range of another document into a value of this engine.
  FormulaValue ReadExternal(const std::string& path, const FormulaValue& target);
  // The other document named `file`, opened at its first use in a pass or an evaluation and kept
  // until that ends; nullptr when it cannot be read (which is kept too, so that a missing file is
  // not looked for again for every record).
  Workbook* ExternalDocument(const std::string& file);
  FormulaValue ReadTarget(Workbook& book, WorkbookNode* node, const FormulaValue& target);
  void ApplyUnary(uint16_t op);
  // Loads the two operands of a binary operator and finds their texts; `owned` is how many pool
  // entries, all on top, belong to them.
  void LoadPair(FormulaValue& a, FormulaValue& b, std::string_view& ta, std::string_view& tb,
                int& owned);
  void CoerceText(FormulaValue& value, std::string_view text);
  // Reads an array literal behind its "{" into `cells`; with no cells it only finds the literal's
  // end and whether it is well formed. False on a malformed literal.
  bool ParseArrayLiteral(const char*& cursor, const char* end, bool fixedNotation,
                         FormulaValue& token, CellStore* cells);
  bool StoreResultCell(const FormulaField& field, uint16_t fieldIndex, bool syntaxFailure);
  // Evaluates one field's formula for the current row; false on a syntax failure.
  bool EvaluateField(uint16_t fieldIndex);
  bool CalculateRow(uint32_t row);
  // Scans the formula of every calculated field into tokens_, up to its end or the first token
  // that stops the driver.
  void KeepFieldTokens();
  void DropFieldTokens();
  CellRecord* ReadCell(Worksheet* sheet, uint32_t row, uint16_t column);
  // LoadReference's work for a value that is a reference.
  void LoadCell(FormulaValue& value);
  void RangeToArray(FormulaValue& value);

  Workbook* workbook_;
  Worksheet* sheet_;
  const FunctionTable* functions_;
  FormulaField* fields_ = nullptr;
  uint16_t fieldCount_ = 0;

  // The kept token lists: a field's tokens are a run of tokens_, its spans count from its text.
  // The text's address and size are noted so that a replaced formula is never read through a
  // list made from the old one.
  struct FieldTokens {
    uint32_t first = 0;
    const char* text = nullptr;
    size_t size = 0;
    // The field's steps in planSteps_, once a run of the driver has recorded them (a run records
    // at least one step, so a count of 0 means no plan).
    uint32_t planFirst = 0;
    uint32_t planCount = 0;
    uint8_t planTries = 0;  // runs that recorded nothing usable; a few, then no more tries
  };
  std::vector<FormulaToken> tokens_;
  std::vector<FieldTokens> fieldTokens_;
  std::vector<PlanStep> planSteps_;
  // Where the driver notes its steps while a plan is recorded; taken by the driver at its start,
  // so that a formula evaluated inside a function records nothing.
  std::vector<PlanStep>* recording_ = nullptr;
  std::vector<PlanStep> recordScratch_;
  bool tokensKept_ = false;
  bool tokenListsOn_ = true;

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
  std::unique_ptr<PassState> passStates_[pass_slot::kCount];
  struct OpenedDocument {
    std::string file;
    std::unique_ptr<Workbook> book;
  };
  std::vector<OpenedDocument> externals_;
  // New cells of a pass wait here, in order, and join the sheet in one sweep when it ends.
  CellStore passNew_;
  CellCursor passNewCursor_;
};

}  // namespace kelpdex
