#include "views/dialogs/name_dialog.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>

#include "core/prompter.h"
#include "core/reporting.h"
#include "core/strings.h"
#include "table/schema.h"
#include "views/dialogs/dialog_text.h"

namespace kelpdex::views {

NameDialog::NameDialog(const QString& title, const std::string& name, int maxLength,
                       std::function<bool(const std::string&)> check, QWidget* parent)
    : QDialog(parent), check_(std::move(check)), name_(name) {
  setWindowTitle(title);
  auto* form = new QFormLayout(this);
  box_ = new QLineEdit(FromCodePage(name), this);
  box_->setMaxLength(maxLength);
  box_->setMinimumWidth(260);
  form->addRow("&Name:", box_);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  form->addRow(buttons);
  connect(buttons, &QDialogButtonBox::accepted, this, &NameDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &NameDialog::reject);
  box_->selectAll();
  box_->setFocus();
  // The dialog is as large as its one row needs.
  layout()->setSizeConstraint(QLayout::SetFixedSize);
}

void NameDialog::accept() {
  std::string typed = ToCodePage(box_->text());
  typed.erase(typed.find_last_not_of(' ') + 1);
  if (!check_(typed)) {
    box_->setFocus();
    box_->selectAll();
    return;
  }
  name_ = typed;
  QDialog::accept();
}

bool CheckTableNameAnswer(const Workbook& book, const std::string& name, const Worksheet* current) {
  switch (CheckTableName(book, name, current)) {
    case TableNameCheck::kOk:
      return true;
    case TableNameCheck::kDuplicate:
      AskText(FormatString(157), mb::kOk | mb::kIconExclamation);
      return false;
    case TableNameCheck::kReserved:
      ShowMessage(kReservedTableNameText);
      return false;
    case TableNameCheck::kInvalid:
      QApplication::beep();
      return false;
  }
  return false;
}

}  // namespace kelpdex::views
