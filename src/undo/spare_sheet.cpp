#include "undo/spare_sheet.h"

#include <algorithm>

namespace kelpdex {

namespace {

// Below this many blocks a spare goes back cell by cell; above, one merge over both chains costs
// less than shifting block tails once per record.
constexpr uint32_t kMergeBlocks = 16;

bool CopyRuns(const FormatStore& from, FormatStore& to, uint16_t firstColumn, uint16_t lastColumn,
              uint32_t firstRow, uint32_t lastRow) {
  RunCursor cursor;
  StyleRun run;
  while (from.NextRun(cursor, run)) {
    if (run.row < firstRow) continue;
    if (run.row > lastRow) break;
    if (run.lastColumn < firstColumn || run.firstColumn > lastColumn) continue;
    StyleRun cut = run;
    cut.firstColumn = std::max(run.firstColumn, firstColumn);
    cut.lastColumn = std::min(run.lastColumn, lastColumn);
    if (!to.ApplyStyleRun(cut)) return false;
  }
  return true;
}

bool ApplyAllRuns(const FormatStore& from, FormatStore& to) {
  RunCursor cursor;
  StyleRun run;
  while (from.NextRun(cursor, run)) {
    if (!to.ApplyStyleRun(run)) return false;
  }
  return true;
}

}  // namespace

std::unique_ptr<Worksheet> NewSpareSheet(const Worksheet& of) {
  auto spare = std::make_unique<Worksheet>(of.Name());
  spare->level = 1;
  return spare;
}

bool MoveCellsInto(CellStore& into, CellStore& from) {
  if (from.blockCount() >= kMergeBlocks) return into.MergeFrom(from);
  CellCursor read, write;
  read.flags = kCursorFollow;
  for (CellRecord* r = from.NextCell(read); r != nullptr; r = from.NextCell(read)) {
    if (!into.PutCell(cell::Bytes(r), &write)) return false;
  }
  from.Reset(true);
  return true;
}

bool CopyArea(const Worksheet& sheet, Worksheet& spare, uint16_t firstColumn, uint16_t lastColumn,
              uint32_t firstRow, uint32_t lastRow, bool withColumnEntries) {
  // Copying reads only; the store's range walk is not marked const.
  CellStore& cells = const_cast<CellStore&>(sheet.cells);
  if (!cells.CopyRange(firstColumn, lastColumn, firstRow, lastRow, spare.cells) ||
      !CopyRuns(sheet.formats, spare.formats, firstColumn, lastColumn, firstRow, lastRow)) {
    return false;
  }
  if (withColumnEntries) {
    for (uint32_t c = firstColumn; c <= lastColumn; ++c) {
      spare.formats.Column(static_cast<uint16_t>(c)) =
          sheet.formats.Column(static_cast<uint16_t>(c));
    }
  }
  return true;
}

bool ExchangeArea(Worksheet& sheet, std::unique_ptr<Worksheet>& spare, uint16_t firstColumn,
                  uint16_t lastColumn, uint32_t firstRow, uint32_t lastRow,
                  bool withColumnEntries) {
  std::unique_ptr<Worksheet> taken = NewSpareSheet(sheet);
  if (!CopyArea(sheet, *taken, firstColumn, lastColumn, firstRow, lastRow, withColumnEntries)) {
    return false;
  }
  if (!sheet.formats.ClearStyleRange(firstColumn, lastColumn, firstRow, lastRow)) return false;
  sheet.cells.DeleteRange(firstColumn, lastColumn, firstRow, lastRow);
  if (!MoveCellsInto(sheet.cells, spare->cells) || !ApplyAllRuns(spare->formats, sheet.formats)) {
    return false;
  }
  if (withColumnEntries) {
    for (uint32_t c = firstColumn; c <= lastColumn; ++c) {
      sheet.formats.Column(static_cast<uint16_t>(c)) =
          spare->formats.Column(static_cast<uint16_t>(c));
    }
  }
  spare = std::move(taken);
  return true;
}

bool ExchangeCells(Worksheet& sheet, std::unique_ptr<Worksheet>& spare,
                   const std::vector<uint32_t>& rows, const std::vector<uint16_t>& columns) {
  std::unique_ptr<Worksheet> taken = NewSpareSheet(sheet);
  // Both walks go in ascending order, so each cursor only ever moves forward.
  CellCursor at, keep, old;
  for (uint32_t row : rows) {
    for (uint16_t column : columns) {
      CellRecord* present = sheet.cells.GetCell(row, column, &at);
      if (present != nullptr && !taken->cells.PutCell(cell::Bytes(present), &keep)) return false;
      CellRecord* saved = spare->cells.GetCell(row, column, &old);
      if (saved != nullptr) {
        if (!sheet.cells.PutCell(cell::Bytes(saved), &at)) return false;
      } else if (present != nullptr) {
        sheet.cells.DeleteRange(column, column, row, row, &at);
      }
    }
  }
  spare = std::move(taken);
  return true;
}

bool CopyRowsOut(const Worksheet& sheet, const std::vector<uint32_t>& rows, Worksheet& spare,
                 std::vector<uint16_t>& words) {
  CellStore& cells = const_cast<CellStore&>(sheet.cells);
  CellCursor into;
  for (uint32_t row : rows) {
    if (!cells.CopyRange(0, kLastColumn, row, row, spare.cells, &into)) return false;
  }
  RunCursor cursor;
  StyleRun run;
  while (sheet.formats.NextRun(cursor, run)) {
    if (std::binary_search(rows.begin(), rows.end(), run.row) &&
        !spare.formats.ApplyStyleRun(run)) {
      return false;
    }
  }
  words.resize(rows.size());
  for (size_t i = 0; i < rows.size(); ++i) words[i] = sheet.formats.rowWords().Value(rows[i]);
  for (const SheetObject& object : sheet.objects) {
    if (std::binary_search(rows.begin(), rows.end(), object.row)) spare.objects.push_back(object);
  }
  return true;
}

bool PutRowsBack(Worksheet& sheet, Worksheet& spare, const std::vector<uint32_t>& rows,
                 const std::vector<uint16_t>& words) {
  if (!MoveCellsInto(sheet.cells, spare.cells) || !ApplyAllRuns(spare.formats, sheet.formats)) {
    return false;
  }
  RowWords& target = sheet.formats.rowWords();
  for (size_t i = 0; i < rows.size() && i < words.size(); ++i) {
    if (words[i] == 0 && target.Value(rows[i]) == 0) continue;
    uint16_t* word = target.Word(rows[i]);
    if (word == nullptr) return false;
    *word = words[i];
  }
  for (SheetObject& object : spare.objects) sheet.objects.push_back(std::move(object));
  spare.objects.clear();
  return true;
}

bool CopyColumnOut(const Worksheet& sheet, uint16_t column, Worksheet& spare) {
  if (!CopyArea(sheet, spare, column, column, 0, kLastRow, true)) return false;
  for (const SheetObject& object : sheet.objects) {
    if (object.column == column) spare.objects.push_back(object);
  }
  return true;
}

bool PutColumnBack(Worksheet& sheet, Worksheet& spare, uint16_t column) {
  if (!MoveCellsInto(sheet.cells, spare.cells) || !ApplyAllRuns(spare.formats, sheet.formats)) {
    return false;
  }
  sheet.formats.Column(column) = spare.formats.Column(column);
  for (SheetObject& object : spare.objects) sheet.objects.push_back(std::move(object));
  spare.objects.clear();
  return true;
}

}  // namespace kelpdex
