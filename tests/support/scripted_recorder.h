// An undo recorder that notes each snapshot it is asked for by name, and refuses them all on
// demand, for the tests of the commands that take snapshots.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "store/undo_recorder.h"
#include "store/workbook.h"
#include "table/schema.h"

namespace kelpdex::testing {

class ScriptedRecorder : public UndoRecorder {
 public:
  bool RecordCell(const UndoContext&, uint32_t, uint16_t) override { return Take("cell"); }
  bool RecordCells(const UndoContext&) override { return Take("cells"); }
  bool RecordRowsRemoved(const UndoContext&, const uint32_t*, uint32_t count) override {
    return Take("rows removed " + std::to_string(count));
  }
  bool RecordRowsInserted(const UndoContext&, const uint32_t*, uint32_t count) override {
    return Take("rows inserted " + std::to_string(count));
  }
  bool RecordRange(const UndoContext&) override { return Take("range"); }
  bool RecordColumnFormats(const UndoContext&) override { return Take("column formats"); }
  bool RecordRowFormats(const UndoContext&) override { return Take("row formats"); }
  bool RecordColumn(const UndoContext&, uint16_t column) override {
    return Take("column " + std::to_string(column));
  }
  bool RecordFieldSwap(const UndoContext&, uint16_t a, uint16_t b) override {
    return Take("swap " + std::to_string(a) + " " + std::to_string(b));
  }
  bool RecordFieldInserted(const UndoContext&, uint16_t column) override {
    return Take("field inserted " + std::to_string(column));
  }
  bool RecordFieldChanged(const UndoContext&, uint16_t column) override {
    return Take("field changed " + std::to_string(column));
  }
  bool RecordFieldDeleted(const UndoContext&, uint16_t column) override {
    return Take("field deleted " + std::to_string(column));
  }
  bool RecordTableRenamed(const UndoContext&, std::string_view oldName) override {
    return Take("renamed " + std::string(oldName));
  }
  bool RecordTableAdded(const UndoContext&, std::string_view name) override {
    return Take("added " + std::string(name));
  }
  bool RecordFieldList(const UndoContext&) override { return Take("field list"); }
  bool RecordTableDeleted(const UndoContext&, std::string_view name, Worksheet* catalogue,
                          Worksheet* data) override {
    if (!Take("deleted " + std::string(name))) return false;
    held.catalogue.reset(catalogue);
    held.data.reset(data);
    return true;
  }

  std::vector<std::string> calls;
  bool refuse = false;
  DetachedTable held;

 private:
  bool Take(const std::string& call) {
    calls.push_back(call);
    return !refuse;
  }
};

}  // namespace kelpdex::testing
