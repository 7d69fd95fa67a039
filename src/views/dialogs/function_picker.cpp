#include "views/dialogs/function_picker.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QVBoxLayout>

#include "functions/help_table.h"
#include "views/dialogs/dialog_text.h"

namespace kelpdex::views {

namespace {

// Category names come lower case from the help table; the list shows them as titles.
QString CategoryTitle(int category) {
  QString name = FromCodePage(HelpCategoryText(category));
  if (!name.isEmpty()) name[0] = name[0].toUpper();
  return name;
}

}  // namespace

FunctionPicker::FunctionPicker(QWidget* parent) : QWidget(parent) {
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  auto* left = new QVBoxLayout;
  category_ = new QComboBox(this);
  for (int c = 0; c < help::kCategoryCount; ++c) {
    if (!HelpNamesOfCategory(c).empty()) category_->addItem(CategoryTitle(c), c);
  }
  functions_ = new QListWidget(this);
  functions_->setMinimumHeight(120);
  left->addWidget(category_);
  left->addWidget(functions_, 1);
  help_ = new QLabel(this);
  help_->setWordWrap(true);
  help_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
  help_->setFixedWidth(260);
  help_->setMinimumHeight(150);
  help_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  row->addLayout(left, 2);
  row->addWidget(help_, 3);
  connect(category_, &QComboBox::currentIndexChanged, this,
          [this](int index) { FillFunctions(category_->itemData(index).toInt()); });
  connect(functions_, &QListWidget::currentTextChanged, this, [this](const QString& name) {
    const HelpEntry* entry = FindHelpEntry(ToCodePage(name));
    help_->setText(entry != nullptr ? FromCodePage(entry->help).replace("\r\n", "\n") : QString());
  });
  connect(functions_, &QListWidget::itemActivated, this,
          [this](QListWidgetItem* item) { emit functionChosen(item->text()); });
  FillFunctions(category_->count() > 0 ? category_->itemData(0).toInt() : 0);
}

void FunctionPicker::FillFunctions(int category) {
  functions_->clear();
  for (std::string_view name : HelpNamesOfCategory(category)) {
    functions_->addItem(FromCodePage(name));
  }
  if (functions_->count() > 0) functions_->setCurrentRow(0);
}

}  // namespace kelpdex::views
