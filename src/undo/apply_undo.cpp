#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "search/run_filters.h"
#include "store/catalogue.h"
#include "table/schema.h"
#include "table/table_state.h"
#include "undo/spare_sheet.h"
#include "undo/undo_stack.h"

namespace kelpdex {

namespace {

// The recorder stays out of the way while a slot is put back: the commands an undo reuses must
// not record themselves.
class RecorderPause {
 public:
  explicit RecorderPause(Workbook& book) : book_(book), saved_(book.undo) { book.undo = nullptr; }
  ~RecorderPause() { book_.undo = saved_; }
  RecorderPause(const RecorderPause&) = delete;
  RecorderPause& operator=(const RecorderPause&) = delete;

 private:
  Workbook& book_;
  UndoRecorder* saved_;
};

bool Fail(Workbook& book, ErrorCode code) {
  if (book.errorCode == err::kNone) book.errorCode = code;
  return false;
}

struct SetCopy {
  std::vector<uint32_t> rows;
  uint32_t count = 0;
  bool ordered = true;
  const Worksheet* sheet = nullptr;
};

SetCopy TakeSetCopy(const Workbook& book) {
  SetCopy copy;
  const RecordSet& set = book.records;
  if (set.allocated()) copy.rows.assign(set.rows(), set.rows() + set.count());
  copy.count = set.allocated() ? set.count() : 0;
  copy.ordered = set.ordered();
  copy.sheet = book.currentSheet;
  return copy;
}

void PutFreeTail(Workbook& book) {
  if (book.currentSheet != nullptr && book.records.allocated()) {
    book.records.RewriteFreeTail(FirstFreeRow(book.records, *book.currentSheet));
  }
}

// The set's count on the other side of a kind 1 or 2 slot: an edit behind the last record made
// records of the rows up to it.
void SwapRecordCount(Workbook& book, UndoSlot& slot, bool trustSet) {
  RecordSet& set = book.records;
  if (!trustSet || !set.allocated()) return;
  uint32_t now = set.count();
  set.SetCount(std::min(slot.recordCount, RecordSet::kEntries));
  slot.recordCount = now;
  PutFreeTail(book);
}

}  // namespace

bool UndoStack::ApplyUndo(int32_t index) {
  if (index < 0 || index >= kUndoSlots) return false;
  UndoSlot& slot = book_.undoSlots[index];
  if (slot.kind == undo_kind::kNone) return true;
  RecorderPause pause(book_);
  bool trustSet = true;
  if (slot.kind != undo_kind::kTable) {
    // The slot's table first, its record set built afresh when it was not the current one.
    Worksheet* target = book_.TableByIndex(static_cast<uint32_t>(std::max(slot.sheetIndex, 0)));
    if (slot.sheetIndex < 0 || target == nullptr) return Fail(book_, err::kNoTableSelected);
    if (target != book_.currentSheet) {
      book_.currentSheet = target;
      if (!RefreshCurrentTable(book_) || !RunSearch(book_, search_)) return false;
      trustSet = false;
    }
  }
  SetCopy before;
  try {
    if (slot.hasRecordCopy) before = TakeSetCopy(book_);
  } catch (const std::bad_alloc&) {
    return Fail(book_, err::kOutOfMemory);
  }
  bool ok = false;
  switch (slot.kind) {
    case undo_kind::kCell:
      ok = ApplyCell(slot);
      SwapRecordCount(book_, slot, trustSet);
      break;
    case undo_kind::kCells:
      ok = ApplyCells(slot);
      SwapRecordCount(book_, slot, trustSet);
      break;
    case undo_kind::kFormats:
      ok = ApplyArea(slot);
      break;
    case undo_kind::kWidths:
      ok = ApplyWidths(slot);
      break;
    case undo_kind::kHeights:
      ok = ApplyHeights(slot);
      break;
    case undo_kind::kRecords:
      ok = ApplyRecords(slot, trustSet);
      break;
    case undo_kind::kFieldColumn:
      ok = ApplyFieldColumn(slot);
      break;
    case undo_kind::kFieldMove:
      ok = SwapFields(book_, slot.fieldColumn, slot.fieldColumn2);
      break;
    case undo_kind::kFieldPlace:
      ok = ApplyFieldPlace(slot);
      break;
    case undo_kind::kTableName:
      ok = ApplyTableName(slot);
      break;
    case undo_kind::kTable:
      ok = ApplyTable(slot);
      break;
    case undo_kind::kRecordSet:
      ok = ApplyRecordSet(slot);
      break;
    default:
      return Fail(book_, err::kOutOfMemory);
  }
  if (slot.hasRecordCopy) {
    // The copy goes back only into its own table's set; any other gets its search run again.
    RecordSet& set = book_.records;
    if (book_.currentSheet == slot.recordSheet && set.Allocate()) {
      std::copy(slot.rows.begin(), slot.rows.end(), set.rows());
      set.SetCount(slot.recordCount);
      set.SetOrdered(slot.recordsOrdered);
      PutFreeTail(book_);
    } else if (book_.currentSheet != nullptr) {
      ok = RunSearch(book_, search_) && ok;
    }
    slot.rows = std::move(before.rows);
    slot.recordCount = before.count;
    slot.recordsOrdered = before.ordered;
    slot.recordSheet = before.sheet;
  } else if (!trustSet) {
    ok = RunSearch(book_, search_) && ok;
  }
  if (!ok) Fail(book_, err::kOutOfMemory);
  return ok;
}

bool UndoStack::ApplyCell(UndoSlot& slot) {
  CellStore& cells = book_.currentSheet->cells;
  std::vector<uint8_t> present;
  try {
    size_t size = 0;
    for (size_t at = 0; at < slot.singleCell.size();) {
      auto column = static_cast<uint16_t>(slot.singleCell[at] | (slot.singleCell[at + 1] << 8));
      const CellRecord* r = cells.GetCell(slot.cellRow, column);
      size += 3 + (r != nullptr ? cell::Size(r) : 0);
      at += 3 + (slot.singleCell[at + 2] ? cell::Size(slot.singleCell.data() + at + 3) : 0);
    }
    present.reserve(size);
  } catch (const std::bad_alloc&) {
    return false;
  }
  for (size_t at = 0; at < slot.singleCell.size();) {
    auto column = static_cast<uint16_t>(slot.singleCell[at] | (slot.singleCell[at + 1] << 8));
    bool had = slot.singleCell[at + 2] != 0;
    const uint8_t* saved = slot.singleCell.data() + at + 3;
    const CellRecord* r = cells.GetCell(slot.cellRow, column);
    present.push_back(slot.singleCell[at]);
    present.push_back(slot.singleCell[at + 1]);
    present.push_back(r != nullptr ? 1 : 0);
    if (r != nullptr) {
      const uint8_t* bytes = cell::Bytes(r);
      present.insert(present.end(), bytes, bytes + cell::Size(r));
    }
    if (had) {
      if (!cells.PutCell(saved)) return false;
    } else if (r != nullptr) {
      cells.DeleteRange(column, column, slot.cellRow, slot.cellRow);
    }
    at += 3 + (had ? cell::Size(saved) : 0);
  }
  slot.singleCell = std::move(present);
  return true;
}

bool UndoStack::ApplyCells(UndoSlot& slot) {
  return ExchangeCells(*book_.currentSheet, slot.snapshot, slot.rows, slot.columns);
}

bool UndoStack::ApplyArea(UndoSlot& slot) {
  uint16_t last = std::min(slot.context.lastColumn, kLastColumn);
  return ExchangeArea(*book_.currentSheet, slot.snapshot, slot.context.firstColumn, last, 0,
                      kLastRow, true);
}

bool UndoStack::ApplyWidths(UndoSlot& slot) {
  FormatStore& formats = book_.currentSheet->formats;
  for (uint16_t c = 0; c < kColumnLimit; ++c) {
    std::swap(formats.Column(c), slot.snapshot->formats.Column(c));
  }
  return true;
}

bool UndoStack::ApplyHeights(UndoSlot& slot) {
  RowWords& words = book_.currentSheet->formats.rowWords();
  for (size_t i = 0; i < slot.rows.size(); ++i) {
    uint16_t now = words.Value(slot.rows[i]);
    if (now == slot.words[i]) continue;
    uint16_t* word = words.Word(slot.rows[i]);
    if (word == nullptr) return false;
    *word = slot.words[i];
    slot.words[i] = now;
  }
  return true;
}

bool UndoStack::ApplyRecords(UndoSlot& slot, bool trustSet) {
  return slot.snapshot != nullptr ? PutRowsIn(slot, trustSet) : TakeRowsOut(slot, trustSet);
}

bool UndoStack::TakeRowsOut(UndoSlot& slot, bool trustSet) {
  Worksheet& sheet = *book_.currentSheet;
  std::vector<uint32_t> sorted = slot.rows;
  std::sort(sorted.begin(), sorted.end());
  slot.snapshot = NewSpareSheet(sheet);
  if (!CopyRowsOut(sheet, sorted, *slot.snapshot, slot.words)) return false;
  sheet.RemoveRows(sorted.data(), sorted.size());
  RecordSet& set = book_.records;
  if (trustSet && set.allocated()) {
    // The records of the rows leave the set wherever they stand; the others close up.
    uint32_t kept = 0;
    for (uint32_t i = 0; i < set.count(); ++i) {
      uint32_t row = set[i];
      auto below = std::lower_bound(sorted.begin(), sorted.end(), row);
      if (below != sorted.end() && *below == row) continue;
      set.rows()[kept++] = row - static_cast<uint32_t>(below - sorted.begin());
    }
    set.SetCount(kept);
    PutFreeTail(book_);
  }
  return true;
}

bool UndoStack::PutRowsIn(UndoSlot& slot, bool trustSet) {
  Worksheet& sheet = *book_.currentSheet;
  std::vector<uint32_t> sorted = slot.rows;
  std::sort(sorted.begin(), sorted.end());
  // In the present numbering each row goes back before the row that now has its place.
  std::vector<uint32_t> before(sorted.size());
  for (size_t i = 0; i < sorted.size(); ++i) before[i] = sorted[i] - static_cast<uint32_t>(i);
  ErrorCode error = err::kNone;
  if (!sheet.InsertRowsBefore(before.data(), before.size(), error)) return Fail(book_, error);
  if (!PutRowsBack(sheet, *slot.snapshot, sorted, slot.words)) return false;
  slot.snapshot.reset();
  slot.words.clear();
  RecordSet& set = book_.records;
  if (trustSet && set.allocated()) {
    uint32_t count = set.count();
    uint32_t* rows = set.rows();
    for (uint32_t i = 0; i < count; ++i) {
      rows[i] += static_cast<uint32_t>(std::upper_bound(before.begin(), before.end(), rows[i]) -
                                       before.begin());
    }
    auto n = static_cast<uint32_t>(slot.rows.size());
    uint32_t at = std::min(slot.context.firstRecord, count);
    if (count + n > RecordSet::kEntries) return Fail(book_, err::kTooManyRecords);
    std::memmove(rows + at + n, rows + at, (count - at) * sizeof *rows);
    std::copy(slot.rows.begin(), slot.rows.end(), rows + at);
    set.SetCount(count + n);
    PutFreeTail(book_);
  }
  return true;
}

bool UndoStack::ApplyFieldColumn(UndoSlot& slot) {
  TableSpec table;
  if (!CurrentTable(book_, table)) return false;
  uint16_t column = slot.fieldColumn;
  if (!ExchangeArea(*table.catalogue, slot.fieldBuffer, 0, kLastColumn, column + 1u, column + 1u,
                    false)) {
    return false;
  }
  if (slot.fieldSnapshot != nullptr &&
      !ExchangeArea(*table.data, slot.fieldSnapshot, column, column, 0, kLastRow, false)) {
    return false;
  }
  return RefreshCurrentTable(book_);
}

bool UndoStack::ApplyFieldPlace(UndoSlot& slot) {
  TableSpec table;
  if (!CurrentTable(book_, table)) return false;
  uint16_t column = slot.fieldColumn;
  if (slot.fieldBuffer != nullptr) {
    // The field was deleted: its catalogue row and its column go back in.
    ErrorCode error = err::kNone;
    if (!table.catalogue->InsertRows(column + 1u, column + 1u, error) ||
        !table.data->InsertColumn(column, error)) {
      return Fail(book_, error);
    }
    std::vector<uint32_t> row{column + 1u};
    if (!PutRowsBack(*table.catalogue, *slot.fieldBuffer, row, slot.words) ||
        !PutColumnBack(*table.data, *slot.fieldSnapshot, column)) {
      return false;
    }
    slot.fieldBuffer.reset();
    slot.fieldSnapshot.reset();
    slot.words.clear();
  } else {
    slot.fieldBuffer = NewSpareSheet(*table.catalogue);
    slot.fieldSnapshot = NewSpareSheet(*table.data);
    std::vector<uint32_t> row{column + 1u};
    if (!CopyRowsOut(*table.catalogue, row, *slot.fieldBuffer, slot.words) ||
        !CopyColumnOut(*table.data, column, *slot.fieldSnapshot)) {
      return false;
    }
    table.catalogue->DeleteRow(column + 1u);
    table.data->DeleteColumn(column);
  }
  return RefreshCurrentTable(book_);
}

bool UndoStack::ApplyTableName(UndoSlot& slot) {
  TableSpec table;
  if (!CurrentTable(book_, table)) return false;
  std::string present(table.data->Name());
  table.catalogue->SetName(slot.tableName);
  table.data->SetName(slot.tableName);
  std::memset(slot.tableName, 0, sizeof slot.tableName);
  std::memcpy(slot.tableName, present.data(), std::min(present.size(), kUndoNameSize - 1));
  return RefreshCurrentTable(book_);
}

bool UndoStack::ApplyTable(UndoSlot& slot) {
  const Worksheet* before = book_.currentSheet;
  if (slot.catalogue != nullptr) {
    // Deleted: both sheets come back, at the end of the tables, and the table is current.
    WorkbookNode* system = book_.FindNode("\\system");
    Worksheet* data = slot.dataSheet.release();
    book_.AttachNode(slot.catalogue.release(), system);
    book_.AttachNode(data, nullptr);
    book_.currentSheet = data;
  } else {
    // Added: both sheets leave and are kept; the table current when the step was taken becomes
    // current again: before an addition the table the user was in, for a deletion the deleted
    // one's place, now the table behind it.
    Worksheet* catalogue = book_.FindCatalogue(slot.tableName);
    Worksheet* data = book_.FindTable(slot.tableName);
    if (catalogue == nullptr || data == nullptr) return Fail(book_, err::kNoTableSelected);
    int index = TableIndexOf(book_, data);
    if (!book_.DetachNode(catalogue)) return Fail(book_, err::kNeedsOneTable);
    if (!book_.DetachNode(data)) {
      book_.AttachNode(catalogue, book_.FindNode("\\system"));
      return Fail(book_, err::kNeedsOneTable);
    }
    slot.catalogue.reset(catalogue);
    slot.dataSheet.reset(data);
    int next = slot.sheetIndex >= 0 ? slot.sheetIndex : index;
    Worksheet* current = book_.TableByIndex(static_cast<uint32_t>(next));
    if (current == nullptr && next > 0) {
      current = book_.TableByIndex(static_cast<uint32_t>(next - 1));
    }
    book_.currentSheet = current;
  }
  // The sets change places whole: the one in use goes with the table that stops being current.
  const Worksheet* leaving = slot.recordSheet;
  slot.recordSheet = nullptr;
  TableSpec table;
  if (!CurrentTable(book_, table)) return Fail(book_, err::kNoTableSelected);
  book_.fieldDefaults = BuildFieldDefaults(table);
  std::swap(book_.records, slot.recordSet);
  slot.recordSheet = slot.recordSet.allocated() ? before : nullptr;
  if (leaving != book_.currentSheet || !book_.records.allocated()) {
    return RefreshCurrentTable(book_) && RunSearch(book_, search_);
  }
  return true;
}

bool UndoStack::ApplyRecordSet(UndoSlot& slot) {
  TableSpec table;
  if (!CurrentTable(book_, table)) return false;
  if (!ExchangeArea(*table.catalogue, slot.snapshot, 0, kLastColumn, 0, kLastRow, true)) {
    return false;
  }
  return RefreshCurrentTable(book_);
}

}  // namespace kelpdex
