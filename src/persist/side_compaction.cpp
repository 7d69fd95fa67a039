#include "persist/side_compaction.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "persist/side_file_io.h"
#include "persist/side_values.h"
#include "platform/file_meta.h"
#include "platform/os.h"
#include "store/catalogue.h"
#include "store/cell_record.h"
#include "store/field_row.h"

namespace kelpdex {

std::vector<SideField> FindSideFields(Workbook& book) {
  std::vector<SideField> fields;
  for (uint32_t i = 0; Worksheet* data = book.TableByIndex(i); ++i) {
    TableSpec table;
    std::string name(data->Name());
    if (!MakeTableSpec(book, name, table)) continue;
    uint16_t count = FieldCount(table);
    for (uint16_t f = 0; f < count; ++f) {
      FieldSpec field;
      if (!ReadField(table, f, field)) continue;
      if (field.type == FieldType::kLongText || field.type == FieldType::kFiles) {
        fields.push_back(SideField{name, table.data, f, field.type});
      }
    }
  }
  return fields;
}

namespace {

template <typename Visit>
void ForEachStoredCell(const std::vector<SideField>& fields, Visit visit) {
  for (const SideField& field : fields) {
    uint32_t rows = field.data->UsedRows();
    for (uint32_t row = 0; row < rows; ++row) {
      uint32_t offset = 0;
      if (StoredOffset(field.data->cells.GetCellFast(row, field.column), offset)) {
        visit(field, row, offset);
      }
    }
  }
}

}  // namespace

bool HasDeadRecords(const std::vector<SideField>& fields, const std::string& sidePath) {
  std::unordered_set<uint32_t> live;
  ForEachStoredCell(fields,
                    [&](const SideField&, uint32_t, uint32_t offset) { live.insert(offset); });
  std::vector<uint32_t> records;
  ErrorCode error = err::kNone;
  if (!SideFile::ListRecords(sidePath, records, error)) return true;
  return std::any_of(records.begin(), records.end(),
                     [&](uint32_t offset) { return live.count(offset) == 0; });
}

bool CopyLiveRecords(const std::vector<SideField>& fields, const std::string& sidePath,
                     const std::string& temporaryPath, std::vector<OffsetMove>& moves,
                     ErrorCode& error,
                     const std::function<void(const std::string& table, int percent)>& progress) {
  moves.clear();
  SideFileReader reader;
  SideFileWriter writer;
  // A temporary file left by a compaction that was killed is ours to take.
  platform::DeleteFile(temporaryPath);
  if (!reader.Open(sidePath, error) || !writer.Open(temporaryPath, error)) {
    writer.Abandon();
    platform::DeleteFile(temporaryPath);
    return false;
  }
  // Cells that share a record share its copy too.
  std::unordered_map<uint32_t, uint32_t> copied;
  std::string text;
  BinaryObjectList list;
  bool ok = true;
  size_t first = 0;
  while (ok && first < fields.size()) {
    // The fields of one table, which the status reports on together.
    size_t end = first;
    while (end < fields.size() && fields[end].data == fields[first].data) ++end;
    Worksheet* data = fields[first].data;
    uint32_t rows = data->UsedRows();
    int shown = -1;
    for (uint32_t row = 0; row < rows && ok; ++row) {
      int percent = static_cast<int>(uint64_t{row} * 100 / rows);
      if (percent != shown && progress) progress(fields[first].table, shown = percent);
      for (size_t f = first; f < end && ok; ++f) {
        uint32_t offset = 0;
        if (!StoredOffset(data->cells.GetCellFast(row, fields[f].column), offset)) continue;
        auto found = copied.find(offset);
        uint32_t to = 0;
        if (found != copied.end()) {
          to = found->second;
        } else if (fields[f].type == FieldType::kLongText) {
          // The characters move as they are; a record they do not pass goes through the decoder,
          // which copies what it can read and names the fault of what it cannot.
          if (reader.ReadLongTextBase64(offset, text)) {
            ok = writer.AppendLongTextBase64(text, to, error);
          } else {
            ok = reader.ReadLongText(offset, text, error) && writer.AppendLongText(text, to, error);
          }
        } else {
          ok = reader.ReadObjects(offset, list, error) &&
               writer.AppendObjects(list.first(), to, error);
        }
        if (!ok) break;
        copied.emplace(offset, to);
        moves.push_back(OffsetMove{data, row, fields[f].column, offset, to});
      }
    }
    if (ok && progress) progress(fields[first].table, 100);
    first = end;
  }
  if (ok && writer.Sync(error) && writer.Close(error)) return true;
  writer.Abandon();
  platform::DeleteFile(temporaryPath);
  moves.clear();
  return false;
}

void ApplyOffsetMoves(const std::vector<OffsetMove>& moves, bool back) {
  for (const OffsetMove& move : moves) {
    // The number is rewritten in place: a number record keeps its size, so nothing can fail here
    // and the cell keeps its other attributes.
    CellRecord* cell = move.sheet->cells.GetCellFast(move.row, move.column);
    if (cell == nullptr || !cell::IsNumber(cell)) continue;
    StoreF64(cell::Bytes(cell) + 7, back ? move.from : move.to);
  }
}

std::string CompactionTemporaryPath(const std::string& sidePath) {
  std::string folder = platform::FolderOf(sidePath);
  std::string name = "." + platform::FileNameOf(sidePath) + ".compacting";
  return folder.empty() ? name : platform::JoinPath(folder, name);
}

bool SwapInCompactedFile(const std::string& sidePath, const std::string& temporaryPath,
                         std::string& backupPath, ErrorCode& error) {
  backupPath.clear();
  platform::ReplacedFile old;
  if (!platform::InspectReplacedFile(sidePath, old) || !old.exists || !old.regular) {
    platform::DeleteFile(temporaryPath);
    error = err::kFileOpenRead;
    return false;
  }
  // The backup is a second name of the old file where the file system allows one: nothing is
  // copied, and the old bytes stay whole whatever happens to the side file's name.
  std::string backup;
  bool made = false;
  for (int n = 1; n < 1000 && !made; ++n) {
    backup = sidePath + std::to_string(n);
    if (platform::FileExists(backup) || platform::FolderExists(backup)) continue;
    made = platform::LinkFile(sidePath, backup) || platform::CopyFile(sidePath, backup, true);
  }
  if (!made) {
    platform::DeleteFile(temporaryPath);
    error = err::kFileOpenWrite;
    return false;
  }
  // A side file the user may not write to is not replaced behind his back.
  bool readOnly = !old.writable;
#ifndef _WIN32
  // Without any write permission the file is read-only, also for a user who could write it.
  readOnly = readOnly || (old.mode & 0222) == 0;
#endif
  if (readOnly) {
    platform::DeleteFile(backup);
    platform::DeleteFile(temporaryPath);
    error = err::kFileOpenWrite;
    return false;
  }
  if (!platform::TakeOverPermissions(temporaryPath, old) ||
      !platform::ReplaceFile(temporaryPath, sidePath)) {
    platform::DeleteFile(backup);
    platform::DeleteFile(temporaryPath);
    error = err::kFileWrite;
    return false;
  }
  std::string folder = platform::FolderOf(sidePath);
  platform::SyncFile(folder.empty() ? "." : folder);
  backupPath = backup;
  return true;
}

bool RestoreBackup(const std::string& sidePath, const std::string& backupPath) {
  return platform::ReplaceFile(backupPath, sidePath);
}

void DropBackup(const std::string& backupPath) {
  platform::DeleteFile(backupPath);
}

}  // namespace kelpdex
