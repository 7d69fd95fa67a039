#include "views/dialogs/xbase_field_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QSpinBox>
#include <QVBoxLayout>

#include "core/reporting.h"
#include "exchange/xbase_field_lines.h"
#include "text/code_page.h"
#include "views/dialogs/dialog_text.h"

namespace kelpdex::views {

XbaseFieldDialog::XbaseFieldDialog(const std::string& summary,
                                   const std::vector<XbaseField>& fields, bool oem, QWidget* parent)
    : QDialog(parent) {
  for (const XbaseField& field : fields) edited_.push_back(XbaseExportField{field, 0});
  Build(FromCodePage(summary), false, oem);
}

XbaseFieldDialog::XbaseFieldDialog(std::vector<XbaseExportField>& fields, bool oem, QWidget* parent)
    : QDialog(parent), target_(&fields), edited_(fields) {
  Build(QString(), true, oem);
}

void XbaseFieldDialog::Build(const QString& summary, bool editable, bool oem) {
  setWindowTitle("xBase Field Definition");
  auto* column = new QVBoxLayout(this);
  if (!summary.isEmpty()) column->addWidget(new QLabel(summary, this));
  list_ = new QListWidget(this);
  for (size_t i = 0; i < edited_.size(); ++i) {
    list_->addItem(FromCodePage(XbaseFieldLine(static_cast<int>(i) + 1, edited_[i].field)));
  }
  // Tall enough for a dozen fields; a longer list scrolls.
  list_->setMinimumSize(320, list_->sizeHintForRow(0) * 12 + 4);
  column->addWidget(list_);
  if (editable) {
    auto* form = new QFormLayout;
    name_ = new QLineEdit(this);
    name_->setMaxLength(10);
    type_ = new QComboBox(this);
    for (const XbaseTypeChoice& choice : kXbaseTypeChoices) type_->addItem(choice.name);
    length_ = new QSpinBox(this);
    length_->setRange(1, 254);
    decimals_ = new QSpinBox(this);
    decimals_->setRange(0, 18);
    form->addRow("&Name:", name_);
    form->addRow("&Type:", type_);
    form->addRow("&Length:", length_);
    form->addRow("&Decimals:", decimals_);
    column->addLayout(form);
    connect(list_, &QListWidget::currentRowChanged, this, [this](int row) {
      TakeEdits();
      ShowField(row);
    });
    connect(name_, &QLineEdit::textEdited, this, [this] { TakeEdits(); });
    connect(type_, &QComboBox::currentIndexChanged, this, [this] { TakeEdits(); });
    connect(length_, &QSpinBox::valueChanged, this, [this] { TakeEdits(); });
    connect(decimals_, &QSpinBox::valueChanged, this, [this] { TakeEdits(); });
  }
  oem_ = new QCheckBox("&OEM character set (DOS code page 850)", this);
  oem_->setChecked(oem);
  column->addWidget(oem_);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  connect(buttons, &QDialogButtonBox::accepted, this, &XbaseFieldDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &XbaseFieldDialog::reject);
  column->addWidget(buttons);
  if (!edited_.empty()) list_->setCurrentRow(0);
  list_->setFocus();
  layout()->setSizeConstraint(QLayout::SetFixedSize);
}

bool XbaseFieldDialog::oem() const {
  return oem_->isChecked();
}

void XbaseFieldDialog::ShowField(int row) {
  shown_ = row;
  if (row < 0 || row >= static_cast<int>(edited_.size())) return;
  const XbaseField& field = edited_[row].field;
  loading_ = true;
  // Only a changed name is put back, so that typing in the middle keeps the cursor there.
  QString name = FromCodePage(field.name);
  if (name_->text() != name) name_->setText(name);
  int type = XbaseTypeIndex(field.type);
  type_->setCurrentIndex(type < 0 ? 0 : type);
  length_->setValue(field.length);
  decimals_->setValue(field.decimals);
  bool sized = field.type == 'C' || field.type == 'N' || field.type == 'F';
  length_->setEnabled(sized);
  decimals_->setEnabled(field.type == 'N' || field.type == 'F');
  loading_ = false;
}

void XbaseFieldDialog::TakeEdits() {
  if (loading_ || name_ == nullptr || shown_ < 0 || shown_ >= static_cast<int>(edited_.size())) {
    return;
  }
  XbaseField& field = edited_[shown_].field;
  field.name = ToCodePage(name_->text());
  field.type = kXbaseTypeChoices[type_->currentIndex()].letter;
  field.length = static_cast<uint16_t>(length_->value());
  field.decimals = static_cast<uint8_t>(decimals_->value());
  FitXbaseField(field);
  list_->item(shown_)->setText(FromCodePage(XbaseFieldLine(shown_ + 1, field)));
  // A type with a fixed length shows it at once.
  int row = shown_;
  ShowField(row);
}

void XbaseFieldDialog::accept() {
  if (target_ != nullptr) {
    TakeEdits();
    for (size_t i = 0; i < edited_.size(); ++i) {
      const std::string& name = edited_[i].field.name;
      bool taken = false;
      // xBase readers find fields by name without regard to case.
      for (size_t j = 0; j < i && !taken; ++j) {
        taken = text::CompareNoCase(edited_[j].field.name, name) == 0;
      }
      if (name.empty() || taken) {
        ShowMessage(name.empty() ? "Every field needs a name."
                                 : "Two fields have the name " + name + ".");
        list_->setCurrentRow(static_cast<int>(i));
        name_->setFocus();
        name_->selectAll();
        return;
      }
    }
    *target_ = edited_;
  }
  QDialog::accept();
}

}  // namespace kelpdex::views
