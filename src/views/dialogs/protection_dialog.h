// Database Protection and the Open Password dialog. The protection dialog's OK runs the
// document's checks (read-only question, six characters, the same text twice) and stays open
// where they refuse.
#pragma once

#include <QDialog>

#include "core/password.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace kelpdex::views {

class ProtectionDialog : public QDialog {
  Q_OBJECT

 public:
  ProtectionDialog(ProtectionAnswers& answers, QWidget* parent = nullptr);

  QRadioButton* noProtection() const { return none_; }
  QRadioButton* passwordProtection() const { return protect_; }
  QLineEdit* passwordBox() const { return password_; }
  QLineEdit* confirmationBox() const { return confirmation_; }
  QCheckBox* allowReadOnly() const { return readOnly_; }

  void accept() override;

 private:
  void Follow();

  ProtectionAnswers& answers_;
  QRadioButton* none_ = nullptr;
  QRadioButton* protect_ = nullptr;
  QComboBox* method_ = nullptr;
  QLineEdit* password_ = nullptr;
  QLineEdit* confirmation_ = nullptr;
  QCheckBox* readOnly_ = nullptr;
};

class OpenPasswordDialog : public QDialog {
  Q_OBJECT

 public:
  OpenPasswordDialog(const QString& path, bool readOnlyOffered, QWidget* parent = nullptr);

  PasswordChoice choice() const { return choice_; }
  QLineEdit* passwordBox() const { return password_; }
  QPushButton* readOnlyButton() const { return readOnly_; }

 private:
  QLineEdit* password_ = nullptr;
  QPushButton* readOnly_ = nullptr;
  PasswordChoice choice_ = PasswordChoice::kCancel;
};

}  // namespace kelpdex::views
