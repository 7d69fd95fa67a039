#include "persist/side_values.h"

#include <cmath>
#include <cstring>

#include "persist/side_file_io.h"
#include "platform/os.h"
#include "store/cell_record.h"

namespace kelpdex {

namespace {

SheetObject* FindPending(Worksheet& data, uint32_t row, uint16_t column, FieldType type) {
  for (SheetObject& object : data.objects) {
    if (object.row == row && object.column == column && object.type == type) return &object;
  }
  return nullptr;
}

void SetPending(Workbook& book, Worksheet& data, uint32_t row, uint16_t column, FieldType type,
                std::string content) {
  if (SheetObject* pending = FindPending(data, row, column, type)) {
    pending->content = std::move(content);
    return;
  }
  uint32_t offset = 0;
  if (StoredOffset(data.cells.GetCellFast(row, column), offset)) book.sideValuesReplaced = true;
  data.objects.push_back(SheetObject{row, column, type, std::move(content)});
}

}  // namespace

const SheetObject* FindPendingObject(const Worksheet& data, uint32_t row, uint16_t column,
                                     FieldType type) {
  return FindPending(const_cast<Worksheet&>(data), row, column, type);
}

bool StoredOffset(const CellRecord* cell, uint32_t& offset) {
  if (cell == nullptr || !cell::IsNumber(cell)) return false;
  double n = cell::Number(cell);
  if (!(n >= 0 && n < static_cast<double>(SideFile::kSizeLimit)) || std::floor(n) != n) {
    return false;
  }
  offset = static_cast<uint32_t>(n);
  return true;
}

bool ReadLongTextValue(Worksheet& data, const std::string& sidePath, uint32_t row, uint16_t column,
                       std::string& text, bool& present, ErrorCode& error) {
  text.clear();
  present = true;
  if (const SheetObject* pending = FindPending(data, row, column, FieldType::kLongText)) {
    text = pending->content;
    return true;
  }
  const CellRecord* cell = data.cells.GetCellFast(row, column);
  uint32_t offset = 0;
  if (StoredOffset(cell, offset)) return SideFile::ReadLongText(sidePath, offset, text, error);
  if (cell != nullptr && cell::IsText(cell)) {
    text = cell::Text(cell);
    return true;
  }
  present = false;
  return true;
}

bool ReadObjectsValue(Worksheet& data, const std::string& sidePath, uint32_t row, uint16_t column,
                      BinaryObjectList& list, bool& present, ErrorCode& error) {
  list.Clear();
  present = true;
  if (const SheetObject* pending = FindPending(data, row, column, FieldType::kFiles)) {
    if (UnpackObjects(pending->content, list)) return true;
    error = err::kOutOfMemory;
    return false;
  }
  uint32_t offset = 0;
  if (StoredOffset(data.cells.GetCellFast(row, column), offset)) {
    return SideFile::ReadObjects(sidePath, offset, list, error);
  }
  present = false;
  return true;
}

void SetLongTextValue(Workbook& book, Worksheet& data, uint32_t row, uint16_t column,
                      std::string text) {
  SetPending(book, data, row, column, FieldType::kLongText, std::move(text));
}

void SetObjectsValue(Workbook& book, Worksheet& data, uint32_t row, uint16_t column,
                     const BinaryObjectList& list) {
  SetPending(book, data, row, column, FieldType::kFiles, PackObjects(list));
}

bool FlushPendingObjects(Workbook& book, const std::string& sidePath, PendingFlush& flush,
                         ErrorCode& error) {
  flush = PendingFlush();
  bool any = false;
  for (WorkbookNode* node = book.firstNode; node != nullptr && !any; node = node->next) {
    any = node->IsWorksheet() && !static_cast<Worksheet*>(node)->objects.empty();
  }
  if (!any) return true;
  // One writer for all of them: a failure cuts the file back to where it ended before.
  SideFileWriter writer;
  uint64_t size = 0;
  if (platform::FileExists(sidePath) && platform::GetFileSize(sidePath, size) &&
      size >= SideFile::kSizeLimit) {
    error = err::kSideFileTooLarge;
    return false;
  }
  if (!writer.Open(sidePath, error)) return false;
  bool ok = true;
  BinaryObjectList list;
  uint8_t record[cell::kNumberSize];
  for (WorkbookNode* node = book.firstNode; node != nullptr && ok; node = node->next) {
    if (!node->IsWorksheet()) continue;
    auto* sheet = static_cast<Worksheet*>(node);
    if (sheet->objects.empty()) continue;
    flush.lists.emplace_back(sheet, std::move(sheet->objects));
    sheet->objects.clear();
    for (const SheetObject& object : flush.lists.back().second) {
      uint32_t offset = 0;
      if (object.type == FieldType::kFiles) {
        ok = UnpackObjects(object.content, list);
        if (!ok) error = err::kOutOfMemory;
        ok = ok && writer.AppendObjects(list.first(), offset, error);
      } else {
        ok = writer.AppendLongText(object.content, offset, error);
      }
      if (!ok) break;
      PendingFlush::Cell changed{sheet, object.row, object.column, {}};
      if (const CellRecord* old = sheet->cells.GetCellFast(object.row, object.column)) {
        const uint8_t* bytes = cell::Bytes(old);
        changed.before.assign(bytes, bytes + cell::Size(old));
      }
      cell::EncodeNumber(record, object.row, object.column, offset);
      ok = sheet->cells.PutCell(record);
      if (!ok) {
        error = err::kOutOfMemory;
        break;
      }
      flush.cells.push_back(std::move(changed));
    }
  }
  if (ok && writer.Sync(error) && writer.Close(error)) return true;
  writer.Abandon();
  RestorePendingObjects(book, flush);
  return false;
}

void RestorePendingObjects(Workbook& book, PendingFlush& flush) {
  for (auto it = flush.cells.rbegin(); it != flush.cells.rend(); ++it) {
    if (it->before.empty()) {
      it->sheet->cells.DeleteRange(it->column, it->column, it->row, it->row);
    } else {
      it->sheet->cells.PutCell(it->before.data());
    }
  }
  if (!flush.cells.empty()) book.sideValuesReplaced = true;
  for (auto& [sheet, objects] : flush.lists) {
    // Values set after the flush are newer than those given back.
    for (SheetObject& object : objects) {
      if (FindPending(*sheet, object.row, object.column, object.type) == nullptr) {
        sheet->objects.push_back(std::move(object));
      }
    }
  }
  flush = PendingFlush();
}

}  // namespace kelpdex
