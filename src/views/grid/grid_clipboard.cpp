// Copy, paste and Delete over the grid's selection. Copying puts the cells as they are shown on
// the clipboard twice: as plain text, and in the native form, which also names the fields so a
// paste into the same table puts each value into the field of its name.
#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <algorithm>

#include "core/reporting.h"
#include "table/cell_entry.h"
#include "table/clear_cells.h"
#include "text/utf8.h"
#include "views/grid/clipboard_text.h"
#include "views/grid/grid_view.h"

namespace kelpdex::views {

namespace {

constexpr const char* kNativeMime = "application/x-kelpdex";
constexpr std::string_view kNativeMark = "KelpdexCells";

}  // namespace

QString GridView::CopyText(bool native) {
  std::string out;
  if (native) {
    out.append(kNativeMark).append("\r\n");
    for (uint16_t f = selection_.firstField; f <= selection_.lastField; ++f) {
      if (f != selection_.firstField) out += '\t';
      AppendClipboardCell(out, fields_[f].name);
    }
    out += "\r\n";
  }
  uint32_t last = std::min(selection_.lastPosition, std::max(recordCount(), 1u) - 1);
  for (uint32_t p = selection_.firstPosition; p <= last && p < recordCount(); ++p) {
    for (uint16_t f = selection_.firstField; f <= selection_.lastField; ++f) {
      if (f != selection_.firstField) out += '\t';
      AppendClipboardCell(out, DisplayText(f, p));
    }
    out += "\r\n";
  }
  return QString::fromUtf8(text::Cp1252ToUtf8(out));
}

void GridView::CopySelection() {
  if (book_ == nullptr || book_->firstNode == nullptr || fieldCount_ == 0) return;
  auto* mime = new QMimeData;
  mime->setText(CopyText(false));
  mime->setData(kNativeMime, CopyText(true).toUtf8());
  QApplication::clipboard()->setMimeData(mime);
}

bool GridView::PasteClipboard() {
  if (book_ == nullptr || book_->firstNode == nullptr || fieldCount_ == 0) return false;
  const QMimeData* mime = QApplication::clipboard()->mimeData();
  if (mime == nullptr) {
    ShowError(err::kClipboardBusy);
    return false;
  }
  if (mime->hasFormat(kNativeMime)) {
    return PasteText(text::Utf8ToCp1252(mime->data(kNativeMime).toStdString()), true);
  }
  if (mime->hasText()) return PasteText(text::Utf8ToCp1252(mime->text().toStdString()), false);
  return false;
}

bool GridView::PasteText(const std::string& text, bool native) {
  std::vector<std::vector<std::string>> lines = ParseClipboardText(text, kEditTextMax);
  // The native form's second line names the fields; a paste into a table that has every one of
  // them goes by name, otherwise by place like plain text.
  std::vector<int> targets;
  if (native && lines.size() >= 2 && !lines[0].empty() && lines[0][0] == kNativeMark) {
    std::vector<int> byName;
    for (const std::string& name : lines[1]) {
      auto it = std::find_if(fields_.begin(), fields_.end(),
                             [&](const FieldInfo& f) { return f.name == name; });
      if (it == fields_.end()) break;
      byName.push_back(static_cast<int>(it - fields_.begin()));
    }
    if (byName.size() == lines[1].size() && lines[1].size() > 1) targets = byName;
    lines.erase(lines.begin(), lines.begin() + 2);
  }
  if (lines.empty()) return true;
  size_t width = 0;
  for (const auto& line : lines) width = std::max(width, line.size());
  if (targets.empty()) {
    for (size_t i = 0; i < width && activeField_ + i < fieldCount_; ++i) {
      targets.push_back(static_cast<int>(activeField_ + i));
    }
  }
  if (targets.empty()) return true;
  const uint32_t first = selection_.firstPosition;
  if (first + lines.size() - 1 > RecordSet::kEntries - 1) {
    ShowError(err::kTooManyRecords);
    return false;
  }
  // One undo step for the whole paste, then the cells go in through the one commit path.
  UndoContext context = Context();
  context.firstRecord = first;
  context.lastRecord = static_cast<uint32_t>(first + lines.size() - 1);
  context.firstColumn = static_cast<uint16_t>(*std::min_element(targets.begin(), targets.end()));
  context.lastColumn = static_cast<uint16_t>(*std::max_element(targets.begin(), targets.end()));
  if (book_->undo != nullptr && !book_->undo->RecordCells(context)) {
    ShowError(book_->errorCode);
    return false;
  }
  UndoRecorder* recorder = book_->undo;
  book_->undo = nullptr;
  bool ok = true;
  for (size_t l = 0; l < lines.size() && ok; ++l) {
    for (size_t i = 0; i < targets.size() && i < lines[l].size(); ++i) {
      const FieldInfo& info = fields_[targets[i]];
      if (info.calculated || !HoldsCellValues(info.type)) continue;
      EntryResult r = CommitText(*book_, static_cast<uint32_t>(first + l),
                                 static_cast<uint16_t>(targets[i]), lines[l][i], context);
      if (r == EntryResult::kFailed) {
        ok = false;
        break;
      }
    }
  }
  book_->undo = recorder;
  if (!ok) ShowError(book_->errorCode);
  selection_.lastPosition = context.lastRecord;
  selection_.firstField = context.firstColumn;
  selection_.lastField = context.lastColumn;
  UpdateScrollRanges();
  viewport()->update();
  emit documentChanged();
  emit selectionChanged();
  return ok;
}

void GridView::ClearSelection() {
  if (book_ == nullptr || book_->firstNode == nullptr || fieldCount_ == 0) return;
  if (!ClearCells(*book_, Context())) {
    ShowError(book_->errorCode);
    return;
  }
  viewport()->update();
  emit documentChanged();
}

}  // namespace kelpdex::views
