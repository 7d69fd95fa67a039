// In-place editing: the edit control over the cell, its drop-down list, and CommitEdit, the one
// way typed text reaches a record.
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <algorithm>

#include "core/reporting.h"
#include "table/cell_entry.h"
#include "text/code_page.h"
#include "text/utf8.h"
#include "views/grid/grid_view.h"

namespace kelpdex::views {

// The edit control: the keys that end an edit go back to the grid; everything else, Ctrl+Z
// included, is the control's own.
class GridEditor : public QLineEdit {
 public:
  explicit GridEditor(GridView* grid) : QLineEdit(grid->viewport()), grid_(grid) {
    setMaxLength(static_cast<int>(kEditTextMax));
    setFrame(false);
    hide();
  }

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    switch (event->key()) {
      case Qt::Key_Escape:
        grid_->CancelEdit();
        return;
      case Qt::Key_Return:
      case Qt::Key_Enter:
        grid_->CommitEdit(move_mode::kEnter);
        return;
      case Qt::Key_Up:
        if (grid_->dropDown_->isVisible() && grid_->dropDown_->currentRow() > 0) {
          StepList(-1);
          return;
        }
        grid_->CommitEdit(move_mode::kUp);
        return;
      case Qt::Key_Down:
        if (grid_->dropDown_->isVisible()) {
          StepList(1);
          return;
        }
        grid_->CommitEdit(move_mode::kDown);
        return;
      case Qt::Key_Tab:
        grid_->CommitEdit(move_mode::kRight);
        return;
      case Qt::Key_Backtab:
        grid_->CommitEdit(move_mode::kLeft);
        return;
      default:
        QLineEdit::keyPressEvent(event);
    }
  }
  bool event(QEvent* event) override {
    // Tab must reach keyPressEvent instead of moving the focus.
    if (event->type() == QEvent::KeyPress) {
      auto* key = static_cast<QKeyEvent*>(event);
      if (key->key() == Qt::Key_Tab || key->key() == Qt::Key_Backtab) {
        keyPressEvent(key);
        return true;
      }
    }
    return QLineEdit::event(event);
  }

 private:
  void StepList(int step) {
    QListWidget* list = grid_->dropDown_;
    int row = std::clamp(list->currentRow() + step, 0, list->count() - 1);
    list->setCurrentRow(row);
    if (QListWidgetItem* item = list->item(row)) setText(item->text());
  }
  GridView* grid_;
};

QLineEdit* GridView::editor() const {
  return editor_;
}

bool GridView::StartEdit(const QString& initial, bool keepText) {
  if (book_ == nullptr || book_->firstNode == nullptr || fieldCount_ == 0) return false;
  if (editing_) return true;
  const FieldInfo& info = fields_[activeField_];
  // Long Text, Images/Files and calculated fields are not typed into: no message, no edit.
  if (info.type == FieldType::kLongText || info.type == FieldType::kFiles || info.calculated) {
    QApplication::beep();
    return false;
  }
  if (activePosition_ >= RecordSet::kEntries) {
    ShowError(err::kTooManyRecords);
    return false;
  }
  if (editor_ == nullptr) {
    editor_ = new GridEditor(this);
    dropDown_ = new QListWidget(viewport());
    dropDown_->hide();
    dropDown_->setFocusPolicy(Qt::NoFocus);
    connect(editor_, &QLineEdit::textEdited, this, &GridView::OnEditorTextEdited);
    connect(dropDown_, &QListWidget::itemClicked, this,
            [this](QListWidgetItem* item) { editor_->setText(item->text()); });
  }
  EnsureVisible(activeField_, activePosition_);
  editField_ = activeField_;
  editPosition_ = activePosition_;
  Worksheet& sheet = *data();
  uint32_t row = book_->records[editPosition_];
  editLook_ = &LookOf(row < kRowLimit ? sheet.formats.StyleAt(row, editField_)
                                      : sheet.formats.ColumnStyle(editField_));
  editor_->setFont(editLook_->font);
  editor_->setText(initial);
  if (!keepText) editor_->end(false);
  editing_ = true;
  PlaceEditor();
  editor_->show();
  editor_->setFocus();
  // A field with a drop-down list opens it below the edit control.
  dropDown_->clear();
  if (editLook_->dropDownList > 0 && editLook_->dropDownList <= kDropDownListSlots) {
    const DropDownList& list = book_->dropDownLists[editLook_->dropDownList - 1];
    for (const std::string& item : list.items) {
      dropDown_->addItem(QString::fromUtf8(text::Cp1252ToUtf8(item)));
    }
    if (list.used && !list.items.empty()) {
      QRect cell = CellRect(editField_, editPosition_);
      dropDown_->setGeometry(cell.left(), cell.bottom() + 1, std::max(cell.width(), 120),
                             std::min(160, 18 * static_cast<int>(list.items.size()) + 4));
      dropDown_->show();
    }
  }
  if (!keepText) OnEditorTextEdited(initial);
  return true;
}

