// vLookUp2, the bridge between tables: a value looked for in a field of another table, answered
// from another field of the record found. Table and fields are named as the catalogue names them.
//
// In a pass (Update Formulas, a filter run) the key field of each table is indexed at its first
// use and the index serves every record of the pass; it is dropped with the pass, when the cells
// it was read from may change again. Inside a pass only the engine's own sheet changes, so a key
// field that the pass itself computes is never indexed but searched cell by cell. A single
// evaluation outside a pass searches too: one walk costs less than building an index.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "functions/arguments.h"
#include "functions/criteria.h"
#include "functions/lookup_functions.h"
#include "functions/lookup_search.h"
#include "store/catalogue.h"
#include "store/workbook.h"
#include "text/code_page.h"

namespace kelpdex::fn {

namespace {

constexpr uint32_t kNoRow = 0xFFFFFFFF;

// The cells of one column of a data sheet, sorted by value and then by row, so that the first
// record holding a value is the first of its run.
class KeyIndex {
 public:
  KeyIndex(CellStore& cells, uint16_t column) {
    RangeCursor read(&cells, 0, kLastRow, column, column);
    while (const CellRecord* r = read.Next()) {
      CellKey key = KeyOfCell(r);
      if (key.kind == LookupKey::Kind::kNumber) {
        numbers_.push_back({key.number, cell::Row(r)});
      } else if (key.kind == LookupKey::Kind::kText) {
        texts_.push_back({uint32_t(upper_.size()), uint32_t(key.text.size()), cell::Row(r)});
        for (char c : key.text) upper_.push_back(text::CharUpper(c));
      }
    }
    std::sort(numbers_.begin(), numbers_.end());
    std::sort(texts_.begin(), texts_.end(), [this](const Text& a, const Text& b) {
      int order = TextOf(a).compare(TextOf(b));
      return order != 0 ? order < 0 : a.row < b.row;
    });
  }

  // The row that settles the search, or kNoRow. Patterns are not for the index.
  uint32_t Find(const LookupKey& key, MatchType type) const {
    if (key.kind == LookupKey::Kind::kNone) return kNoRow;
    if (key.kind == LookupKey::Kind::kNumber) return FindIn(numbers_, key.number, type);
    std::string upper = text::Upper(key.text);
    auto less = [this](const Text& a, std::string_view b) { return TextOf(a) < b; };
    auto greater = [this](std::string_view a, const Text& b) { return a < TextOf(b); };
    auto first = std::lower_bound(texts_.begin(), texts_.end(), std::string_view(upper), less);
    if (first != texts_.end() && TextOf(*first) == upper) return first->row;
    if (type == MatchType::kExact) return kNoRow;
    if (type == MatchType::kAbove) return first != texts_.end() ? first->row : kNoRow;
    auto after = std::upper_bound(texts_.begin(), texts_.end(), std::string_view(upper), greater);
    if (after == texts_.begin()) return kNoRow;
    std::string_view below = TextOf(*(after - 1));
    return std::lower_bound(texts_.begin(), after, below, less)->row;
  }

 private:
  struct Text {
    uint32_t offset;
    uint32_t length;
    uint32_t row;
  };
  std::string_view TextOf(const Text& t) const {
    return std::string_view(upper_).substr(t.offset, t.length);
  }
  static uint32_t FindIn(const std::vector<std::pair<double, uint32_t>>& sorted, double v,
                         MatchType type) {
    auto first = std::lower_bound(sorted.begin(), sorted.end(), std::make_pair(v, 0u));
    if (first != sorted.end() && first->first == v) return first->second;
    if (type == MatchType::kExact) return kNoRow;
    if (type == MatchType::kAbove) return first != sorted.end() ? first->second : kNoRow;
    if (first == sorted.begin()) return kNoRow;
    double below = (first - 1)->first;
    return std::lower_bound(sorted.begin(), first, std::make_pair(below, 0u))->second;
  }

  std::vector<std::pair<double, uint32_t>> numbers_;
  std::vector<Text> texts_;
  std::string upper_;
};

// Table and fields of one call, found in the catalogue.
struct Target {
  uint8_t error = 0;
  Worksheet* data = nullptr;
  uint16_t keyColumn = 0;
  uint16_t valueColumn = 0;
  bool keyComputed = false;  // the key field is a calculated field of its table
};

// The data column of a field named in a table's catalogue; false when none has the name.
bool FieldColumn(Worksheet& catalogue, std::string_view name, uint16_t& column, bool& computed) {
  CellCursor cursor;
  while (const CellRecord* r = catalogue.cells.NextCell(cursor)) {
    uint32_t row = cell::Row(r);
    if (row == 0 || cell::Column(r) != catalogue::kFieldColumn || !cell::IsText(r)) continue;
    if (!text::EqualNoCase(cell::Text(r), name) || row - 1 > kLastColumn) continue;
    column = static_cast<uint16_t>(row - 1);
    std::string_view formula = CatalogueText(catalogue, row, catalogue::kFormulaColumn);
    computed = formula.size() > 2 && text::StartsWithNoCase(formula, "F:") &&
               (formula[2] == '=' || formula[2] == '+');
    return true;
  }
  return false;
}

Target Resolve(Workbook* book, std::string_view table, std::string_view keyField,
               std::string_view valueField) {
  Target target;
  Worksheet* catalogue = book != nullptr ? book->FindCatalogue(table) : nullptr;
  target.data = book != nullptr ? book->FindTable(table) : nullptr;
  bool valueComputed = false;
  if (catalogue == nullptr || target.data == nullptr ||
      !FieldColumn(*catalogue, keyField, target.keyColumn, target.keyComputed) ||
      !FieldColumn(*catalogue, valueField, target.valueColumn, valueComputed)) {
    target.error = ferr::kName;  // names that lead nowhere
  }
  return target;
}

// What the lookups of one pass keep: the calls seen, by the texts they name, and the indexes.
class PassLookups : public PassState {
 public:
  struct Call {
    std::string table, keyField, valueField;
    Target target;
    const KeyIndex* index = nullptr;  // null: searched cell by cell
  };

