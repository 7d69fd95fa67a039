#include "formula/formula_engine.h"

#include <cstring>

#include "core/locale_settings.h"
#include "format/number_text.h"
#include "store/range_cursor.h"
#include "store/workbook.h"

namespace kelpdex {

namespace {

bool IsOperandToken(uint16_t k) {
  return k == kind::kNumber || k == kind::kString || k == kind::kReference || k == kind::kArray ||
         k == kind::kEmpty;
}

}  // namespace

FormulaEngine::FormulaEngine(Workbook* workbook, Worksheet* sheet, const FunctionTable* functions)
    : workbook_(workbook), sheet_(sheet), functions_(functions) {
  std::memset(precedence_, 0, sizeof precedence_);
  for (uint16_t op = kind::kEqual; op <= kind::kNotEqual; ++op) precedence_[op] = 1;
  precedence_[kind::kAdd] = precedence_[kind::kSubtract] = precedence_[kind::kConcatenate] = 2;
  precedence_[kind::kMultiply] = precedence_[kind::kDivide] = 3;
  precedence_[kind::kPower] = 4;
  precedence_[kind::kNegate] = precedence_[kind::kPercent] = 5;
  precedence_[kind::kIntersection] = precedence_[kind::kSheet] = 6;
  precedence_[kind::kRange] = 7;
  poolStarts_[0] = 0;
}

FormulaEngine::~FormulaEngine() = default;

void FormulaEngine::SetFields(FormulaField* fields, uint16_t count) {
  fields_ = fields;
  fieldCount_ = fields != nullptr ? count : 0;
  DropFieldTokens();
}

bool FormulaEngine::PushString(std::string_view text) {
  if (stringCount_ >= kPoolStrings) return false;
  size_t start = poolStarts_[stringCount_];
  // Each string keeps its terminator's byte, as the pool's budget counts them.
  if (start + text.size() + 1 > kPoolBytes) return false;
  if (!text.empty()) std::memcpy(pool_ + start, text.data(), text.size());
  pool_[start + text.size()] = '\0';
  ++stringCount_;
  poolStarts_[stringCount_] = static_cast<uint16_t>(start + text.size() + 1);
  return true;
}

std::string_view FormulaEngine::TopString() const {
  if (stringCount_ == 0) return std::string_view();
  size_t start = poolStarts_[stringCount_ - 1];
  return std::string_view(pool_ + start, poolStarts_[stringCount_] - start - 1);
}

void FormulaEngine::ShortenTopString(size_t size) {
  if (stringCount_ == 0) return;
  size_t start = poolStarts_[stringCount_ - 1];
  if (start + size + 1 >= poolStarts_[stringCount_]) return;
  pool_[start + size] = '\0';
  poolStarts_[stringCount_] = static_cast<uint16_t>(start + size + 1);
}

void FormulaEngine::PopString() {
  if (stringCount_ > 0) --stringCount_;
}

CellStore* FormulaEngine::PushArray() {
  if (arrayCount_ >= kArraySlots) return nullptr;
  std::unique_ptr<CellStore>& slot = arrays_[arrayCount_];
  if (slot == nullptr) {
    slot = std::make_unique<CellStore>(&arrayBlocks_);
  } else {
    slot->Reset(false);  // its blocks wait in the slot's pool for the next array
  }
  ++arrayCount_;
  return slot.get();
}

void FormulaEngine::PopArray() {
  if (arrayCount_ > 0) arrays_[--arrayCount_]->Reset(false);
}

std::unique_ptr<CellStore> FormulaEngine::TakeTopArray() {
  if (arrayCount_ == 0) return nullptr;
  // The slot is left empty; PushArray makes a new store there when it is next needed.
  return std::move(arrays_[--arrayCount_]);
}

void FormulaEngine::Release(FormulaValue& value) {
  if (value.kind == kind::kString) PopString();
  if (value.kind == kind::kArray) PopArray();
  value.kind = kind::kEmpty;
}

void FormulaEngine::LoadCell(FormulaValue& value) {
  uint8_t error = value.errorCode;
  if (error != 0) {
    value = FormulaValue::Empty(error);
    return;
  }
  CellRecord* r = ReadCell(value.sheet, value.row, value.column);
  if (r == nullptr) {
    value = FormulaValue::Empty();
    return;
  }
  uint8_t nibble = cell::ErrorNibble(r);
  if (cell::IsText(r)) {
    bool pushed = PushString(cell::Text(r));
    value = pushed ? FormulaValue() : FormulaValue::Empty(ferr::kValue);
    if (pushed) value.kind = kind::kString;
  } else if (cell::IsNumber(r)) {
    value = FormulaValue::Number(cell::Number(r));
  } else {
    // A formula cell: its cached result. One not yet calculated in this pass holds up the
    // field that reads it.
    if ((cell::FormulaFlags(r) & 0x10) == 0) {
      pendingColumn_ = value.column;
      pendingRow_ = value.row;
      pendingFlags_ = value.flags;
      pendingSheet_ = value.sheet;
    }
    if (cell::FormulaFlags(r) & cell::kCachedString) {
      bool pushed = PushString(cell::CachedString(r));
      value = pushed ? FormulaValue() : FormulaValue::Empty(ferr::kValue);
      if (pushed) value.kind = kind::kString;
    } else {
      value = FormulaValue::Number(cell::CachedNumber(r));
    }
  }
  value.errorCode = LargerError(value.errorCode, nibble);
}

CellRecord* FormulaEngine::ReadCell(Worksheet* sheet, uint32_t row, uint16_t column) {
  if (sheet == nullptr) return nullptr;
  if (!inPass_ || sheet != sheet_) return sheet->cells.GetCellFast(row, column);
  PreparePassCursor(row, column);
  CellRecord* r = sheet->cells.GetCell(row, column, &passCursor_);
  if (r == nullptr && passNew_.head() != nullptr)
    r = passNew_.GetCell(row, column, &passNewCursor_);
  return r;
}

void FormulaEngine::PreparePassCursor(uint32_t row, uint16_t column) {
  uint64_t key = (static_cast<uint64_t>(row) << 16) | column;
  if (row != passRow_) {
    // The first look into a row finds its start, moving forward from the rows before.
    sheet_->cells.GetCell(row, 0, &passCursor_);
    passRowCursor_ = passCursor_;
    passRow_ = row;
  } else if (passCursor_.block == nullptr || passCursor_.key > key) {
    passCursor_ = passRowCursor_;
  }
}

void FormulaEngine::SetPassState(int slot, std::unique_ptr<PassState> state) {
  if (inPass_) passStates_[slot] = std::move(state);
}

void FormulaEngine::StartPass() {
  for (auto& state : passStates_) state.reset();
  externals_.clear();
  passRow_ = kNoPassRow;
  passCursor_.Clear();
  passNewCursor_.Clear();
  inPass_ = true;
}

bool FormulaEngine::EndPass() {
  bool ok = true;
  // A merge copies both chains; a few new cells are cheaper put one by one.
  constexpr uint32_t kMergeBlocks = 4;
  if (passNew_.head() != nullptr && passNew_.blockCount() <= kMergeBlocks) {
    CellCursor read;
    CellCursor write;
    while (CellRecord* r = passNew_.NextCell(read)) {
      if (!sheet_->cells.PutCell(cell::Bytes(r), &write)) {
        ok = false;
        break;
      }
    }
    passNew_.Reset(false);
  } else if (passNew_.head() != nullptr && !sheet_->cells.MergeFrom(passNew_)) {
    // Not enough memory for the sweep: the cells go in one by one, as far as they can.
    CellCursor read;
    CellCursor write;
    while (CellRecord* r = passNew_.NextCell(read)) {
      if (!sheet_->cells.PutCell(cell::Bytes(r), &write)) {
        ok = false;
        break;
      }
    }
    passNew_.Reset(true);
  }
  passCursor_.Clear();
  passNewCursor_.Clear();
  passRow_ = kNoPassRow;
  inPass_ = false;
  // Whatever was read for the pass may change once it is over.
  for (auto& state : passStates_) state.reset();
  externals_.clear();
  DropFieldTokens();
  return ok;
}

void FormulaEngine::Reset(uint16_t fieldIndex, uint32_t row) {
  depth_ = 0;
  operatorDepth_ = 0;
  stringCount_ = 0;
  while (arrayCount_ > 0) PopArray();
  syntax_ = 0;
  currentField_ = fieldIndex;
  currentRow_ = row;
  pendingFlags_ = 0;
  // Outside a pass another document is kept for one evaluation only.
  if (!inPass_) externals_.clear();
}

bool FormulaEngine::MoveOperatorToOperands(std::vector<PlanStep>* record) {
  if (depth_ + 1 >= kStackSize) {
    SetSyntaxError();
    return false;
  }
  const FormulaValue& op = operators_[operatorDepth_--];
  if (record != nullptr) {
    PlanStep step;
    step.action = kApplyStep;
    step.kind = op.kind;
    step.functionIndex = op.functionIndex;
    step.argumentBase = op.argumentBase;
    record->push_back(step);
  }
  operands_[++depth_] = op;
  bool ok = ApplyTop();
  if (record != nullptr) record->back().after = static_cast<uint16_t>(depth_);
  return ok;
}

void FormulaEngine::WidenPartialReference(FormulaValue& token) {
  bool hasRow = token.flags & rflag::kRow;
  token.kind = kind::kRangeReference;
  token.column1 = hasRow ? 0 : token.column;
  token.column2 = hasRow ? kLastColumn : token.column;
  token.row1 = hasRow ? token.row : 0;
  token.row2 = hasRow ? token.row : kLastRow;
  token.flags1 = token.flags2 = rflag::kAbsolute;
}

template <typename NextTokenOf>
uint16_t FormulaEngine::Drive(NextTokenOf& next) {
  uint16_t prev = kind::kOpen;
  std::vector<PlanStep>* record = recording_;
  recording_ = nullptr;
  uint32_t taken = 0;  // tokens read, for the plan's operand steps
  while (!syntax_) {
    if (depth_ + 1 >= kStackSize) {
      SetSyntaxError();
      break;
    }
    // Most tokens are operands: each is loaded straight into the stack slot it takes, rather
    // than built aside and copied there. Any other token is copied out of the slot before the
    // slot is written again.
    FormulaValue& token = operands_[depth_ + 1];
    uint16_t t = next(token);
    ++taken;
    if (syntax_) break;
    if (t == kind::kInvalid) {
      SetSyntaxError();
      break;
    }
    if (IsOperandToken(t)) {
      if (IsOperandToken(prev) || prev == kind::kClose || prev == kind::kPercent) {
        SetSyntaxError();
        break;
      }
      if (t == kind::kReference && (token.flags & rflag::kAbsolute) != rflag::kAbsolute) {
        WidenPartialReference(token);
      }
      if (record != nullptr) {
        PlanStep step;
        step.action = kLoadStep;
        step.token = taken - 1;
        record->push_back(step);
      }
      ++depth_;
    } else if (t == kind::kOpen) {
      operators_[++operatorDepth_] = token;
    } else if (t <= kind::kLastOperator) {
      bool operandBefore = IsOperandToken(prev) || prev == kind::kClose ||
                           (prev == kind::kPercent && t != kind::kPercent);
      if (!operandBefore) {
        if (t != kind::kSubtract || prev == kind::kNegate) {
          SetSyntaxError();
          break;
        }
        t = token.kind = kind::kNegate;
      }
      FormulaValue op = token;  // the moves below write its slot
      // Every operator is left associative.
      while (operatorDepth_ > 0 && operators_[operatorDepth_].kind <= kind::kLastOperator &&
             precedence_[operators_[operatorDepth_].kind] >= precedence_[t]) {
        if (!MoveOperatorToOperands(record)) break;
      }
      if (syntax_) break;
      operators_[++operatorDepth_] = op;
    } else if (t == kind::kFunction) {
      FormulaValue marker;
      marker.kind = kind::kOpen;
      operators_[++operatorDepth_] = marker;
      token.argumentBase = static_cast<uint16_t>(depth_ + 1);
      operators_[++operatorDepth_] = token;
    } else if (t == kind::kListSeparator) {
      if (prev == kind::kListSeparator || prev == kind::kFunction) {
        if (record != nullptr) record->push_back(PlanStep{kEmptyStep});
        operands_[++depth_] = FormulaValue::Empty();
      } else {
        while (operatorDepth_ > 0 && operators_[operatorDepth_].kind != kind::kFunction) {
          if (!MoveOperatorToOperands(record)) break;
        }
        if (!syntax_ && operatorDepth_ == 0) SetSyntaxError();
      }
    } else if (t == kind::kClose) {
      if (prev <= kind::kLastOperator && prev != kind::kPercent && prev != kind::kInvalid) {
        SetSyntaxError();
        break;
      }
      if (prev == kind::kListSeparator) {
        if (record != nullptr) record->push_back(PlanStep{kEmptyStep});
        operands_[++depth_] = FormulaValue::Empty();
      }
      while (!syntax_ && operatorDepth_ > 0 && operators_[operatorDepth_].kind != kind::kOpen) {
        MoveOperatorToOperands(record);
      }
      if (syntax_) break;
      if (operatorDepth_ == 0) {
        SetSyntaxError();
        break;
      }
      --operatorDepth_;
    } else if (t == kind::kEnd) {
      while (!syntax_ && operatorDepth_ > 0) MoveOperatorToOperands(record);
      break;
    }
    if (depth_ + operatorDepth_ + 2 > kStackSize) SetSyntaxError();
    prev = t;
  }
  if (!syntax_ && (depth_ != 1 || operatorDepth_ != 0)) SetSyntaxError();
  return syntax_ ? 0 : FinishResult();
}

uint16_t FormulaEngine::RunPlan(const PlanStep* steps, uint32_t count, const FormulaToken* tokens,
                                std::string_view text) {
  const char* base = text.data();
  const char* end = text.data() + text.size();
  const char* cursor = base;
  for (uint32_t i = 0; i < count; ++i) {
    const PlanStep& step = steps[i];
    if (step.action == kEmptyStep) {
      operands_[++depth_] = FormulaValue::Empty();
      continue;
    }
    if (step.action == kAppendStep && AppendToken(tokens[step.token], base)) continue;
    if (step.action != kApplyStep) {
      // Every depth was checked against the recorded run, which stayed within the stack.
      FormulaValue& slot = operands_[++depth_];
      uint16_t t = LoadToken(tokens[step.token], base, cursor, end, slot, true);
      if (syntax_) return 0;
      if (t == kind::kReference && (slot.flags & rflag::kAbsolute) != rflag::kAbsolute) {
        WidenPartialReference(slot);
      }
      if (step.action == kLoadStep) continue;
    }
    FormulaValue& top = operands_[++depth_];
    top = FormulaValue();
    top.kind = step.kind;
    top.functionIndex = step.functionIndex;
    top.argumentBase = step.argumentBase;
    if (!ApplyTop()) return 0;
    if (depth_ != step.after) return kPlanMismatch;
  }
  if (depth_ != 1) return kPlanMismatch;
  return FinishResult();
}

void FormulaEngine::FuseAppends(std::vector<PlanStep>& steps) {
  size_t kept = 0;
  for (size_t i = 0; i < steps.size(); ++i) {
    steps[kept] = steps[i];
    if (steps[i].action == kLoadStep && i + 1 < steps.size() && steps[i + 1].action == kApplyStep &&
        steps[i + 1].kind == kind::kConcatenate) {
      PlanStep& fused = steps[kept];
      fused.action = kAppendStep;
      fused.kind = kind::kConcatenate;
      fused.argumentBase = steps[i + 1].argumentBase;
      fused.after = steps[i + 1].after;
      ++i;
    }
    ++kept;
  }
  steps.resize(kept);
}

bool FormulaEngine::AppendToken(const FormulaToken& token, const char* base) {
  // The left operand is loaded first, as the operator would; whatever follows finds it loaded.
  FormulaValue& left = operands_[depth_];
  LoadReference(left);
  if (left.kind != kind::kString || left.errorCode != 0 || stringCount_ == 0) return false;
  char number[32];
  std::string_view right;
  if (token.kind == kind::kString && token.errorCode == 0) {
    right = std::string_view(base + token.offset, token.length);
  } else if (token.kind == kind::kNumber && token.errorCode == 0) {
    right = std::string_view(number, NumberToGeneral(token.number, number));
  } else if (token.kind == kind::kReference) {
    // As LoadReference reads the cell; a formula's cell, with its wait for fields not yet
    // calculated, and an error take the long way.
    const CellRecord* r = ReadCell(sheet_, currentRow_, token.index);
    if (r != nullptr) {
      if (cell::ErrorNibble(r) != 0) return false;
      if (cell::IsText(r)) {
        right = cell::Text(r);
      } else if (cell::IsNumber(r)) {
        right = std::string_view(number, NumberToGeneral(cell::Number(r), number));
      } else {
        return false;
      }
    }
  } else {
    return false;
  }
  return AppendToTopString(right);
}

uint16_t FormulaEngine::RunDriver(std::string_view text) {
  const char* cursor = text.data() + 1;  // the "=" or "+" is no operator
  const char* end = text.data() + text.size();
  auto next = [&](FormulaValue& token) { return NextToken(cursor, end, token, true); };
  return Drive(next);
}

uint16_t FormulaEngine::RunDriver(const FormulaToken* tokens, std::string_view text) {
  const char* base = text.data();
  const char* end = text.data() + text.size();
  const char* cursor = base;
  // The list ends with the token that stops the driver, which never reads past it.
  auto next = [&](FormulaValue& token) {
    return LoadToken(*tokens++, base, cursor, end, token, true);
  };
  return Drive(next);
}

void FormulaEngine::RangeToArray(FormulaValue& value) {
  // The cells of the range, copied into an array with corners from (0, 0).
  Worksheet* sheet = value.sheet;
  CellStore* cells = PushArray();
  FormulaValue result;
  result.kind = kind::kArray;
  result.column2 = static_cast<uint16_t>(value.column2 - value.column1);
  result.row2 = value.row2 - value.row1;
  result.flags1 = result.flags2 = rflag::kAbsolute;
  if (cells == nullptr) {
    value = FormulaValue::Empty(ferr::kMemory);
    return;
  }
  if (sheet != nullptr) {
    RangeCursor read(&sheet->cells, value.row1, value.row2, value.column1, value.column2);
    CellCursor write;
    if (!CopyRebased(read, *cells, write, 0)) result.errorCode = ferr::kMemory;
  }
  value = result;
}

uint16_t FormulaEngine::FinishResult() {
  FormulaValue& result = operands_[1];
  if (result.kind == kind::kReference) LoadReference(result);
  if (result.kind == kind::kRangeReference) RangeToArray(result);
  switch (result.kind) {
    case kind::kString:
      return kind::kString;
    case kind::kArray:
      return kind::kArray;
    default:
      return kind::kNumber;
  }
}

uint16_t FormulaEngine::EvaluateFormula(std::string_view text, uint16_t fieldIndex, uint32_t row) {
  Reset(fieldIndex, row);
  operands_[1] = FormulaValue::Empty(ferr::kSyntax);
  if (text.empty() || (text[0] != '=' && text[0] != '+')) return 0;
  uint16_t result = RunDriver(text);
  if (result == 0) {
    depth_ = 1;
    operands_[1] = FormulaValue::Empty(ferr::kSyntax);
  }
  return result;
}

std::string FormulaEngine::ResultDisplay() {
  const FormulaValue& v = operands_[1];
  if (v.errorCode != 0) return std::string(ErrorLiteral(v.errorCode));
  if (v.kind == kind::kString) return std::string(TopString());
  if (v.kind == kind::kNumber) return NumberToGeneral(v.number);
  if (v.kind == kind::kArray && arrayCount_ > 0) {
    CellRecord* r = TopArray().GetCell(0, 0);
    if (r == nullptr) return std::string();
    if (cell::ErrorNibble(r) != 0) return std::string(ErrorLiteral(cell::ErrorNibble(r)));
    if (cell::IsText(r)) return std::string(cell::Text(r));
    return NumberToGeneral(cell::Number(r));
  }
  return std::string();
}

}  // namespace kelpdex
