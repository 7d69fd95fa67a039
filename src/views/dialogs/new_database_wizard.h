// The New Database wizard: the first table's name, its fields, and where the file goes. Each
// page checks what it asks before Next, with the same rules the Add Table and Add Field
// dialogs use.
#pragma once

#include <QWizard>

#include "core/prompter.h"

class QComboBox;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace kelpdex::views {

class NewDatabaseWizard : public QWizard {
  Q_OBJECT

 public:
  NewDatabaseWizard(NewDatabaseAnswers& answers, QWidget* parent = nullptr);

  QLineEdit* tableBox() const { return table_; }
  QLineEdit* fieldNameBox() const { return fieldName_; }
  QComboBox* fieldTypeBox() const { return fieldType_; }
  QPushButton* addFieldButton() const { return addField_; }
  QListWidget* fieldList() const { return fields_; }
  QLineEdit* fileBox() const { return file_; }

  bool validateCurrentPage() override;
  void accept() override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void AddField();
  void UpdateTitle();

  NewDatabaseAnswers& answers_;
  std::vector<WizardField> pending_;
  QLineEdit* table_ = nullptr;
  QLineEdit* fieldName_ = nullptr;
  QComboBox* fieldType_ = nullptr;
  QPushButton* addField_ = nullptr;
  QPushButton* removeField_ = nullptr;
  QListWidget* fields_ = nullptr;
  QLineEdit* file_ = nullptr;
};

}  // namespace kelpdex::views