  const Call& Find(FormulaEngine& e, std::string_view table, std::string_view keyField,
                   std::string_view valueField) {
    for (const Call& call : calls_) {
      if (call.table == table && call.keyField == keyField && call.valueField == valueField) {
        return call;
      }
    }
    Call call{std::string(table), std::string(keyField), std::string(valueField),
              Resolve(e.workbook(), table, keyField, valueField)};
    const Target& t = call.target;
    // The engine's own sheet changes during the pass only in the fields the pass computes.
    bool indexable = t.error == 0 && !(t.data == e.sheet() && t.keyComputed);
    if (indexable) {
      for (const auto& [sheet, column, index] : indexes_) {
        if (sheet == t.data && column == t.keyColumn) call.index = index.get();
      }
      if (call.index == nullptr) {
        indexes_.push_back(
            {t.data, t.keyColumn, std::make_unique<KeyIndex>(t.data->cells, t.keyColumn)});
        call.index = indexes_.back().index.get();
      }
    }
    calls_.push_back(std::move(call));
    return calls_.back();
  }

 private:
  struct Indexed {
    Worksheet* sheet;
    uint16_t column;
    std::unique_ptr<KeyIndex> index;
  };
  std::vector<Call> calls_;
  std::vector<Indexed> indexes_;
};

uint32_t SearchColumn(Worksheet& data, uint16_t column, const LookupKey& key, MatchType type) {
  RangeCursor read(&data.cells, 0, kLastRow, column, column);
  const CellRecord* found = SearchCells(read, key, type);
  return found != nullptr ? cell::Row(found) : kNoRow;
}

void SetError(FormulaEngine& e, int slot, uint8_t error) {
  e.SetDepth(slot);
  e.Operand(slot) = FormulaValue::Empty(error);
}

}  // namespace

void VLookUp2(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  int count = e.depth() - base;
  if (count < 4 || count > 5) {
    e.SetSyntaxError();
    return;
  }
  MatchType type = MatchType::kExact;
  uint8_t error = 0;
  if (count == 5) error = ReadMatchType(e, base + 4, MatchType::kExact, type);
  char valueBuffer[kTextArgSize], keyBuffer[kTextArgSize], tableBuffer[kTextArgSize];
  std::string_view valueField, keyField, table;
  error = LargerError(error, GetTextArg(e, base + 3, valueBuffer, valueField));
  error = LargerError(error, GetTextArg(e, base + 2, keyBuffer, keyField));
  error = LargerError(error, GetTextArg(e, base + 1, tableBuffer, table));
  LookupKey key;
  error = LargerError(error, ReadLookupKey(e, base, type, key));
  if (error != 0) return SetError(e, base, error);

  Target target;
  const KeyIndex* index = nullptr;
  if (e.inPass()) {
    auto* lookups = static_cast<PassLookups*>(e.passState(pass_slot::kLookupIndex));
    if (lookups == nullptr) {
      e.SetPassState(pass_slot::kLookupIndex, std::make_unique<PassLookups>());
      lookups = static_cast<PassLookups*>(e.passState(pass_slot::kLookupIndex));
    }
    const PassLookups::Call& call = lookups->Find(e, table, keyField, valueField);
    target = call.target;
    index = call.index;
  } else {
    target = Resolve(e.workbook(), table, keyField, valueField);
  }
  if (target.error != 0) return SetError(e, base, target.error);
  uint32_t row = index != nullptr && !key.pattern
                     ? index->Find(key, type)
                     : SearchColumn(*target.data, target.keyColumn, key, type);
  if (row == kNoRow) return SetError(e, base, ferr::kNA);
  SetCellResult(e, base, target.data, &target.data->cells, row, target.valueColumn);
  // A record without a value in the field answers "#NULL!".
  FormulaValue& result = e.Operand(base);
  bool empty = result.errorCode == 0 && (result.kind == kind::kEmpty ||
                                         (result.kind == kind::kString && e.TopString().empty()));
  if (empty) {
    e.Release(result);
    result = FormulaValue::Empty(ferr::kNull);
  }
}

}  // namespace kelpdex::fn
