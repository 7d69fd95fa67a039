// xBase Field Definition: before an import, the file's summary and fields to look at; before an
// export, the fields to edit (name, type, length, decimals). Both ask for the OEM code page.
#pragma once

#include <QDialog>
#include <string>
#include <vector>

#include "exchange/xbase.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QListWidget;
class QSpinBox;

namespace kelpdex::views {

class XbaseFieldDialog : public QDialog {
  Q_OBJECT

 public:
  // Import: `fields` are the file's, shown as they are, under `summary`.
  XbaseFieldDialog(const std::string& summary, const std::vector<XbaseField>& fields, bool oem,
                   QWidget* parent = nullptr);
  // Export: the fields are edited in place when the dialog is accepted.
  XbaseFieldDialog(std::vector<XbaseExportField>& fields, bool oem, QWidget* parent = nullptr);

  QListWidget* fieldList() const { return list_; }
  QLineEdit* nameBox() const { return name_; }
  QComboBox* typeList() const { return type_; }
  QSpinBox* lengthBox() const { return length_; }
  QSpinBox* decimalsBox() const { return decimals_; }
  QCheckBox* oemBox() const { return oem_; }
  bool oem() const;

  // An export's names must be there and differ; the first that does not is selected.
  void accept() override;

 private:
  void Build(const QString& summary, bool editable, bool oem);
  void ShowField(int row);
  void TakeEdits();

  std::vector<XbaseExportField>* target_ = nullptr;
  std::vector<XbaseExportField> edited_;
  int shown_ = -1;
  bool loading_ = false;
  QListWidget* list_ = nullptr;
  QLineEdit* name_ = nullptr;
  QComboBox* type_ = nullptr;
  QSpinBox* length_ = nullptr;
  QSpinBox* decimals_ = nullptr;
  QCheckBox* oem_ = nullptr;
};

}  // namespace kelpdex::views
