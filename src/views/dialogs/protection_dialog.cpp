#include "views/dialogs/protection_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "document/protection_rules.h"
#include "views/dialogs/dialog_text.h"

namespace kelpdex::views {

namespace {

constexpr int kPasswordRoom = 1024;

QLineEdit* PasswordBox(QWidget* parent) {
  auto* box = new QLineEdit(parent);
  box->setEchoMode(QLineEdit::Password);
  box->setMaxLength(kPasswordRoom);
  box->setMinimumWidth(220);
  return box;
}

}  // namespace

ProtectionDialog::ProtectionDialog(ProtectionAnswers& answers, QWidget* parent)
    : QDialog(parent), answers_(answers) {
  setWindowTitle("Database Protection");
  auto* layout = new QVBoxLayout(this);
  none_ = new QRadioButton("&No protection", this);
  protect_ = new QRadioButton("&Password protection with", this);
  method_ = new QComboBox(this);
  method_->addItem("RC4 128-bit encryption");
  password_ = PasswordBox(this);
  confirmation_ = PasswordBox(this);
  password_->setText(FromCodePage(answers.password.view()));
  confirmation_->setText(FromCodePage(answers.confirmation.view()));
  readOnly_ = new QCheckBox("&Allow read-only access without the password", this);
  readOnly_->setChecked(answers.allowReadOnly);
  (answers.protect ? protect_ : none_)->setChecked(true);
  layout->addWidget(none_);
  layout->addWidget(protect_);
  auto* form = new QFormLayout;
  form->setContentsMargins(20, 0, 0, 0);
  form->addRow(method_);
  form->addRow("Passwor&d:", password_);
  form->addRow("&Confirm password:", confirmation_);
  form->addRow(readOnly_);
  layout->addLayout(form);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  connect(buttons, &QDialogButtonBox::accepted, this, &ProtectionDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &ProtectionDialog::reject);
  connect(protect_, &QRadioButton::toggled, this, [this] { Follow(); });
  Follow();
}

void ProtectionDialog::Follow() {
  // Without protection there is nothing to type.
  const bool on = protect_->isChecked();
  method_->setEnabled(on);
  password_->setEnabled(on);
  confirmation_->setEnabled(on);
  readOnly_->setEnabled(on);
  if (on && isVisible()) password_->setFocus();
}

void ProtectionDialog::accept() {
  answers_.protect = protect_->isChecked();
  answers_.allowReadOnly = readOnly_->isChecked();
  answers_.password.Set(ToCodePage(password_->text()));
  answers_.confirmation.Set(ToCodePage(confirmation_->text()));
  switch (CheckProtectionAnswers(answers_)) {
    case ProtectionCheck::kAccepted:
      QDialog::accept();
      return;
    case ProtectionCheck::kStayOnPassword:
      password_->setFocus();
      password_->selectAll();
      return;
    case ProtectionCheck::kStay:
      return;
  }
}

OpenPasswordDialog::OpenPasswordDialog(const QString& path, bool readOnlyOffered, QWidget* parent)
    : QDialog(parent) {
  setWindowTitle("Open Password Protected Database");
  auto* form = new QFormLayout(this);
  if (!path.isEmpty()) form->addRow(new QLabel(path, this));
  password_ = PasswordBox(this);
  form->addRow("&Password:", password_);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  if (readOnlyOffered) {
    readOnly_ = buttons->addButton("Open As &Read-Only", QDialogButtonBox::ActionRole);
    connect(readOnly_, &QPushButton::clicked, this, [this] {
      choice_ = PasswordChoice::kReadOnly;
      QDialog::accept();
    });
  }
  form->addRow(buttons);
  form->setSizeConstraint(QLayout::SetFixedSize);
  connect(buttons, &QDialogButtonBox::accepted, this, [this] {
    choice_ = PasswordChoice::kPassword;
    QDialog::accept();
  });
  connect(buttons, &QDialogButtonBox::rejected, this, &OpenPasswordDialog::reject);
  password_->setFocus();
}

}  // namespace kelpdex::views
