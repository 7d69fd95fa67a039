// Where schema and record commands hand their undo snapshot. Each command makes exactly one call,
// before it changes anything; a false answer (code 21 in the workbook) means the snapshot could not
// be made and the command does not start. The undo stack implements this; a workbook without one
// (kpx, loading, tests of the commands themselves) records nothing.
#pragma once

#include <cstdint>
#include <string_view>

namespace kelpdex {

class Worksheet;

// The grid's selection and current cell when the command ran, kept with the snapshot.
struct UndoContext {
  uint16_t firstColumn = 0;
  uint32_t firstRecord = 0;
  uint16_t lastColumn = 0;
  uint32_t lastRecord = 0;
  uint16_t activeColumn = 0;
  uint32_t activeRecord = 0;
};

class UndoRecorder {
 public:
  virtual ~UndoRecorder() = default;

  // Kind 1: the present record of one cell of the current table.
  virtual bool RecordCell(const UndoContext& context, uint32_t row, uint16_t column) = 0;
  // Kind 2: the cells of the records and columns of the context's selection.
  virtual bool RecordCells(const UndoContext& context) = 0;
  // Kind 3: the cells, style runs and column entries of the selected fields, every record.
  virtual bool RecordRange(const UndoContext& context) = 0;
  // Kind 4: the column entries (widths and styles) of the table.
  virtual bool RecordColumnFormats(const UndoContext& context) = 0;
  // Kind 5: the row words (heights) of the selected records.
  virtual bool RecordRowFormats(const UndoContext& context) = 0;
  // Kind 6, removal: the rows (ascending) with their cells, style runs and row words.
  virtual bool RecordRowsRemoved(const UndoContext& context, const uint32_t* rows,
                                 uint32_t count) = 0;
  // Kind 6, insertion: the rows the new records will have once inserted, in their order in the
  // record set.
  virtual bool RecordRowsInserted(const UndoContext& context, const uint32_t* rows,
                                  uint32_t count) = 0;
  // Kind 7: the whole column before a conversion.
  virtual bool RecordColumn(const UndoContext& context, uint16_t column) = 0;
  // Kind 8: two columns about to change places.
  virtual bool RecordFieldSwap(const UndoContext& context, uint16_t a, uint16_t b) = 0;
  // Kind 9, insertion: the position only; and a changed field's old row.
  virtual bool RecordFieldInserted(const UndoContext& context, uint16_t column) = 0;
  // Kind 9 for a field changed without conversion: its catalogue row as it was.
  virtual bool RecordFieldChanged(const UndoContext& context, uint16_t column) = 0;
  // Kind 9, deletion: the column with its cells and style runs, and the catalogue row.
  virtual bool RecordFieldDeleted(const UndoContext& context, uint16_t column) = 0;
  // Kind 10: the name before a rename.
  virtual bool RecordTableRenamed(const UndoContext& context, std::string_view oldName) = 0;
  // Kind 11, addition: the new table's name.
  virtual bool RecordTableAdded(const UndoContext& context, std::string_view name) = 0;
  // Kind 11, deletion: on true the recorder owns both sheets, which are detached next.
  virtual bool RecordTableDeleted(const UndoContext& context, std::string_view name,
                                  Worksheet* catalogue, Worksheet* data) = 0;
  // Kind 12: the table definition (every catalogue row, the key in force) and the record set,
  // before filters, keys or the sort change.
  virtual bool RecordFieldList(const UndoContext& context) = 0;

  // The steps recorded between the two, nested or not, undo and redo as one: a command built
  // from other commands (a drag that inserts, pastes and removes records) is one step to the
  // user.
  virtual void BeginGroup() {}
  virtual void EndGroup() {}
};

// Holds a group open for its lifetime; a null recorder records nothing.
class UndoGroup {
 public:
  explicit UndoGroup(UndoRecorder* recorder) : recorder_(recorder) {
    if (recorder_ != nullptr) recorder_->BeginGroup();
  }
  ~UndoGroup() {
    if (recorder_ != nullptr) recorder_->EndGroup();
  }
  UndoGroup(const UndoGroup&) = delete;
  UndoGroup& operator=(const UndoGroup&) = delete;

 private:
  UndoRecorder* recorder_;
};

}  // namespace kelpdex
