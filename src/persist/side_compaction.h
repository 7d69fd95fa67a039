// Compaction of the side file: the records the cells point to are copied into a new file, which
// takes the old one's place; the dead records of replaced values stay behind. The cells get
// their new offsets only once the new file stands.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "core/error_code.h"
#include "store/workbook.h"

namespace kelpdex {

// A Long Text or Images/Files field of a table.
struct SideField {
  std::string table;
  Worksheet* data = nullptr;
  uint16_t column = 0;
  FieldType type = FieldType::kUnknown;
};

// A cell whose record moves.
struct OffsetMove {
  Worksheet* sheet = nullptr;
  uint32_t row = 0;
  uint16_t column = 0;
  uint32_t from = 0;
  uint32_t to = 0;
};

// Every table's Long Text and Images/Files fields, tables in the order of the catalogues.
std::vector<SideField> FindSideFields(Workbook& book);

// Whether the side file holds a record that no cell points to. A file that cannot be read
// through counts as holding one: compaction will tell what is wrong with it.
bool HasDeadRecords(const std::vector<SideField>& fields, const std::string& sidePath);

// Copies each record the cells of `fields` point to from `sidePath` into a new file at
// `temporaryPath`, once for each offset however many cells share it, and lists the moves.
// `progress` hears the table and the percentage of its records done. On failure the temporary
// file is gone and `error` says why (72 for a record that cannot be read).
bool CopyLiveRecords(const std::vector<SideField>& fields, const std::string& sidePath,
                     const std::string& temporaryPath, std::vector<OffsetMove>& moves,
                     ErrorCode& error,
                     const std::function<void(const std::string& table, int percent)>& progress);

// Puts the new offsets into the cells, or with `back` the old ones again.
void ApplyOffsetMoves(const std::vector<OffsetMove>& moves, bool back);

// The temporary file stands beside the side file, so that it takes its place by a rename.
std::string CompactionTemporaryPath(const std::string& sidePath);

// Puts the file at `temporaryPath` in the place of the side file, with the side file's
// permissions. The old file stays under `backupPath`, the side file's path with a number
// appended, until DropBackup or RestoreBackup. On failure (61 for a side file that may not be
// written, 65 otherwise) the side file is as it was, and neither the temporary file nor a backup
// is left.
bool SwapInCompactedFile(const std::string& sidePath, const std::string& temporaryPath,
                         std::string& backupPath, ErrorCode& error);
// Gives the side file its old bytes back from the backup, which goes.
bool RestoreBackup(const std::string& sidePath, const std::string& backupPath);
void DropBackup(const std::string& backupPath);

}  // namespace kelpdex
