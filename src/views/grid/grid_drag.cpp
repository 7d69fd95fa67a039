// Dragging records: a press on the selection's frame drags the selected records with the
// clipboard's two forms; a drop on a row puts them before that row. Within one document the
// records move, or are copied with Ctrl held; from elsewhere the dropped cells come in as new
// records.
#include <QApplication>
#include <QDrag>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <algorithm>

#include "core/reporting.h"
#include "table/cell_entry.h"
#include "table/records.h"
#include "text/utf8.h"
#include "views/grid/clipboard_text.h"
#include "views/grid/grid_view.h"

namespace kelpdex::views {

namespace {

constexpr const char* kNativeMime = "application/x-kelpdex";

}  // namespace

bool GridView::OnSelectionFrame(const QPoint& at) const {
  QRect first = CellRect(selection_.firstField, selection_.firstPosition);
  QRect last = CellRect(selection_.lastField, selection_.lastPosition);
  if (!first.isValid()) return false;
  // A selection running out of view ends at the client's edge.
  PixelRect r{first.left(), first.top(), last.isValid() ? last.right() + 1 : viewport()->width(),
              last.isValid() ? last.bottom() + 1 : viewport()->height()};
  return IsOnSelectionFrame(at.x(), at.y(), r, selection_.firstPosition == selection_.lastPosition);
}

void GridView::StartRecordDrag() {
  // The drag carries whole records, whatever fields the selection spans.
  selection_.firstField = 0;
  selection_.lastField = static_cast<uint16_t>(fieldCount_ - 1);
  viewport()->update();
  auto* mime = new QMimeData;
  mime->setText(CopyText(false));
  mime->setData(kNativeMime, CopyText(true).toUtf8());
  auto* drag = new QDrag(this);
  drag->setMimeData(mime);
  drag->exec(Qt::MoveAction | Qt::CopyAction, Qt::MoveAction);
}

void GridView::dragEnterEvent(QDragEnterEvent* event) {
  if (book_ == nullptr || book_->firstNode == nullptr || fieldCount_ == 0) return;
  if (event->mimeData()->hasFormat(kNativeMime) || event->mimeData()->hasText()) {
    event->acceptProposedAction();
  }
}

void GridView::dragMoveEvent(QDragMoveEvent* event) {
  int64_t position = PositionAt(event->position().toPoint().y());
  if (position < 0) {
    event->ignore();
    return;
  }
  event->acceptProposedAction();
}

void GridView::dropEvent(QDropEvent* event) {
  int64_t position = PositionAt(event->position().toPoint().y());
  if (position < 0 || book_ == nullptr || book_->firstNode == nullptr) return;
  const bool copy = (event->modifiers() & Qt::ControlModifier) != 0;
  auto* source = qobject_cast<GridView*>(event->source());
  bool ok = false;
  if (source != nullptr && source->book_ == book_) {
    ok = MoveRecords(static_cast<uint32_t>(position), copy);
  } else {
    const QMimeData* mime = event->mimeData();
    bool native = mime->hasFormat(kNativeMime);
    std::string text = text::Utf8ToCp1252(native ? mime->data(kNativeMime).toStdString()
                                                 : mime->text().toStdString());
    ok = DropCells(static_cast<uint32_t>(position), text, native);
  }
  if (ok) {
    event->setDropAction(copy || source == nullptr ? Qt::CopyAction : Qt::MoveAction);
    event->accept();
  }
}

bool GridView::OpenRecordsAt(uint32_t position, uint32_t count) {
  // New records go in as one block only where the set is in row order; a sorted or narrowed set
  // has no block between two of its records.
  if (position >= recordCount()) return true;
  if (!book_->records.ordered()) {
    QApplication::beep();
    return false;
  }
  // InsertRecords opens as many records as the selection it is given holds, and a selection
  // ends at the last record: more records than stand behind the position take several steps.
  while (count > 0) {
    uint32_t step = std::min(count, recordCount() - position);
    if (!InsertRecords(*book_, position, position + step - 1, nullptr, Context())) {
      ShowError(book_->errorCode);
      return false;
    }
    count -= step;
  }
  return true;
}

bool GridView::DropCells(uint32_t position, const std::string& text, bool native) {
  CommitEdit(move_mode::kNone);
  std::vector<std::vector<std::string>> lines = ParseClipboardText(text, kEditTextMax);
  size_t count = lines.size() - (native && lines.size() >= 2 ? 2 : 0);
  if (count == 0) return false;
  UndoGroup group(book_->undo);
  if (!OpenRecordsAt(position, static_cast<uint32_t>(count))) return false;
  selection_ = {0, position, 0, position};
  anchorField_ = activeField_ = 0;
  anchorPosition_ = activePosition_ = position;
  return PasteText(text, native);
}

bool GridView::MoveRecords(uint32_t target, bool copy) {
  if (book_ == nullptr || book_->firstNode == nullptr || fieldCount_ == 0) return false;
  CommitEdit(move_mode::kNone);
  const uint32_t count = recordCount();
  uint32_t first = selection_.firstPosition;
  if (first >= count) return false;
  uint32_t last = std::min(selection_.lastPosition, count - 1);
  // Dropping a block onto itself changes nothing.
  if (!copy && target >= first && target <= last + 1) return false;
  // Long Text and Images/Files values do not travel with the cells: moving such records would
  // lose them, so only copies are made.
  if (!copy && std::any_of(fields_.begin(), fields_.end(), [](const FieldInfo& f) {
        return f.type == FieldType::kLongText || f.type == FieldType::kFiles;
      })) {
    QApplication::beep();
    return false;
  }
  selection_.firstField = 0;
  selection_.lastField = static_cast<uint16_t>(fieldCount_ - 1);
  selection_.lastPosition = last;
  // Opening, filling and removing records is one move to the user, and one Undo.
  UndoGroup group(book_->undo);
  std::string text = text::Utf8ToCp1252(CopyText(true).toStdString());
  const uint32_t n = last - first + 1;
  if (!DropCells(target, text, true)) return false;
  if (!copy) {
    // The new records pushed the originals down when they went in before them.
    if (target <= first) {
      first += n;
      last += n;
    }
    if (!RemoveRecords(*book_, first, last, Context())) {
      ShowError(book_->errorCode);
      return false;
    }
    if (target > last) target -= n;
  }
  SetSelection({0, target, static_cast<uint16_t>(fieldCount_ - 1), target + n - 1});
  UpdateScrollRanges();
  emit documentChanged();
  return true;
}

}  // namespace kelpdex::views
