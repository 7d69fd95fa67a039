// The undo stack: the workbook's slots filled by the commands through the recorder seam, and the
// Undo and Redo commands, which run one routine that puts a slot's snapshot back and keeps what it
// replaced, so that the same slot serves both directions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "search/run_filters.h"
#include "store/undo_recorder.h"
#include "store/workbook.h"

namespace kelpdex {

// What the frame does after an Undo or Redo: refresh everything when the current table changed
// or a table was renamed, else put the selection back.
struct UndoOutcome {
  bool applied = false;
  bool refreshFrame = false;
  UndoContext selection;
};

class UndoStack : public UndoRecorder {
 public:
  // Records into `workbook`'s slots; the stack becomes the workbook's recorder until destroyed.
  explicit UndoStack(Workbook& workbook);
  ~UndoStack() override;
  UndoStack(const UndoStack&) = delete;
  UndoStack& operator=(const UndoStack&) = delete;

  // How a table made current by an undo gets its record set again.
  void SetSearchOptions(const FilterOptions& options) { search_ = options; }

  bool RecordCell(const UndoContext& context, uint32_t row, uint16_t column) override;
  bool RecordCells(const UndoContext& context) override;
  bool RecordRange(const UndoContext& context) override;
  bool RecordColumnFormats(const UndoContext& context) override;
  bool RecordRowFormats(const UndoContext& context) override;
  bool RecordRowsRemoved(const UndoContext& context, const uint32_t* rows, uint32_t count) override;
  bool RecordRowsInserted(const UndoContext& context, const uint32_t* rows,
                          uint32_t count) override;
  bool RecordColumn(const UndoContext& context, uint16_t column) override;
  bool RecordFieldSwap(const UndoContext& context, uint16_t a, uint16_t b) override;
  bool RecordFieldInserted(const UndoContext& context, uint16_t column) override;
  bool RecordFieldChanged(const UndoContext& context, uint16_t column) override;
  bool RecordFieldDeleted(const UndoContext& context, uint16_t column) override;
  bool RecordTableRenamed(const UndoContext& context, std::string_view oldName) override;
  bool RecordTableAdded(const UndoContext& context, std::string_view name) override;
  bool RecordTableDeleted(const UndoContext& context, std::string_view name, Worksheet* catalogue,
                          Worksheet* data) override;
  bool RecordFieldList(const UndoContext& context) override;
  void BeginGroup() override;
  void EndGroup() override;

  // Puts slot `slot` back, in whichever direction it stands. False with the workbook's code.
  bool ApplyUndo(int32_t slot);
  void ClearSlot(int32_t slot);

  bool CanUndo() const;
  bool CanRedo() const;
  // The commands. Either moves `undoTop` even when applying fails half-way, so that a further
  // Undo reaches the earlier step; the failure's code is in the workbook.
  UndoOutcome Undo();
  UndoOutcome Redo();

  // What all slots hold beyond the slots themselves.
  size_t HeldBytes() const;

 private:
  // The start every Record routine shares: the next slot, emptied, with the redo chain cleared and
  // the oldest step dropped when the stack is full. Null with code 25 when there is no table.
  UndoSlot* BeginSlot(const UndoContext& context, uint8_t kind);
  // A snapshot that could not be made: the slot goes empty and the command does not run.
  bool Refuse(UndoSlot& slot);
  bool CopyRecordSet(UndoSlot& slot);
  // Kind 7: the field's catalogue row, and with `withCells` its column's cells.
  bool RecordFieldRow(const UndoContext& context, uint16_t column, bool withCells);
  UndoOutcome Step(int32_t slot, int32_t delta);

  int groupDepth_ = 0;
  bool groupHasStep_ = false;  // the open group's first step is recorded

  // The appliers, one per kind; the table of the slot is current.
  bool ApplyCell(UndoSlot& slot);
  bool ApplyCells(UndoSlot& slot);
  bool ApplyArea(UndoSlot& slot);
  bool ApplyWidths(UndoSlot& slot);
  bool ApplyHeights(UndoSlot& slot);
  bool ApplyRecords(UndoSlot& slot, bool trustSet);
  bool ApplyFieldColumn(UndoSlot& slot);
  bool ApplyFieldPlace(UndoSlot& slot);
  bool ApplyTableName(UndoSlot& slot);
  bool ApplyTable(UndoSlot& slot);
  bool ApplyRecordSet(UndoSlot& slot);
  // Exchanges the record set with the slot's copy.
  bool SwapRecordSet(UndoSlot& slot);
  // Rows of kind 6 taken out of the table into the slot, or put back from it.
  bool TakeRowsOut(UndoSlot& slot, bool trustSet);
  bool PutRowsIn(UndoSlot& slot, bool trustSet);

  Workbook& book_;
  FilterOptions search_;
};

}  // namespace kelpdex
