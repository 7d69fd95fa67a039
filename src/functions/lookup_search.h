// The search that hLookUp, vLookUp, vLookUp2, match and lookUp share: a value looked for in the
// cells of one row, one column or a whole rectangle, exactly or by the nearest value below or above
// it. Numbers meet only numbers and texts only texts, without regard to case.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "formula/formula_engine.h"
#include "functions/arguments.h"
#include "store/range_cursor.h"

namespace kelpdex {

// How a search settles: 0 an exact match (a text may be a wildcard pattern), 1 the exact value or
// else the largest one not greater, -1 the exact value or else the smallest one not smaller.
enum class MatchType : int8_t { kBelow = 1, kExact = 0, kAbove = -1 };

// The value looked for.
struct LookupKey {
  enum class Kind : uint8_t { kNone, kNumber, kText };
  Kind kind = Kind::kNone;  // kNone (an empty value) matches nothing
  double number = 0;
  std::string text;
  bool pattern = false;  // a text with "?", "*" or "~" under an exact search
};

// A cell's value as the search sees it. Cells with an error, and empty texts, take part in no
// search.
struct CellKey {
  LookupKey::Kind kind = LookupKey::Kind::kNone;
  double number = 0;
  std::string_view text;
};
CellKey KeyOfCell(const CellRecord* r);

// Reads the value to look for from a scalar slot and releases it. Returns the slot's error; an
// array or range is "#VALUE!".
uint8_t ReadLookupKey(FormulaEngine& e, int slot, MatchType type, LookupKey& key);
// The match type of an optional argument: its sign, `fallback` when omitted.
uint8_t ReadMatchType(FormulaEngine& e, int slot, MatchType fallback, MatchType& type);

// Compares a cell with the key: <0, 0 or >0 as the cell is smaller, equal or greater. Kinds that
// differ never compare; `comparable` tells.
int CompareKey(const CellKey& cell, const LookupKey& key, bool& comparable);

// Searches the cells the cursor yields (only those that exist) and returns the cell that settles
// the search, or nullptr. Among equal values the first one in the cursor's order wins.
const CellRecord* SearchCells(RangeCursor& read, const LookupKey& key, MatchType type);

// Leaves the value of the cell at (row, column) of `source` in `slot` and makes it the top of the
// stack; a missing cell is the empty value. A worksheet's cell (`sheet` set) is read as a reference
// is, so that a formula cell not yet calculated in this pass holds up the field that reads it.
void SetCellResult(FormulaEngine& e, int slot, Worksheet* sheet, CellStore* source, uint32_t row,
                   uint16_t column);

// Releases the slots first..last, last to first as the pool and the array list are stacks.
void ReleaseArgs(FormulaEngine& e, int first, int last);

}  // namespace kelpdex
