// One level of the undo stack: the snapshot a command took of what it was about to change. Applying
// a slot puts the snapshot back and keeps what it replaced in the same slot, so that the slot then
// redoes the command; there is no separate redo stack.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "store/record_set.h"
#include "store/undo_recorder.h"

namespace kelpdex {

class Worksheet;

constexpr int32_t kUndoSlots = 101;
// Redo never reaches the last two slots.
constexpr int32_t kRedoSlotLimit = 98;
constexpr size_t kUndoPathSize = 256;
constexpr size_t kUndoNameSize = 128;

namespace undo_kind {
constexpr uint8_t kNone = 0;
constexpr uint8_t kCell = 1;
constexpr uint8_t kCells = 2;
constexpr uint8_t kFormats = 3;
constexpr uint8_t kWidths = 4;
constexpr uint8_t kHeights = 5;
constexpr uint8_t kRecords = 6;
constexpr uint8_t kFieldColumn = 7;
constexpr uint8_t kFieldMove = 8;
constexpr uint8_t kFieldPlace = 9;
constexpr uint8_t kTableName = 10;
constexpr uint8_t kTable = 11;
constexpr uint8_t kRecordSet = 12;
}  // namespace undo_kind

struct UndoSlot {
  UndoSlot();
  ~UndoSlot();
  UndoSlot(UndoSlot&&) noexcept;
  UndoSlot& operator=(UndoSlot&&) noexcept;

  // Frees what the slot owns and empties it.
  void Clear();
  // The bytes the slot holds beyond its own size, for the memory checks of the stack.
  size_t HeldBytes() const;

  uint8_t kind = undo_kind::kNone;
  // Recorded inside a group after its first step: undone together with the slot below it.
  bool joinsPrevious = false;
  char sheetPath[kUndoPathSize] = {};
  int32_t sheetIndex = -1;  // the table's place among the tables
  UndoContext context;
  // Kinds 2, 5 and 6: the rows concerned, in the record set's order. Kinds 7 to 12: a copy of the
  // record set on the other side of the slot, `recordCount` entries.
  std::vector<uint32_t> rows;
  // Kind 5: the words of `rows`; kind 6: the words of the rows taken out.
  std::vector<uint16_t> words;
  // Kind 2: the columns whose cells the snapshot holds, ascending: the selected fields and the
  // calculated ones the command computed again.
  std::vector<uint16_t> columns;
  // Kinds 1 and 2: the set's count on the other side; kinds 7 to 12: the copy's.
  uint32_t recordCount = 0;
  bool recordsOrdered = true;
  bool hasRecordCopy = false;
  // The data sheet whose record set the copy is, compared but never followed: a copy is put back
  // only into the set of the table it came from.
  const Worksheet* recordSheet = nullptr;
  // Kind 1: the row, and for the edited cell and each calculated field of the row a column word,
  // a presence byte and the old record.
  uint32_t cellRow = 0;
  std::vector<uint8_t> singleCell;
  // Kinds 2 to 6 and 12: a spare sheet with the copied cells, runs and words.
  std::unique_ptr<Worksheet> snapshot;
  // Kinds 7 to 9: the field's column or columns, its catalogue row, and its column's cells.
  uint16_t fieldColumn = 0;
  uint16_t fieldColumn2 = 0;
  std::unique_ptr<Worksheet> fieldBuffer;
  std::unique_ptr<Worksheet> fieldSnapshot;
  // Kinds 10 and 11.
  char tableName[kUndoNameSize] = {};
  std::unique_ptr<Worksheet> catalogue;
  std::unique_ptr<Worksheet> dataSheet;
  // Kind 11: the record set of the table on the other side, exchanged whole rather than copied,
  // so that the step costs the same for any size of table. `recordSheet` says whose it is.
  RecordSet recordSet;
};

}  // namespace kelpdex
