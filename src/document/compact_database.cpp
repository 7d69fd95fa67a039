// The Compact command of the document: the side file loses the records of replaced values.
#include <cstdio>

#include "core/reporting.h"
#include "core/strings.h"
#include "document/document_session.h"
#include "document/document_status.h"
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
  if (!copied) {
    UpdateDocumentStatus();
    ShowError(error);
    return Compaction::kFailed;
  }
  // The cells take the new offsets, and the document is written with them and made durable
  // before either file moves: then only the two renames stand between the old pair of files and
  // the new one, where a save after the swap would leave the whole write in between.
  ApplyOffsetMoves(moves, false);
  SafeFileWriter document;
  std::string backup;
  bool native = book_.openKind == DocumentKind::kNative;
  if (native && !PrepareDocumentFile(book_.fileName, book_,
                                     EffectiveFormat(book_.fileFormat, settings_.defaultFileFormat),
                                     document, error)) {
    ApplyOffsetMoves(moves, true);
    platform::DeleteFile(temporary);
    UpdateDocumentStatus();
    ShowError(error);
    return Compaction::kFailed;
  }
  if (!SwapInCompactedFile(side, temporary, backup, error)) {
    ApplyOffsetMoves(moves, true);
    UpdateDocumentStatus();
    ShowError(error);
    return Compaction::kFailed;
  }
  bool saved = native ? document.Commit(error) : SaveDocument();
  if (!saved) {
    ApplyOffsetMoves(moves, true);
    RestoreBackup(side, backup);
    if (native) ShowError(error);
    return Compaction::kFailed;
  }
  if (native && !book_.readOnly) lock_.Acquire(book_.fileName);
  DropBackup(backup);
  book_.sideValuesReplaced = false;
  // The undo steps hold offsets into the old file, and the records of replaced values they would
  // put back are gone with it: an undo would now point a cell at someone else's bytes.
  book_.ClearUndoSlots();
  RefreshCurrentTable(book_);
  UpdateDocumentStatus();
  Ask(str::kCompacted, mb::kOk | mb::kIconInformation);
  return Compaction::kCompacted;
}

}  // namespace kelpdex
