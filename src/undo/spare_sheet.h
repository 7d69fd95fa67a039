// Spare sheets: worksheets that belong to no list and hold what an undo step took out of a table,
// cells, style runs, column entries and objects, at the rows and columns they came from, so that
// putting them back needs no renumbering.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "store/workbook.h"

namespace kelpdex {

std::unique_ptr<Worksheet> NewSpareSheet(const Worksheet& of);

// Copies the cells and runs of the columns [firstColumn, lastColumn] and rows [firstRow, lastRow],
// and with `withColumnEntries` the columns' entries, into `spare`.
bool CopyArea(const Worksheet& sheet, Worksheet& spare, uint16_t firstColumn, uint16_t lastColumn,
              uint32_t firstRow, uint32_t lastRow, bool withColumnEntries);
// Every cell, run and column entry of the columns [firstColumn, lastColumn] and rows
// [firstRow, lastRow] of `sheet` goes to a new spare, and those of `spare` take their place.
// False on out of memory.
bool ExchangeArea(Worksheet& sheet, std::unique_ptr<Worksheet>& spare, uint16_t firstColumn,
                  uint16_t lastColumn, uint32_t firstRow, uint32_t lastRow, bool withColumnEntries);

// The same for the cells of some rows (ascending) in some columns (ascending) only.
bool ExchangeCells(Worksheet& sheet, std::unique_ptr<Worksheet>& spare,
                   const std::vector<uint32_t>& rows, const std::vector<uint16_t>& columns);

// Whole rows (ascending): cells, runs and objects into `spare`, row words into `words`.
bool CopyRowsOut(const Worksheet& sheet, const std::vector<uint32_t>& rows, Worksheet& spare,
                 std::vector<uint16_t>& words);
// Puts rows copied out back into rows opened for them at the same numbers.
bool PutRowsBack(Worksheet& sheet, Worksheet& spare, const std::vector<uint32_t>& rows,
                 const std::vector<uint16_t>& words);

// One whole column: cells, runs cut to the column, its entry and its objects.
bool CopyColumnOut(const Worksheet& sheet, uint16_t column, Worksheet& spare);
// Puts a column copied out back into a column opened for it at the same number.
bool PutColumnBack(Worksheet& sheet, Worksheet& spare, uint16_t column);

// Moves every record of `from` into `into`, replacing cells at the same places: record by record
// for a few, in one sweep over both chains for many.
bool MoveCellsInto(CellStore& into, CellStore& from);

}  // namespace kelpdex