void GridView::PlaceEditor() {
  QRect cell = CellRect(editField_, editPosition_);
  if (!cell.isValid()) return;
  editor_->setGeometry(cell.adjusted(1, 1, 0, 0));
}

void GridView::OnEditorTextEdited(const QString& typed) {
  if (!editing_ || editLook_ == nullptr || !editLook_->autoComplete || typed.isEmpty()) return;
  if (!dropDown_->isVisible()) return;
  // The first entry that begins with the text is written into the box, its tail selected so
  // that further typing replaces it.
  for (int i = 0; i < dropDown_->count(); ++i) {
    QString entry = dropDown_->item(i)->text();
    if (entry.startsWith(typed, Qt::CaseInsensitive)) {
      dropDown_->setCurrentRow(i);
      editor_->setText(entry);
      editor_->setSelection(static_cast<int>(typed.size()),
                            static_cast<int>(entry.size() - typed.size()));
      return;
    }
  }
}

void GridView::CancelEdit() {
  if (!editing_) return;
  editing_ = false;
  editor_->hide();
  dropDown_->hide();
  dropDown_->clear();
  setFocus();
  viewport()->update();
}

bool GridView::CommitEdit(int moveMode) {
  if (!editing_) return false;
  std::string typed = text::Utf8ToCp1252(editor_->text().left(kEditTextMax).toStdString());
  // AutoAppend: a new text joins the field's list.
  if (!typed.empty() && editLook_ != nullptr && editLook_->autoAppend &&
      editLook_->dropDownList > 0 && editLook_->dropDownList <= kDropDownListSlots) {
    std::vector<std::string>& items = book_->dropDownLists[editLook_->dropDownList - 1].items;
    if (std::find(items.begin(), items.end(), typed) == items.end()) items.push_back(typed);
  }
  editing_ = false;
  editor_->hide();
  dropDown_->hide();
  dropDown_->clear();
  setFocus();
  Worksheet& sheet = *data();
  uint32_t row = book_->records[editPosition_];
  int heightBefore = RecordHeight(sheet, row);
  UndoContext context = Context();
  context.activeColumn = editField_;
  context.activeRecord = editPosition_;
  EntryResult result = CommitText(*book_, editPosition_, editField_, typed, context);
  if (result == EntryResult::kFailed) ShowError(book_->errorCode);
  if (result == EntryResult::kWritten) {
    if (RecordHeight(sheet, row) != heightBefore) Relayout();
    UpdateScrollRanges();
    emit documentChanged();
  }
  viewport()->update();
  MoveAfterCommit(moveMode);
  return result == EntryResult::kWritten;
}

void GridView::MoveAfterCommit(int moveMode) {
  const int f = activeField_;
  const int64_t p = activePosition_;
  switch (moveMode) {
    case move_mode::kLeft:
      return MoveTo(f - 1, p);
    case move_mode::kRight:
      return MoveTo(f + 1, p);
    case move_mode::kUp:
      return MoveTo(f, p - 1);
    case move_mode::kDown:
      return MoveTo(f, p + 1);
    case move_mode::kEnter:
      break;
    default:
      return;
  }
  int whenEnter = settings_ != nullptr ? settings_->whenEnterPressed : 1;
  Worksheet& sheet = *data();
  switch (whenEnter) {
    case 1:
      return MoveTo(f, p + 1);
    case 2: {
      // Down to the next position whose cell in this field exists.
      for (uint32_t q = static_cast<uint32_t>(p) + 1; q < recordCount(); ++q) {
        if (sheet.cells.GetCellFast(book_->records[q], static_cast<uint16_t>(f)) != nullptr) {
          return MoveTo(f, q);
        }
      }
      return;
    }
    case 3:
      return MoveTo(f + 1, p);
    case 4: {
      uint32_t row = book_->records[static_cast<uint32_t>(p)];
      for (int g = f + 1; g < std::min<int>(fieldCount_, kFieldScanLimit); ++g) {
        if (sheet.cells.GetCellFast(row, static_cast<uint16_t>(g)) != nullptr) return MoveTo(g, p);
      }
      return;
    }
    default:
      return;
  }
}

}  // namespace kelpdex::views
