#include "functions/statistical_functions_walk.h"

#include <cmath>
#include <cstddef>
#include <limits>

#include "core/locale_settings.h"
#include "format/number_text.h"
#include "functions/arguments.h"
#include "store/range_cursor.h"
#include "store/workbook.h"

namespace kelpdex::stat {

namespace {

// A text as a value of the walk; false when it is skipped.
bool TextValue(std::string_view text, Take take, double& x) {
  if (text.empty()) return false;  // an empty text is an empty cell
  if (take == Take::kAll) {
    x = 0;
    return true;
  }
  return TextToNumber(text, currentLocale.decimalSeparator, x) && !IsBadNumber(x);
}

}  // namespace

uint8_t WalkValues(FormulaEngine& e, int first, int last, Take take, void* context,
                   void (*visit)(void* context, double value)) {
  uint8_t error = 0;
  for (int slot = last; slot >= first; --slot) {
    FormulaValue& v = e.Operand(slot);
    if (v.kind == kind::kArray || v.kind == kind::kRangeReference) {
      error = LargerError(error, v.errorCode);
      RangeCursor read = OperandCells(e, v);
      while (CellRecord* r = read.Next()) {
        uint8_t nibble = cell::ErrorNibble(r);
        if (nibble != 0) {
          error = LargerError(error, nibble);
          continue;
        }
        double x = 0;
        if (cell::IsText(r)) {
          if (!TextValue(cell::Text(r), take, x)) continue;
        } else if (cell::IsFormula(r) && !cell::CachedString(r).empty()) {
          if (!TextValue(cell::CachedString(r), take, x)) continue;
        } else {
          x = cell::IsNumber(r) ? cell::Number(r) : cell::CachedNumber(r);
        }
        visit(context, x);
      }
      e.Release(v);
      continue;
    }
    // A referenced cell counts as a cell of a range; a text written in the formula is coerced.
    if (v.kind == kind::kReference) {
      e.LoadReference(v);
      if (v.kind == kind::kString && v.errorCode == 0) {
        double x = 0;
        bool taken = TextValue(e.TopString(), take, x);
        e.PopString();
        if (taken) visit(context, x);
        v = FormulaValue::Empty();
        continue;
      }
    }
    double x = 0;
    uint8_t code = GetNumberArg(e, slot, x);
    error = LargerError(error, code);
    bool present = e.Operand(slot).kind == kind::kNumber;
    e.Release(e.Operand(slot));
    if (code == 0 && present) visit(context, x);
  }
  return error;
}

uint8_t CollectValues(FormulaEngine& e, int first, int last, Take take, std::vector<double>& out) {
  // The stack gives the arguments back from the last, so each one's values are gathered apart
  // and the runs put in argument order afterwards: mode's ties go to the first value met.
  std::vector<double> runs;
  std::vector<size_t> ends;
  uint8_t error = 0;
  for (int slot = last; slot >= first; --slot) {
    error = LargerError(error, WalkValues(e, slot, slot, take, &runs, [](void* c, double x) {
                          static_cast<std::vector<double>*>(c)->push_back(x);
                        }));
    ends.push_back(runs.size());
  }
  out.clear();
  out.reserve(runs.size());
  for (size_t k = ends.size(); k-- > 0;) {
    size_t begin = k == 0 ? 0 : ends[k - 1];
    out.insert(out.end(), runs.begin() + static_cast<std::ptrdiff_t>(begin),
               runs.begin() + static_cast<std::ptrdiff_t>(ends[k]));
  }
  return error;
}

uint8_t ReadGrid(FormulaEngine& e, int slot, Grid& grid) {
  FormulaValue& v = e.Operand(slot);
  if (v.kind == kind::kReference) e.LoadReference(v);
  if (v.kind != kind::kArray && v.kind != kind::kRangeReference) {
    double x = std::numeric_limits<double>::quiet_NaN();
    uint8_t error = v.errorCode;
    bool number = v.kind == kind::kNumber && error == 0;
    bool empty = v.kind == kind::kEmpty;
    if (number) x = v.number;
    e.Release(v);
    if (error == 0 && !number && !empty) error = ferr::kValue;
    grid.rows = grid.columns = 1;
    grid.values.assign(1, x);
    return error;
  }
  RangeArg range;
  uint8_t error = GetRangeArg(e, slot, range);
  if (error != 0) return error;
  grid.rows = range.rows();
  grid.columns = range.columns();
  grid.values.assign(size_t(grid.rows) * grid.columns, std::numeric_limits<double>::quiet_NaN());
  RangeCursor read(range.cells, range.firstRow, range.lastRow, range.firstColumn, range.lastColumn);
  while (const CellRecord* r = read.Next()) {
    error = LargerError(error, cell::ErrorNibble(r));
    if (cell::IsText(r) || (cell::IsFormula(r) && !cell::CachedString(r).empty())) continue;
    size_t at = size_t(cell::Row(r) - range.firstRow) * grid.columns +
                (cell::Column(r) - range.firstColumn);
    grid.values[at] = cell::IsNumber(r) ? cell::Number(r) : cell::CachedNumber(r);
  }
  e.Operand(slot) = FormulaValue::Empty();
  return error;
}

void ReleaseSlots(FormulaEngine& e, int first, int last) {
  for (int slot = last; slot >= first; --slot) e.Release(e.Operand(slot));
}

void SetColumnResult(FormulaEngine& e, int slot, const double* values, size_t count,
                     uint8_t error) {
  e.SetDepth(slot);
  for (size_t i = 0; i < count && error == 0; ++i) {
    if (IsBadNumber(values[i])) error = ferr::kNum;
  }
  CellStore* cells = error == 0 ? e.PushArray() : nullptr;
  if (error == 0 && cells == nullptr) error = ferr::kMemory;
  if (error != 0) {
    e.Operand(slot) = FormulaValue::Empty(error);
    return;
  }
  CellCursor write;
  for (size_t i = 0; i < count; ++i) {
    uint8_t record[cell::kNumberSize];
    cell::EncodeNumber(record, static_cast<uint32_t>(i), 0, values[i]);
    if (!cells->PutCell(record, &write)) {
      e.PopArray();
      e.Operand(slot) = FormulaValue::Empty(ferr::kMemory);
      return;
    }
  }
  e.Operand(slot) = FormulaValue::Array(static_cast<uint32_t>(count), 1);
}

double Mean(const std::vector<double>& x) {
  double sum = 0;
  for (double v : x) sum += v;
  double mean = sum / static_cast<double>(x.size());
  // One correction pass takes back the rounding of the first sum.
  double correction = 0;
  for (double v : x) correction += v - mean;
  return mean + correction / static_cast<double>(x.size());
}

double SquaredDeviations(const std::vector<double>& x, double mean) {
  double sum = 0;
  for (double v : x) sum += (v - mean) * (v - mean);
  return sum;
}

}  // namespace kelpdex::stat
