#include "search/find_replace.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "format/cell_text.h"
#include "format/number_style.h"
#include "store/cell_record.h"
#include "store/field_row.h"
#include "store/undo_recorder.h"
#include "table/records.h"
#include "text/code_page.h"

namespace kelpdex {

namespace {

constexpr size_t kCellTextMax = 1024;

bool SameChar(char a, char b, bool matchCase) {
  return matchCase ? a == b : text::CharUpper(a) == text::CharUpper(b);
}

// Matches the pattern from p against the text from t; on success `end` is behind the match. With
// `toEnd` the match must use up the text. A star tries the shortest run first.
bool MatchHere(std::string_view pattern, size_t p, std::string_view text, size_t t, bool matchCase,
               bool toEnd, size_t& end) {
  while (p < pattern.size()) {
    char c = pattern[p];
    if (c == '*') {
      if (p + 1 == pattern.size()) {
        end = text.size();
        return true;
      }
      for (size_t from = t; from <= text.size(); ++from) {
        if (MatchHere(pattern, p + 1, text, from, matchCase, toEnd, end)) return true;
      }
      return false;
    }
    bool any = c == '?';
    if (c == '~' && p + 1 < pattern.size() &&
        (pattern[p + 1] == '*' || pattern[p + 1] == '?' || pattern[p + 1] == '~')) {
      c = pattern[++p];
      any = false;
    }
    if (t >= text.size() || !(any || SameChar(c, text[t], matchCase))) return false;
    ++p;
    ++t;
  }
  if (toEnd && t != text.size()) return false;
  end = t;
  return true;
}

const NumberStyle& StyleOf(const TableSpec& table, uint32_t row, uint16_t field,
                           std::vector<std::unique_ptr<NumberStyle>>& cache) {
  uint16_t id = table.data->formats.StyleAt(row, field);
  if (id >= cache.size()) cache.resize(id + 1u);
  if (cache[id] == nullptr) {
    cache[id] = std::make_unique<NumberStyle>(ReadNumberStyle(table.workbook->styles.Style(id)));
  }
  return *cache[id];
}

bool Searchable(FieldType type) {
  return type != FieldType::kLongText && type != FieldType::kFiles;
}

}  // namespace

long FindInText(std::string_view pattern, std::string_view text, bool matchCase, bool wholeCell,
                size_t* end) {
  if (pattern.empty()) return -1;
  size_t stop = 0;
  for (size_t start = 0; start <= text.size(); ++start) {
    if (MatchHere(pattern, 0, text, start, matchCase, wholeCell, stop)) {
      if (end != nullptr) *end = stop;
      return static_cast<long>(start);
    }
    if (wholeCell) break;
  }
  return -1;
}

GridSelection WholeTable(const TableSpec& table, const RecordSet& records) {
  GridSelection range;
  uint16_t fields = FieldCount(table);
  range.lastField = fields > 0 ? static_cast<uint16_t>(fields - 1) : 0;
  range.lastPosition = records.count() > 0 ? records.count() - 1 : 0;
  return range;
}

bool FindNext(const TableSpec& table, const RecordSet& records, const GridSelection& selection,
              uint16_t activeField, uint32_t activePosition, const FindOptions& options,
              GridSelection& hit, bool fromActive) {
  if (records.count() == 0) return false;
  bool oneCell = selection.firstField == selection.lastField &&
                 selection.firstPosition == selection.lastPosition;
  GridSelection range = oneCell ? WholeTable(table, records) : selection;
  uint16_t fieldCount = FieldCount(table);
  std::vector<FieldType> types(fieldCount);
  for (uint16_t f = 0; f < fieldCount; ++f) {
    FieldSpec fieldRow;
    types[f] = ReadField(table, f, fieldRow) ? fieldRow.type : FieldType::kUnknown;
  }
  std::vector<std::unique_ptr<NumberStyle>> styles;
  char shown[kDisplayTextMax];
  uint32_t position = activePosition;
  uint32_t field = activeField + (fromActive ? 0u : 1u);
  for (; position <= range.lastPosition && position < records.count(); ++position) {
    uint32_t row = records[position];
    for (; field <= range.lastField; ++field) {
      if (field < range.firstField) continue;
      uint16_t f = static_cast<uint16_t>(field);
      if (f < fieldCount && !Searchable(types[f])) continue;
      const CellRecord* cell = row < kRowLimit ? table.data->cells.GetCellFast(row, f) : nullptr;
      if (cell == nullptr) continue;
      size_t length = CellDisplayText(cell, StyleOf(table, row, f, styles), shown);
      if (FindInText(options.text, std::string_view(shown, length), options.matchCase,
                     options.wholeCell) >= 0) {
        hit.firstField = hit.lastField = f;
        hit.firstPosition = hit.lastPosition = position;
        return true;
      }
    }
    field = range.firstField;
  }
  return false;
}

bool ReplaceInRange(const TableSpec& table, const RecordSet& records, const GridSelection& range,
                    const FindOptions& options, uint32_t& changed) {
  changed = 0;
  Workbook& book = *table.workbook;
  if (options.text.empty()) return true;
  UndoContext context;
  context.firstColumn = context.activeColumn = range.firstField;
  context.lastColumn = range.lastField;
  context.firstRecord = context.activeRecord = range.firstPosition;
  context.lastRecord = range.lastPosition;
  if (book.undo != nullptr && !book.undo->RecordCells(context)) {
    if (book.errorCode == err::kNone) book.errorCode = err::kOutOfMemory;
    return false;
  }
  // How each field may be replaced: Long Text, files and calculated fields not at all.
  enum class Mark : uint8_t { kNone, kNumber, kText };
  uint16_t fieldCount = FieldCount(table);
  std::vector<Mark> marks(fieldCount, Mark::kNone);
  for (uint16_t f = 0; f < fieldCount; ++f) {
    FieldSpec fieldRow;
    if (!ReadField(table, f, fieldRow) || !Searchable(fieldRow.type)) continue;
    if (fieldRow.formulaOrValue.size() >= 2 &&
        text::StartsWithNoCase(fieldRow.formulaOrValue, "F:")) {
      continue;
    }
    marks[f] = fieldRow.type == FieldType::kNumber ? Mark::kNumber : Mark::kText;
  }
  // The cell store is walked in row order.
  std::vector<uint32_t> rows;
  for (uint32_t p = range.firstPosition; p <= range.lastPosition && p < records.count(); ++p) {
    if (records[p] < kRowLimit) rows.push_back(records[p]);
  }
  std::sort(rows.begin(), rows.end());
  std::vector<std::unique_ptr<NumberStyle>> styles;
  char shown[kDisplayTextMax];
  std::vector<uint8_t> record(kTypedCellMax);
  CellStore& cells = table.data->cells;
  // One forward cursor for reads and writes alike: the rows come in rising order.
  CellCursor cursor;
  std::vector<uint32_t> changedRows;
  for (uint32_t row : rows) {
    bool rowChanged = false;
    for (uint32_t field = range.firstField; field <= range.lastField && field < fieldCount;
         ++field) {
      uint16_t f = static_cast<uint16_t>(field);
      if (marks[f] == Mark::kNone) continue;
      const CellRecord* cell = cells.GetCell(row, f, &cursor);
      if (cell == nullptr) continue;
      std::string_view text(shown, CellDisplayText(cell, StyleOf(table, row, f, styles), shown));
      std::string result;
      size_t at = 0;
      bool hit = false;
      while (at < text.size()) {
        size_t end = 0;
        long found =
            FindInText(options.text, text.substr(at), options.matchCase, options.wholeCell, &end);
        if (found < 0) break;
        hit = true;
        result.append(text.substr(at, static_cast<size_t>(found)));
        result.append(options.replacement);
        // An empty stretch matched moves on by one character, so the scan always advances.
        size_t next = at + end;
        if (next == at + static_cast<size_t>(found)) {
          if (next < text.size()) result.push_back(text[next]);
          ++next;
        }
        at = next;
        if (options.wholeCell) break;
      }
      if (!hit) continue;
      if (at < text.size()) result.append(text.substr(at));
      if (result.size() > kCellTextMax) result.resize(kCellTextMax);
      uint32_t size;
      if (marks[f] == Mark::kNumber) {
        NumberStyle style = StyleOf(table, row, f, styles);
        TypedResult typed = TextToCell(result, style, record.data(), row, f);
        if (typed.kind == TypedCell::kUnchanged || typed.kind == TypedCell::kTooLong) continue;
        size = typed.size;
      } else {
        size = cell::EncodeText(record.data(), row, f, result);
      }
      if (size == 0 || !cells.PutCell(record.data(), &cursor)) {
        book.errorCode = err::kOutOfMemory;
        return false;
      }
      ++changed;
      rowChanged = true;
    }
    if (rowChanged) changedRows.push_back(row);
  }
  // The changed records' calculated fields, in rising row order as the walk found them.
  if (!RecalculateRecordRows(book, changedRows.data(), changedRows.size())) {
    book.errorCode = err::kOutOfMemory;
    return false;
  }
  return true;
}

}  // namespace kelpdex
