// The Compact command of the document: the side file loses the records of replaced values.
#include <cstdio>

#include "core/reporting.h"
#include "core/strings.h"
#include "document/document_session.h"
#include "persist/document_file.h"
#include "persist/side_compaction.h"
#include "table/table_state.h"

namespace kelpdex {

namespace {

bool HasPendingObjects(const Workbook& book) {
  for (WorkbookNode* node = book.firstNode; node != nullptr; node = node->next) {
    if (node->IsWorksheet() && !static_cast<Worksheet*>(node)->objects.empty()) return true;
  }
  return false;
}

}  // namespace

DocumentSession::Compaction DocumentSession::CompactDatabase() {
  if (!HasDocument() || book_.fileName.empty() || book_.readOnly) {
    Ask(str::kNoCompactingNeeded, mb::kOk | mb::kIconInformation);
    return Compaction::kNotNeeded;
  }
  std::vector<SideField> fields = FindSideFields(book_);
  if (fields.empty()) {
    Ask(str::kNothingToCompact, mb::kOk | mb::kIconInformation);
    return Compaction::kNotNeeded;
  }
  const std::string side = SideFilePath(book_.fileName);
  // The flag lives only as long as the session; a document opened afresh is asked of its file.
  bool needed =
      book_.sideValuesReplaced || (platform::FileExists(side) && HasDeadRecords(fields, side));
  if (!needed || (!platform::FileExists(side) && !HasPendingObjects(book_))) {
    Ask(str::kNoCompactingNeeded, mb::kOk | mb::kIconInformation);
    return Compaction::kNotNeeded;
  }
  // The values not yet saved go into the side file with the save, and are compacted with it.
  if (!SaveDocument()) return Compaction::kFailed;
  const std::string temporary = CompactionTemporaryPath(side);
  std::vector<OffsetMove> moves;
  ErrorCode error = err::kNone;
  bool copied = CopyLiveRecords(
      fields, side, temporary, moves, error, [this](const std::string& table, int percent) {
        char text[200];
        std::snprintf(text, sizeof text, "Compacting %s : %d%%", table.c_str(), percent);
        if (view_ != nullptr) view_->StatusChanged(text);
      });
  std::string backup;
  if (!copied || !SwapInCompactedFile(side, temporary, backup, error)) {
    UpdateDocumentStatus();
    ShowError(error);
    return Compaction::kFailed;
  }
  // Only now, with the new file in place, do the cells take its offsets; the document is saved
  // with them before the old file goes, which a failed save puts back.
  ApplyOffsetMoves(moves, false);
  if (!SaveDocument()) {
    ApplyOffsetMoves(moves, true);
    RestoreBackup(side, backup);
    return Compaction::kFailed;
  }
  DropBackup(backup);
  book_.sideValuesReplaced = false;
  RefreshCurrentTable(book_);
  UpdateDocumentStatus();
  Ask(str::kCompacted, mb::kOk | mb::kIconInformation);
  return Compaction::kCompacted;
}

}  // namespace kelpdex
