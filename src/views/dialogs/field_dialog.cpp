#include "views/dialogs/field_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "core/reporting.h"
#include "functions/help_table.h"
#include "views/dialogs/dialog_text.h"

namespace kelpdex::views {

namespace {

constexpr const char* kInsertFieldEntry = "-- Insert Field --";

// Category names come lower case from the help table; the list shows them as titles.
QString CategoryTitle(int category) {
  QString name = FromCodePage(HelpCategoryText(category));
  if (!name.isEmpty()) name[0] = name[0].toUpper();
  return name;
}

}  // namespace

FieldDialog::FieldDialog(const TableSpec& table, FieldEdit& edit, QWidget* parent)
    : QDialog(parent), table_(table), edit_(edit) {
  setWindowTitle(edit.fieldIndex == kNewField ? "Add New Field" : "Modify Field");
  auto* layout = new QVBoxLayout(this);
  auto* form = new QFormLayout;
  name_ = new QLineEdit(FromCodePage(edit.name), this);
  name_->setMaxLength(1024);
  type_ = new QComboBox(this);
  for (const char* t : {"Text", "Number", "Long Text", "Images/Files"}) type_->addItem(t);
  type_->setCurrentIndex(std::max(0, ComboOfFieldType(edit.type)));
  link_ = new QCheckBox("Text / &Link", this);
  link_->setChecked(edit.link);
  form->addRow("&Name:", name_);
  form->addRow("&Type:", type_);
  form->addRow(QString(), link_);
  layout->addLayout(form);

  auto* content = new QGroupBox("Default content", this);
  auto* contentLayout = new QVBoxLayout(content);
  auto* radios = new QHBoxLayout;
  formula_ = new QRadioButton("&Formula", content);
  value_ = new QRadioButton("&Value", content);
  (edit.isValue ? value_ : formula_)->setChecked(true);
  radios->addWidget(formula_);
  radios->addWidget(value_);
  radios->addStretch(1);
  text_ = new QLineEdit(FromCodePage(edit.formulaOrValue), content);
  text_->setMaxLength(1024);
  insertField_ = new QComboBox(content);
  insertField_->addItem(kInsertFieldEntry);
  for (uint16_t f = 0; f < FieldCount(table); ++f) {
    FieldSpec fieldRow;
    if (ReadField(table, f, fieldRow)) insertField_->addItem(FromCodePage(fieldRow.name));
  }
  radios->addWidget(insertField_);
  contentLayout->addLayout(radios);
  contentLayout->addWidget(text_);

  // The function picker: a category, its functions, and the help text of the one chosen.
  auto* picker = new QHBoxLayout;
  auto* pickerLeft = new QVBoxLayout;
  category_ = new QComboBox(content);
  for (int c = 0; c < help::kCategoryCount; ++c) {
    if (!HelpNamesOfCategory(c).empty()) category_->addItem(CategoryTitle(c), c);
  }
  functions_ = new QListWidget(content);
  functions_->setMinimumHeight(120);
  insertFunction_ = new QPushButton("&Insert Function", content);
  pickerLeft->addWidget(category_);
  pickerLeft->addWidget(functions_, 1);
  pickerLeft->addWidget(insertFunction_);
  help_ = new QLabel(content);
  help_->setWordWrap(true);
  help_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
  help_->setMinimumWidth(280);
  help_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  picker->addLayout(pickerLeft, 2);
  picker->addWidget(help_, 3);
  contentLayout->addLayout(picker);
  layout->addWidget(content, 1);

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  layout->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &FieldDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &FieldDialog::reject);

  connect(insertField_, &QComboBox::activated, this, [this](int index) {
    if (index <= 0) return;
    InsertIntoFormula(insertField_->itemText(index));
    // The list is a command, not a choice: it goes back to its first entry.
    insertField_->setCurrentIndex(0);
  });
  connect(category_, &QComboBox::currentIndexChanged, this,
          [this](int index) { FillFunctions(category_->itemData(index).toInt()); });
  connect(functions_, &QListWidget::currentTextChanged, this, [this](const QString& name) {
    const HelpEntry* entry = FindHelpEntry(ToCodePage(name));
    help_->setText(entry != nullptr ? FromCodePage(entry->help).replace("\r\n", "\n") : QString());
  });
  auto insertFunction = [this] {
    if (functions_->currentItem() == nullptr) return;
    InsertIntoFormula(functions_->currentItem()->text() + "(");
  };
  connect(insertFunction_, &QPushButton::clicked, this, insertFunction);
  connect(functions_, &QListWidget::itemActivated, this, insertFunction);
  FillFunctions(category_->count() > 0 ? category_->itemData(0).toInt() : 0);
  name_->setFocus();
}

void FieldDialog::FillFunctions(int category) {
  functions_->clear();
  for (std::string_view name : HelpNamesOfCategory(category)) {
    functions_->addItem(FromCodePage(name));
  }
  if (functions_->count() > 0) functions_->setCurrentRow(0);
}

void FieldDialog::InsertIntoFormula(const QString& text) {
  // What is picked builds a formula: the Formula radio goes with it, and an empty box gets "=".
  formula_->setChecked(true);
  if (text_->text().isEmpty()) text_->setText("=");
  text_->insert(text);
  text_->setFocus();
}

void FieldDialog::accept() {
  edit_.name = ToCodePage(name_->text());
  edit_.type = FieldTypeOfCombo(type_->currentIndex());
  edit_.link = link_->isChecked();
  edit_.isValue = value_->isChecked();
  edit_.formulaOrValue = ToCodePage(text_->text());
  FieldCheck check = CheckField(table_, edit_, row_);
  if (!check.ok()) {
    ShowMessage(check.Text());
    // A refused conversion put the old type back into the edit.
    type_->setCurrentIndex(std::max(0, ComboOfFieldType(edit_.type)));
    QWidget* focus = check.focus == FieldFocus::kFormula ? static_cast<QWidget*>(text_)
                     : check.focus == FieldFocus::kType  ? static_cast<QWidget*>(type_)
                                                         : name_;
    focus->setFocus();
    if (focus == name_) name_->selectAll();
    return;
  }
  QDialog::accept();
}

}  // namespace kelpdex::views
