// The drop-down list editor: the document's lists by name, each with its items one to a line.
// It works on a copy, which the caller takes over on OK.
#pragma once

#include <QDialog>
#include <vector>

#include "store/workbook.h"

class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPushButton;

namespace kelpdex::views {

class DropDownEditor : public QDialog {
  Q_OBJECT

 public:
  DropDownEditor(const DropDownLists& lists, QWidget* parent = nullptr);

  const DropDownLists& lists() const { return lists_; }
  // The slots whose list was deleted, even if a new list took the slot afterwards.
  const std::vector<uint32_t>& deletedSlots() const { return deleted_; }

  QListWidget* listNames() const { return names_; }
  QLineEdit* nameBox() const { return name_; }
  QPlainTextEdit* itemsBox() const { return items_; }
  QPushButton* newButton() const { return new_; }
  QPushButton* deleteButton() const { return delete_; }

  void accept() override;

 private:
  // The slot shown in the boxes, or kDropDownListSlots for none.
  uint32_t ShownSlot() const;
  // Checks and keeps the boxes' name and items; false, with the message shown and the focus on
  // the box at fault, when they cannot be kept.
  bool KeepShown();
  void ShowSlot();
  void FillNames(uint32_t selectSlot);

  DropDownLists lists_;
  std::vector<uint32_t> deleted_;
  QListWidget* names_ = nullptr;
  QLineEdit* name_ = nullptr;
  QPlainTextEdit* items_ = nullptr;
  QPushButton* new_ = nullptr;
  QPushButton* delete_ = nullptr;
  uint32_t shown_ = kDropDownListSlots;
  bool filling_ = false;
};

}  // namespace kelpdex::views
