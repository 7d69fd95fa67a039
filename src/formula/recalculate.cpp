// Calculated fields: every formula field of a record computed into the record's cell.
#include <algorithm>
#include <vector>

#include "core/locale_settings.h"
#include "core/progress.h"
#include "format/number_text.h"
#include "formula/formula_engine.h"
#include "store/workbook.h"

namespace kelpdex {

void FormulaEngine::SetTokenLists(bool on) {
  tokenListsOn_ = on;
  DropFieldTokens();
}

void FormulaEngine::KeepFieldTokens() {
  if (!tokenListsOn_) return;
  tokens_.clear();
  planSteps_.clear();
  fieldTokens_.assign(fieldCount_, FieldTokens());
  for (uint16_t f = 0; f < fieldCount_; ++f) {
    const std::string& text = fields_[f].formula;
    if (text.empty() || (text[0] != '=' && text[0] != '+')) continue;
    FieldTokens& kept = fieldTokens_[f];
    kept.first = static_cast<uint32_t>(tokens_.size());
    kept.text = text.data();
    kept.size = text.size();
    const char* cursor = text.data() + 1;  // the "=" or "+" is no operator
    const char* end = text.data() + text.size();
    FormulaToken token;
    for (;;) {
      uint16_t t = ScanToken(text.data(), cursor, end, token, true);
      tokens_.push_back(token);
      if (t == kind::kEnd || t == kind::kInvalid) break;
      if (t == kind::kArray) {
        // Only the literal's end is wanted here; a malformed one stops the driver when loaded.
        FormulaValue scratch;
        if (!ParseArrayLiteral(cursor, end, true, scratch, nullptr)) break;
      }
    }
  }
  tokensKept_ = true;
}

void FormulaEngine::DropFieldTokens() {
  tokensKept_ = false;
}

bool FormulaEngine::EvaluateField(uint16_t fieldIndex) {
  const std::string& text = fields_[fieldIndex].formula;
  Reset(fieldIndex, currentRow_);
  if (text.empty() || (text[0] != '=' && text[0] != '+')) return false;
  // A list made from other text than the field holds now is never read.
  if (!tokensKept_ || fieldTokens_[fieldIndex].text != text.data() ||
      fieldTokens_[fieldIndex].size != text.size()) {
    return RunDriver(text) != 0;
  }
  FieldTokens& kept = fieldTokens_[fieldIndex];
  const FormulaToken* tokens = tokens_.data() + kept.first;
  if (kept.planCount != 0) {
    uint16_t result = RunPlan(planSteps_.data() + kept.planFirst, kept.planCount, tokens, text);
    if (result != kPlanMismatch) return result != 0;
    // An operator left the stack otherwise than when the plan was made: the plan is not to be
    // trusted for this field, and the record is evaluated again from the start.
    kept.planCount = 0;
    kept.planTries = kPlanTries;
    Reset(fieldIndex, currentRow_);
  }
  if (kept.planTries >= kPlanTries) return RunDriver(tokens, text) != 0;
  recordScratch_.clear();
  recording_ = &recordScratch_;
  uint16_t result = RunDriver(tokens, text);
  recording_ = nullptr;
  if (result == 0) {
    ++kept.planTries;
    return false;
  }
  FuseAppends(recordScratch_);
  kept.planFirst = static_cast<uint32_t>(planSteps_.size());
  kept.planCount = static_cast<uint32_t>(recordScratch_.size());
  planSteps_.insert(planSteps_.end(), recordScratch_.begin(), recordScratch_.end());
  return true;
}

bool FormulaEngine::StoreResultCell(const FormulaField& field, uint16_t fieldIndex,
                                    bool syntaxFailure) {
  uint8_t record[kBlockPayload];
  uint32_t row = currentRow_;
  // The cell's kind follows the field, not the value.
  if (field.type == kFieldText) {
    uint8_t error = ferr::kNone;
    char number[32];
    std::string_view text;
    if (syntaxFailure) {
      error = ferr::kSyntax;
    } else {
      FormulaValue& v = operands_[1];
      error = v.errorCode;
      if (v.kind == kind::kArray) {
        error = ferr::kValue;
      } else if (error != 0) {
        text = ErrorLiteral(error);
      } else if (v.kind == kind::kString) {
        text = TopString();
      } else if (v.kind == kind::kNumber) {
        text = std::string_view(number, NumberToGeneral(v.number, number));
      }
    }
    if (text.size() > kBlockPayload - cell::kTextHeader) {
      text = text.substr(0, kBlockPayload - cell::kTextHeader);
    }
    cell::EncodeText(record, row, fieldIndex, text, static_cast<uint8_t>(cell::kAuto | error));
  } else {
    double x = 0;
    uint8_t error = ferr::kSyntax;
    if (!syntaxFailure) {
      FormulaValue& v = operands_[1];
      error = v.errorCode;
      if (v.kind == kind::kString && error == 0) {
        CoerceText(v, TopString());
        error = v.errorCode;
      }
      if (v.kind == kind::kNumber) x = v.number;
    }
    cell::EncodeNumber(record, row, fieldIndex, error == 0 ? x : 0,
                       static_cast<uint8_t>(cell::kAuto | error));
  }
  if (!inPass_) return sheet_->cells.PutCell(record);
  // In a pass, a cell that exists is replaced where it stands; a new one waits for the sweep.
  PreparePassCursor(row, fieldIndex);
  CellCursor before = passCursor_;  // still in front of the cell, so the write scans forward
  if (CellRecord* old = sheet_->cells.GetCell(row, fieldIndex, &passCursor_)) {
    // Only a write of another size can move records; the row's start is then found again.
    if (cell::Size(old) != cell::Size(record)) passRow_ = kNoPassRow;
    passCursor_ = before;
    return sheet_->cells.PutCell(record, &passCursor_);
  }
  return passNew_.PutCell(record, &passNewCursor_);
}

bool FormulaEngine::RecalculateRow(uint32_t row) {
  if (fields_ == nullptr || sheet_ == nullptr) return true;
  if (inPass_) {
    if (!tokensKept_) KeepFieldTokens();
    return CalculateRow(row);
  }
  passCursor_.Clear();
  passRow_ = kNoPassRow;
  KeepFieldTokens();
  bool ok = CalculateRow(row);
  DropFieldTokens();
  return ok;
}

bool FormulaEngine::CalculateRow(uint32_t row) {
  for (uint16_t i = 0; i < fieldCount_; ++i) {
    fields_[i].flags &= static_cast<uint8_t>(~(kFieldCalculated | kFieldInProgress | 0x80));
    fields_[i].visits = 0;
  }
  currentRow_ = row;
  // Fields wait for the fields whose unfinished cells they read; a small stack of waiting fields
  // replaces recursion.
  uint16_t waiting[kMaxFields];
  for (uint16_t f = 0; f < fieldCount_; ++f) {
    if (fields_[f].formula.empty() || (fields_[f].flags & kFieldCalculated)) continue;
    int top = 0;
    waiting[top++] = f;
    while (top > 0) {
      uint16_t g = waiting[top - 1];
      FormulaField& field = fields_[g];
      if (field.flags & kFieldCalculated) {
        --top;
        continue;
      }
      currentRow_ = row;
      bool ok = EvaluateField(g);
      uint16_t asked = pendingColumn_;
      bool pending = ok && pendingFlags_ != 0 && pendingSheet_ == sheet_ && pendingRow_ == row &&
                     asked < fieldCount_ && !fields_[asked].formula.empty() &&
                     !(fields_[asked].flags & kFieldCalculated);
      if (pending) {
        field.link = asked;
        field.flags |= kFieldInProgress;
        FormulaField& other = fields_[asked];
        if (++other.visits > 1 || (other.flags & kFieldInProgress)) {
          // A circle: the field asked for keeps its cell as it is, and the one asking goes on
          // with the value it read.
          other.flags = static_cast<uint8_t>(other.flags | kFieldCalculated);
          other.flags = static_cast<uint8_t>(other.flags + kFieldCircular);
        } else {
          if (top >= kMaxFields) return false;
          waiting[top++] = asked;
          continue;
        }
      }
      if (!StoreResultCell(field, g, !ok)) return false;
      field.flags = static_cast<uint8_t>((field.flags | kFieldCalculated) & ~kFieldInProgress);
      --top;
    }
  }
  return true;
}

bool FormulaEngine::RecalculateRows(const uint32_t* rows, size_t count, bool resetMarks) {
  if (sheet_ == nullptr) return true;
  // Formula cells lose their marks of the last calculation.
  CellCursor scan;
  while (CellRecord* r = resetMarks ? sheet_->cells.NextCell(scan) : nullptr) {
    if (!cell::IsFormula(r)) continue;
    uint8_t* bytes = cell::Bytes(r);
    bytes[cell::kFlagsAt] &= static_cast<uint8_t>(~cell::kEvaluationMarks);
    bytes[cell::kCalcStateAt] = 0;
  }
  sheet_->cells.InvalidateRowIndex();
  std::vector<uint32_t> ordered(rows, rows + count);
  std::sort(ordered.begin(), ordered.end());
  StartPass();
  bool ok = true;
  for (size_t i = 0; i < ordered.size(); ++i) {
    if (!RecalculateRow(ordered[i])) {
      ok = false;
      break;
    }
    if ((i & 0xFFFF) == 0xFFFF) ReportProgress(i + 1, ordered.size());
  }
  bool merged = EndPass();
  return ok && merged;
}

}  // namespace kelpdex
