#include "functions/lookup_search.h"

#include "functions/criteria.h"
#include "store/workbook.h"
#include "text/code_page.h"

namespace kelpdex {

CellKey KeyOfCell(const CellRecord* r) {
  CellKey key;
  if (r == nullptr || cell::ErrorNibble(r) != 0) return key;
  if (cell::IsText(r)) {
    key.text = cell::Text(r);
    if (!key.text.empty()) key.kind = LookupKey::Kind::kText;
  } else if (cell::IsNumber(r)) {
    key.kind = LookupKey::Kind::kNumber;
    key.number = cell::Number(r);
  } else if (cell::FormulaFlags(r) & cell::kCachedString) {
    key.text = cell::CachedString(r);
    if (!key.text.empty()) key.kind = LookupKey::Kind::kText;
  } else {
    key.kind = LookupKey::Kind::kNumber;
    key.number = cell::CachedNumber(r);
  }
  return key;
}

uint8_t ReadLookupKey(FormulaEngine& e, int slot, MatchType type, LookupKey& key) {
  FormulaValue& v = e.Operand(slot);
  e.LoadReference(v);
  key = LookupKey();
  if (v.kind == kind::kArray || v.kind == kind::kRangeReference) {
    e.Release(v);
    return ferr::kValue;
  }
  uint8_t error = v.errorCode;
  if (v.kind == kind::kString) {
    if (error == 0 && !e.TopString().empty()) {
      key.kind = LookupKey::Kind::kText;
      key.text = e.TopString();
      key.pattern = type == MatchType::kExact && key.text.find_first_of("?*~") != std::string::npos;
    }
    e.PopString();
  } else if (v.kind == kind::kNumber && error == 0) {
    key.kind = LookupKey::Kind::kNumber;
    key.number = v.number;
  }
  v.kind = kind::kEmpty;
  return error;
}

uint8_t ReadMatchType(FormulaEngine& e, int slot, MatchType fallback, MatchType& type) {
  double x = static_cast<int>(fallback);
  uint8_t error = GetNumberArg(e, slot, x);
  e.Release(e.Operand(slot));
  type = x > 0 ? MatchType::kBelow : (x < 0 ? MatchType::kAbove : MatchType::kExact);
  return error;
}

int CompareKey(const CellKey& cell, const LookupKey& key, bool& comparable) {
  comparable = cell.kind == key.kind && key.kind != LookupKey::Kind::kNone;
  if (!comparable) return 0;
  if (key.kind == LookupKey::Kind::kNumber) {
    return cell.number < key.number ? -1 : (cell.number > key.number ? 1 : 0);
  }
  return text::CompareNoCase(cell.text, key.text);
}

const CellRecord* SearchCells(RangeCursor& read, const LookupKey& key, MatchType type) {
  if (key.kind == LookupKey::Kind::kNone) return nullptr;
  const CellRecord* best = nullptr;
  CellKey bestKey;
  while (const CellRecord* r = read.Next()) {
    CellKey cell = KeyOfCell(r);
    if (key.pattern) {
      if (cell.kind == LookupKey::Kind::kText && WildcardMatch(key.text, cell.text)) return r;
      continue;
    }
    bool comparable = false;
    int order = CompareKey(cell, key, comparable);
    if (!comparable) continue;
    if (order == 0) return r;
    if (type == MatchType::kExact) continue;
    // The nearest value on the allowed side; a later cell must beat it strictly.
    bool side = type == MatchType::kBelow ? order < 0 : order > 0;
    if (!side) continue;
    bool nearer = best == nullptr;
    if (!nearer) {
      if (key.kind == LookupKey::Kind::kNumber) {
        nearer =
            type == MatchType::kBelow ? cell.number > bestKey.number : cell.number < bestKey.number;
      } else {
        int against = text::CompareNoCase(cell.text, bestKey.text);
        nearer = type == MatchType::kBelow ? against > 0 : against < 0;
      }
    }
    if (nearer) {
      best = r;
      bestKey = cell;
    }
  }
  return best;
}

void SetCellResult(FormulaEngine& e, int slot, Worksheet* sheet, CellStore* source, uint32_t row,
                   uint16_t column) {
  e.SetDepth(slot);
  FormulaValue& out = e.Operand(slot);
  if (sheet != nullptr) {
    out = FormulaValue();
    out.kind = kind::kReference;
    out.sheet = sheet;
    out.row = row;
    out.column = column;
    out.flags = rflag::kAbsolute;
    e.LoadReference(out);
    return;
  }
  const CellRecord* r = source != nullptr ? source->GetCell(row, column) : nullptr;
  if (r == nullptr) {
    out = FormulaValue::Empty();
    return;
  }
  uint8_t nibble = cell::ErrorNibble(r);
  if (cell::IsText(r)) {
    if (e.PushString(cell::Text(r))) {
      out = FormulaValue();
      out.kind = kind::kString;
      out.errorCode = nibble;
    } else {
      out = FormulaValue::Empty(ferr::kValue);
    }
    return;
  }
  out = FormulaValue::Number(cell::IsNumber(r) ? cell::Number(r) : cell::CachedNumber(r), nibble);
}

void ReleaseArgs(FormulaEngine& e, int first, int last) {
  for (int slot = last; slot >= first; --slot) e.Release(e.Operand(slot));
}

}  // namespace kelpdex
