// The Long Text and Images/Files values of cells. A cell of such a field holds the offset of its
// record in the side file; a value typed or attached since the last save waits in the sheet's
// pending list instead, and the save appends it and puts its offset into the cell.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/error_code.h"
#include "persist/side_file.h"
#include "store/workbook.h"

namespace kelpdex {

// The pending object of a cell, or null.
const SheetObject* FindPendingObject(const Worksheet& data, uint32_t row, uint16_t column,
                                     FieldType type);
// The side file offset a cell holds: a whole number from 0 below the size limit.
bool StoredOffset(const CellRecord* cell, uint32_t& offset);

// The value of a cell, from the pending list or else the side file at `sidePath`. `present` is
// false for a cell that holds none. A Long Text cell that holds a text, as an import may leave
// it, reads as that text. Errors as SideFile's readers give them.
bool ReadLongTextValue(Worksheet& data, const std::string& sidePath, uint32_t row, uint16_t column,
                       std::string& text, bool& present, ErrorCode& error);
bool ReadObjectsValue(Worksheet& data, const std::string& sidePath, uint32_t row, uint16_t column,
                      BinaryObjectList& list, bool& present, ErrorCode& error);

// Give a cell a new value, pending until the next save. Replacing a value the side file holds
// marks the workbook for compaction.
void SetLongTextValue(Workbook& book, Worksheet& data, uint32_t row, uint16_t column,
                      std::string text);
void SetObjectsValue(Workbook& book, Worksheet& data, uint32_t row, uint16_t column,
                     const BinaryObjectList& list);

// What a save changed in the cells and pending lists, so that a save that fails later can give
// it back.
struct PendingFlush {
  struct Cell {
    Worksheet* sheet;
    uint32_t row;
    uint16_t column;
    std::vector<uint8_t> before;  // the record the cell held; empty when it held none
  };
  std::vector<std::pair<Worksheet*, std::vector<SheetObject>>> lists;
  std::vector<Cell> cells;
};

// Appends every pending value of the workbook to the side file at `sidePath`, puts the offsets
// into the cells and empties the lists. On failure nothing changed: the side file is cut back
// to its size before, and cells and lists are as they were.
bool FlushPendingObjects(Workbook& book, const std::string& sidePath, PendingFlush& flush,
                         ErrorCode& error);
// Undoes a flush whose save failed afterwards. The records it appended stay in the side file,
// dead.
void RestorePendingObjects(Workbook& book, PendingFlush& flush);

}  // namespace kelpdex
