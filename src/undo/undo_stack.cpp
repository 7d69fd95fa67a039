#include "undo/undo_stack.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "store/catalogue.h"
#include "table/table_state.h"
#include "undo/spare_sheet.h"

namespace kelpdex {

namespace {

// The rows of the set's records first..last, ascending and distinct, reaching into the free tail
// where the selection does.
std::vector<uint32_t> RowsOfRecords(const RecordSet& set, uint32_t first, uint32_t last) {
  std::vector<uint32_t> rows;
  if (!set.allocated() || first > last || first >= RecordSet::kEntries) return rows;
  last = std::min(last, RecordSet::kEntries - 1);
  rows.reserve(last - first + 1);
  for (uint32_t r = first; r <= last; ++r) rows.push_back(set[r]);
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  return rows;
}

// The selected fields and the calculated ones, which the commands compute again for every row
// they change.
std::vector<uint16_t> TouchedColumns(const Workbook& book, uint16_t first, uint16_t last) {
  std::vector<uint16_t> columns;
  auto fields = static_cast<uint16_t>(book.fieldDefaults.size());
  for (uint16_t c = 0; c < fields; ++c) {
    if ((c >= first && c <= last) || book.fieldDefaults[c].IsCalculated()) columns.push_back(c);
  }
  return columns;
}

}  // namespace

UndoStack::UndoStack(Workbook& workbook) : book_(workbook) {
  book_.undo = this;
}

UndoStack::~UndoStack() {
  if (book_.undo == this) book_.undo = nullptr;
}

UndoSlot* UndoStack::BeginSlot(const UndoContext& context, uint8_t kind) {
  TableSpec table;
  if (!CurrentTable(book_, table)) return nullptr;
  auto& slots = book_.undoSlots;
  int32_t level = std::clamp(book_.undoLevel, 0, kUndoSlots - 1);
  ++book_.undoTop;
  if (book_.undoTop > level && book_.undoTop < kUndoSlots - 1) {
    // Full: the oldest step goes, and the rest move down one slot.
    slots[0].Clear();
    std::move(slots.begin() + 1, slots.begin() + level + 1, slots.begin());
    book_.undoTop = level;
  }
  book_.undoTop = std::min(book_.undoTop, kUndoSlots - 1);
  // A new step ends the redo chain, whatever lies above it.
  for (int32_t s = book_.undoTop; s < kUndoSlots; ++s) {
    if (slots[s].kind != undo_kind::kNone) slots[s].Clear();
  }
  UndoSlot& slot = slots[book_.undoTop];
  slot.kind = kind;
  slot.joinsPrevious = groupDepth_ > 0 && groupHasStep_;
  if (groupDepth_ > 0) groupHasStep_ = true;
  slot.context = context;
  slot.sheetIndex = TableIndexOf(book_, table.data);
  std::string path;
  if (book_.PathOfNode(table.data, path, true)) {
    std::memcpy(slot.sheetPath, path.data(), std::min(path.size(), kUndoPathSize - 1));
  }
  return &slot;
}

bool UndoStack::Refuse(UndoSlot& slot) {
  if (groupDepth_ > 0 && !slot.joinsPrevious) groupHasStep_ = false;
  slot.Clear();
  --book_.undoTop;
  book_.errorCode = err::kOutOfMemory;
  return false;
}

bool UndoStack::CopyRecordSet(UndoSlot& slot) {
  const RecordSet& set = book_.records;
  try {
    if (set.allocated()) slot.rows.assign(set.rows(), set.rows() + set.count());
  } catch (const std::bad_alloc&) {
    return false;
  }
  slot.recordCount = set.allocated() ? set.count() : 0;
  slot.recordsOrdered = set.ordered();
  slot.hasRecordCopy = true;
  slot.recordSheet = book_.currentSheet;
  return true;
}

bool UndoStack::RecordCell(const UndoContext& context, uint32_t row, uint16_t column) {
  UndoSlot* slot = BeginSlot(context, undo_kind::kCell);
  if (slot == nullptr) return false;
  try {
    std::vector<uint16_t> columns = TouchedColumns(book_, column, column);
    if (!std::binary_search(columns.begin(), columns.end(), column)) {
      columns.insert(std::lower_bound(columns.begin(), columns.end(), column), column);
    }
    CellStore& cells = book_.currentSheet->cells;
    // One exact allocation: a column word, a presence byte and the record for each cell.
    size_t size = 0;
    CellCursor cursor;
    for (uint16_t c : columns) {
      const CellRecord* r = cells.GetCell(row, c, &cursor);
      size += 3 + (r != nullptr ? cell::Size(r) : 0);
    }
    slot->singleCell.reserve(size);
    cursor.Clear();
    for (uint16_t c : columns) {
      const CellRecord* r = cells.GetCell(row, c, &cursor);
      slot->singleCell.push_back(static_cast<uint8_t>(c));
      slot->singleCell.push_back(static_cast<uint8_t>(c >> 8));
      slot->singleCell.push_back(r != nullptr ? 1 : 0);
      if (r != nullptr) {
        const uint8_t* bytes = cell::Bytes(r);
        slot->singleCell.insert(slot->singleCell.end(), bytes, bytes + cell::Size(r));
      }
    }
  } catch (const std::bad_alloc&) {
    return Refuse(*slot);
  }
  slot->cellRow = row;
  slot->recordCount = book_.records.count();
  return true;
}

bool UndoStack::RecordCells(const UndoContext& context) {
  UndoSlot* slot = BeginSlot(context, undo_kind::kCells);
  if (slot == nullptr) return false;
  try {
    slot->rows = RowsOfRecords(book_.records, context.firstRecord, context.lastRecord);
    slot->columns = TouchedColumns(book_, context.firstColumn, context.lastColumn);
    slot->snapshot = NewSpareSheet(*book_.currentSheet);
    CellStore& cells = book_.currentSheet->cells;
    CellCursor read, write;
    for (uint32_t row : slot->rows) {
      for (uint16_t c : slot->columns) {
        const CellRecord* r = cells.GetCell(row, c, &read);
        if (r != nullptr && !slot->snapshot->cells.PutCell(cell::Bytes(r), &write)) {
          return Refuse(*slot);
        }
      }
    }
  } catch (const std::bad_alloc&) {
    return Refuse(*slot);
  }
  slot->recordCount = book_.records.count();
  return true;
}

bool UndoStack::RecordRange(const UndoContext& context) {
  UndoSlot* slot = BeginSlot(context, undo_kind::kFormats);
  if (slot == nullptr) return false;
  try {
    slot->snapshot = NewSpareSheet(*book_.currentSheet);
    uint16_t last = std::min(context.lastColumn, kLastColumn);
    if (!CopyArea(*book_.currentSheet, *slot->snapshot, context.firstColumn, last, 0, kLastRow,
                  true)) {
      return Refuse(*slot);
    }
  } catch (const std::bad_alloc&) {
    return Refuse(*slot);
  }
  return true;
}

bool UndoStack::RecordColumnFormats(const UndoContext& context) {
  UndoSlot* slot = BeginSlot(context, undo_kind::kWidths);
  if (slot == nullptr) return false;
  try {
    slot->snapshot = NewSpareSheet(*book_.currentSheet);
  } catch (const std::bad_alloc&) {
    return Refuse(*slot);
  }
  for (uint16_t c = 0; c < kColumnLimit; ++c) {
    slot->snapshot->formats.Column(c) = book_.currentSheet->formats.Column(c);
  }
  return true;
}

bool UndoStack::RecordRowFormats(const UndoContext& context) {
  UndoSlot* slot = BeginSlot(context, undo_kind::kHeights);
  if (slot == nullptr) return false;
  try {
    slot->rows = RowsOfRecords(book_.records, context.firstRecord, context.lastRecord);
    slot->words.resize(slot->rows.size());
  } catch (const std::bad_alloc&) {
    return Refuse(*slot);
  }
  const RowWords& words = book_.currentSheet->formats.rowWords();
  for (size_t i = 0; i < slot->rows.size(); ++i) slot->words[i] = words.Value(slot->rows[i]);
  return true;
}

bool UndoStack::RecordRowsRemoved(const UndoContext& context, const uint32_t* rows,
                                  uint32_t count) {
  UndoSlot* slot = BeginSlot(context, undo_kind::kRecords);
  if (slot == nullptr) return false;
  try {
    // The rows in the set's order, so that undoing puts the records back where they stood.
    const RecordSet& set = book_.records;
    for (uint32_t r = context.firstRecord; r <= context.lastRecord && r < set.count(); ++r) {
      slot->rows.push_back(set[r]);
    }
    if (slot->rows.size() != count) slot->rows.assign(rows, rows + count);
    slot->snapshot = NewSpareSheet(*book_.currentSheet);
    std::vector<uint32_t> sorted(rows, rows + count);
    if (!CopyRowsOut(*book_.currentSheet, sorted, *slot->snapshot, slot->words)) {
      return Refuse(*slot);
    }
  } catch (const std::bad_alloc&) {
    return Refuse(*slot);
  }
  return true;
}

bool UndoStack::RecordRowsInserted(const UndoContext& context, const uint32_t* rows,
                                   uint32_t count) {
  UndoSlot* slot = BeginSlot(context, undo_kind::kRecords);
  if (slot == nullptr) return false;
  try {
    slot->rows.assign(rows, rows + count);
  } catch (const std::bad_alloc&) {
    return Refuse(*slot);
  }
  return true;
}

bool UndoStack::RecordFieldRow(const UndoContext& context, uint16_t column, bool withCells) {
  UndoSlot* slot = BeginSlot(context, undo_kind::kFieldColumn);
  if (slot == nullptr) return false;
  TableSpec table;
  CurrentTable(book_, table);
  try {
    slot->fieldColumn = column;
    slot->fieldBuffer = NewSpareSheet(*table.catalogue);
    if (!CopyArea(*table.catalogue, *slot->fieldBuffer, 0, kLastColumn, column + 1u, column + 1u,
                  false)) {
      return Refuse(*slot);
    }
    if (withCells) {
      slot->fieldSnapshot = NewSpareSheet(*table.data);
      if (!CopyArea(*table.data, *slot->fieldSnapshot, column, column, 0, kLastRow, false)) {
        return Refuse(*slot);
      }
    }
  } catch (const std::bad_alloc&) {
    return Refuse(*slot);
  }
  return CopyRecordSet(*slot) || Refuse(*slot);
}

bool UndoStack::RecordColumn(const UndoContext& context, uint16_t column) {
  return RecordFieldRow(context, column, true);
}

bool UndoStack::RecordFieldChanged(const UndoContext& context, uint16_t column) {
  // A change without conversion rewrites the catalogue row alone.
  return RecordFieldRow(context, column, false);
}

bool UndoStack::RecordFieldSwap(const UndoContext& context, uint16_t a, uint16_t b) {
  UndoSlot* slot = BeginSlot(context, undo_kind::kFieldMove);
  if (slot == nullptr) return false;
  slot->fieldColumn = a;
  slot->fieldColumn2 = b;
  return CopyRecordSet(*slot) || Refuse(*slot);
}

bool UndoStack::RecordFieldInserted(const UndoContext& context, uint16_t column) {
  UndoSlot* slot = BeginSlot(context, undo_kind::kFieldPlace);
  if (slot == nullptr) return false;
  slot->fieldColumn = column;
  return CopyRecordSet(*slot) || Refuse(*slot);
}

bool UndoStack::RecordFieldDeleted(const UndoContext& context, uint16_t column) {
  UndoSlot* slot = BeginSlot(context, undo_kind::kFieldPlace);
  if (slot == nullptr) return false;
  TableSpec table;
  CurrentTable(book_, table);
  slot->fieldColumn = column;
  try {
    slot->fieldBuffer = NewSpareSheet(*table.catalogue);
    slot->fieldSnapshot = NewSpareSheet(*table.data);
    std::vector<uint32_t> row{column + 1u};
    if (!CopyRowsOut(*table.catalogue, row, *slot->fieldBuffer, slot->words) ||
        !CopyColumnOut(*table.data, column, *slot->fieldSnapshot)) {
      return Refuse(*slot);
    }
    if (!CopyRecordSet(*slot)) return Refuse(*slot);
  } catch (const std::bad_alloc&) {
    return Refuse(*slot);
  }
  return true;
}

bool UndoStack::RecordTableRenamed(const UndoContext& context, std::string_view oldName) {
  UndoSlot* slot = BeginSlot(context, undo_kind::kTableName);
  if (slot == nullptr) return false;
  std::memcpy(slot->tableName, oldName.data(), std::min(oldName.size(), kUndoNameSize - 1));
  return CopyRecordSet(*slot) || Refuse(*slot);
}

bool UndoStack::RecordTableAdded(const UndoContext& context, std::string_view name) {
  UndoSlot* slot = BeginSlot(context, undo_kind::kTable);
  if (slot == nullptr) return false;
  std::memcpy(slot->tableName, name.data(), std::min(name.size(), kUndoNameSize - 1));
  // A copy: should the addition fail, the table in use keeps its set.
  const RecordSet& set = book_.records;
  if (set.allocated()) {
    if (!slot->recordSet.Allocate()) return Refuse(*slot);
    std::copy(set.rows(), set.rows() + RecordSet::kEntries, slot->recordSet.rows());
    slot->recordSet.SetCount(set.count());
    slot->recordSet.SetOrdered(set.ordered());
  }
  slot->recordSheet = book_.currentSheet;
  return true;
}

bool UndoStack::RecordTableDeleted(const UndoContext& context, std::string_view name,
                                   Worksheet* catalogue, Worksheet* data) {
  UndoSlot* slot = BeginSlot(context, undo_kind::kTable);
  if (slot == nullptr) return false;
  std::memcpy(slot->tableName, name.data(), std::min(name.size(), kUndoNameSize - 1));
  // The deleted table's set goes with its sheets; the table taking its place builds its own.
  slot->recordSet = std::move(book_.records);
  book_.records = RecordSet();
  slot->recordSheet = data;
  slot->catalogue.reset(catalogue);
  slot->dataSheet.reset(data);
  return true;
}

bool UndoStack::RecordFieldList(const UndoContext& context) {
  UndoSlot* slot = BeginSlot(context, undo_kind::kRecordSet);
  if (slot == nullptr) return false;
  TableSpec table;
  CurrentTable(book_, table);
  try {
    slot->snapshot = NewSpareSheet(*table.catalogue);
    if (!CopyArea(*table.catalogue, *slot->snapshot, 0, kLastColumn, 0, kLastRow, true)) {
      return Refuse(*slot);
    }
    if (!CopyRecordSet(*slot)) return Refuse(*slot);
  } catch (const std::bad_alloc&) {
    return Refuse(*slot);
  }
  return true;
}

void UndoStack::ClearSlot(int32_t slot) {
  if (slot >= 0 && slot < kUndoSlots) book_.undoSlots[slot].Clear();
}

bool UndoStack::CanUndo() const {
  return book_.undoTop >= 0;
}

bool UndoStack::CanRedo() const {
  int32_t next = book_.undoTop + 1;
  return book_.undoTop < kRedoSlotLimit && next < kUndoSlots &&
         book_.undoSlots[next].kind != undo_kind::kNone;
}

UndoOutcome UndoStack::Step(int32_t slot, int32_t delta) {
  UndoOutcome outcome;
  const Worksheet* before = book_.currentSheet;
  uint8_t kind = book_.undoSlots[slot].kind;
  outcome.selection = book_.undoSlots[slot].context;
  book_.errorCode = err::kNone;
  outcome.applied = ApplyUndo(slot);
  outcome.refreshFrame = book_.currentSheet != before || kind == undo_kind::kTableName;
  book_.undoTop += delta;
  book_.modified = true;
  return outcome;
}

UndoOutcome UndoStack::Undo() {
  if (!CanUndo()) return {};
  UndoOutcome outcome = Step(book_.undoTop, -1);
  // The rest of a group goes back too, and the selection is the one its first step saw.
  while (book_.undoSlots[book_.undoTop + 1].joinsPrevious && CanUndo()) {
    UndoOutcome earlier = Step(book_.undoTop, -1);
    outcome.applied = outcome.applied && earlier.applied;
    outcome.refreshFrame = outcome.refreshFrame || earlier.refreshFrame;
    outcome.selection = earlier.selection;
  }
  return outcome;
}

UndoOutcome UndoStack::Redo() {
  if (!CanRedo()) return {};
  UndoOutcome outcome = Step(book_.undoTop + 1, +1);
  while (CanRedo() && book_.undoSlots[book_.undoTop + 1].joinsPrevious) {
    UndoOutcome later = Step(book_.undoTop + 1, +1);
    outcome.applied = outcome.applied && later.applied;
    outcome.refreshFrame = outcome.refreshFrame || later.refreshFrame;
    outcome.selection = later.selection;
  }
  return outcome;
}

void UndoStack::BeginGroup() {
  if (groupDepth_++ == 0) groupHasStep_ = false;
}

void UndoStack::EndGroup() {
  if (groupDepth_ > 0) --groupDepth_;
}

size_t UndoStack::HeldBytes() const {
  size_t bytes = 0;
  for (const UndoSlot& slot : book_.undoSlots) bytes += slot.HeldBytes();
  return bytes;
}

}  // namespace kelpdex
