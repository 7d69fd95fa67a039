#include "views/dialogs/drop_down_editor.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "core/prompter.h"
#include "core/reporting.h"
#include "core/strings.h"
#include "table/field_format.h"
#include "views/dialogs/dialog_text.h"

namespace kelpdex::views {

DropDownEditor::DropDownEditor(const DropDownLists& lists, QWidget* parent)
    : QDialog(parent), lists_(lists) {
  setWindowTitle("Drop-down Lists");
  auto* layout = new QVBoxLayout(this);
  auto* columns = new QHBoxLayout;
  auto* left = new QVBoxLayout;
  names_ = new QListWidget(this);
  names_->setMinimumWidth(160);
  auto* namesLabel = new QLabel("&Lists:", this);
  namesLabel->setBuddy(names_);
  left->addWidget(namesLabel);
  left->addWidget(names_, 1);
  auto* buttonsRow = new QHBoxLayout;
  new_ = new QPushButton("&New", this);
  delete_ = new QPushButton("&Delete", this);
  // Enter accepts the dialog; these two act only when pressed.
  new_->setAutoDefault(false);
  delete_->setAutoDefault(false);
  buttonsRow->addWidget(new_);
  buttonsRow->addWidget(delete_);
  left->addLayout(buttonsRow);
  columns->addLayout(left);
  auto* right = new QFormLayout;
  name_ = new QLineEdit(this);
  name_->setMaxLength(static_cast<int>(kDropDownNameMax));
  right->addRow("&Name:", name_);
  items_ = new QPlainTextEdit(this);
  items_->setTabChangesFocus(true);
  items_->setMinimumSize(220, 160);
  auto* itemsLabel = new QLabel("&Items (one per line):", this);
  itemsLabel->setBuddy(items_);
  right->addRow(itemsLabel);
  right->addRow(items_);
  columns->addLayout(right, 1);
  layout->addLayout(columns);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  connect(buttons, &QDialogButtonBox::accepted, this, &DropDownEditor::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &DropDownEditor::reject);

  connect(names_, &QListWidget::currentRowChanged, this, [this] {
    if (filling_) return;
    // A list whose boxes cannot be kept stays the chosen one.
    if (!KeepShown()) {
      filling_ = true;
      for (int row = 0; row < names_->count(); ++row) {
        if (names_->item(row)->data(Qt::UserRole).toUInt() == shown_) names_->setCurrentRow(row);
      }
      filling_ = false;
      return;
    }
    ShowSlot();
  });
  // The list shows the name as it is typed, so the entry and the box never disagree.
  connect(name_, &QLineEdit::textEdited, this, [this](const QString& text) {
    if (QListWidgetItem* item = names_->currentItem()) item->setText(text);
  });
  connect(new_, &QPushButton::clicked, this, [this] {
    if (!KeepShown()) return;
    uint32_t slot = 0;
    if (!AddDropDownList(lists_, slot)) {
      ShowError(err::kTooManyDropDownLists);
      return;
    }
    FillNames(slot);
    name_->setFocus();
    name_->selectAll();
  });
  connect(delete_, &QPushButton::clicked, this, [this] {
    uint32_t slot = ShownSlot();
    if (slot == kDropDownListSlots) return;
    if (Ask(170, mb::kYesNo | mb::kIconQuestion) != answer::kYes) return;
    lists_[slot] = DropDownList();
    deleted_.push_back(slot);
    shown_ = kDropDownListSlots;
    FillNames(kDropDownListSlots);
    names_->setFocus();
  });
  FillNames(kDropDownListSlots);
  names_->setFocus();
}

uint32_t DropDownEditor::ShownSlot() const {
  QListWidgetItem* item = names_->currentItem();
  return item == nullptr ? kDropDownListSlots : item->data(Qt::UserRole).toUInt();
}

void DropDownEditor::FillNames(uint32_t selectSlot) {
  filling_ = true;
  names_->clear();
  int selectRow = 0;
  for (uint32_t slot = 0; slot < kDropDownListSlots; ++slot) {
    if (!lists_[slot].used) continue;
    if (slot == selectSlot) selectRow = names_->count();
    auto* item = new QListWidgetItem(FromCodePage(lists_[slot].name), names_);
    item->setData(Qt::UserRole, slot);
  }
  if (names_->count() > 0) names_->setCurrentRow(selectRow);
  filling_ = false;
  ShowSlot();
}

void DropDownEditor::ShowSlot() {
  shown_ = ShownSlot();
  const bool any = shown_ != kDropDownListSlots;
  name_->setEnabled(any);
  items_->setEnabled(any);
  delete_->setEnabled(any);
  QString items;
  if (any) {
    for (const std::string& item : lists_[shown_].items) items += FromCodePage(item) + "\n";
  }
  name_->setText(any ? FromCodePage(lists_[shown_].name) : QString());
  items_->setPlainText(items);
}

bool DropDownEditor::KeepShown() {
  if (shown_ == kDropDownListSlots || !lists_[shown_].used) return true;
  std::string name = ToCodePage(name_->text());
  name.erase(name.find_last_not_of(' ') + 1);
  if (name.empty()) {
    QApplication::beep();
    name_->setFocus();
    return false;
  }
  std::vector<std::string> items;
  for (const QString& line : items_->toPlainText().split('\n')) {
    std::string item = ToCodePage(line);
    if (item.empty()) continue;
    if (item.size() > kDropDownItemMax) {
      ShowMessage(FormatString(131, {static_cast<int>(kDropDownItemMax)}));
      items_->setFocus();
      return false;
    }
    items.push_back(std::move(item));
  }
  lists_[shown_].name = name;
  lists_[shown_].items = std::move(items);
  if (QListWidgetItem* item = names_->currentItem();
      item != nullptr && item->data(Qt::UserRole).toUInt() == shown_) {
    item->setText(FromCodePage(name));
  }
  return true;
}

void DropDownEditor::accept() {
  if (!KeepShown()) return;
  QDialog::accept();
}

}  // namespace kelpdex::views
