// Add, Insert and Modify Field: the name, the type, the Formula/Value choice and its text, a
// "-- Insert Field --" list and a function picker that write into the formula box. OK runs the
// schema's checks in their order and stays open on a refusal, its message shown and the focus
// where the refusal points.
#pragma once

#include <QDialog>

#include "store/field_row.h"
#include "table/schema.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QRadioButton;

namespace kelpdex::views {

class FieldDialog : public QDialog {
  Q_OBJECT

 public:
  FieldDialog(const TableSpec& table, FieldEdit& edit, QWidget* parent = nullptr);

  // The catalogue row to write, after an accepted OK.
  const FieldSpec& fieldRow() const { return row_; }

  QLineEdit* nameBox() const { return name_; }
  QComboBox* typeBox() const { return type_; }
  QRadioButton* formulaRadio() const { return formula_; }
  QRadioButton* valueRadio() const { return value_; }
  QLineEdit* formulaBox() const { return text_; }
  QComboBox* insertFieldList() const { return insertField_; }
  QComboBox* categoryList() const { return category_; }
  QListWidget* functionList() const { return functions_; }
  QLabel* helpText() const { return help_; }

  void accept() override;

 private:
  void InsertIntoFormula(const QString& text);
  void FillFunctions(int category);

  const TableSpec& table_;
  FieldEdit& edit_;
  FieldSpec row_;
  QLineEdit* name_ = nullptr;
  QComboBox* type_ = nullptr;
  QCheckBox* link_ = nullptr;
  QRadioButton* formula_ = nullptr;
  QRadioButton* value_ = nullptr;
  QLineEdit* text_ = nullptr;
  QComboBox* insertField_ = nullptr;
  QComboBox* category_ = nullptr;
  QListWidget* functions_ = nullptr;
  QLabel* help_ = nullptr;
  QPushButton* insertFunction_ = nullptr;
};

}  // namespace kelpdex::views
