// The floating filter dialog of one field, opened under its header cell. It has no OK: a mouse
// press outside it, or Enter without Ctrl, closes it and applies the filter; Cancel closes it
// without running the search again. Either way the filter it shows is what the field keeps.
#pragma once

#include <QDialog>
#include <string>
#include <string_view>

#include "search/filter_dialog_model.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace kelpdex::views {

class FunctionPicker;

class FilterDialog : public QDialog {
  Q_OBJECT

 public:
  FilterDialog(const std::string& fieldName, FieldType type, std::string_view filterText,
               QWidget* parent = nullptr);

  // What the field keeps when the dialog closes.
  std::string filterText() const { return model_.FilterText(); }

  QRadioButton* searchRadio() const { return search_; }
  QComboBox* operatorList() const { return operator_; }
  QLineEdit* searchBox() const { return text_; }
  QRadioButton* expressionRadio() const { return expressionSide_; }
  QLineEdit* expressionBox() const { return expression_; }
  // "&Formulas >" folds the function picker out below the Expression box, and in again.
  QPushButton* formulasButton() const { return formulas_; }
  FunctionPicker* functionPicker() const { return picker_; }

  // Closes and applies, as Enter and a press outside do.
  void Apply();

 signals:
  // Sent once as the dialog closes; `apply` is false after Cancel.
  void closedWith(bool apply);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  // kReported: closedWith was sent, so a later hide says nothing more.
  enum class Ending : uint8_t { kOpen, kApplied, kCancelled, kReported };
  FilterDialogModel model_;
  Ending ending_ = Ending::kOpen;
  QRadioButton* search_ = nullptr;
  QComboBox* operator_ = nullptr;
  QLineEdit* text_ = nullptr;
  QRadioButton* expressionSide_ = nullptr;
  QLineEdit* expression_ = nullptr;
  QPushButton* formulas_ = nullptr;
  FunctionPicker* picker_ = nullptr;
  bool picked_ = false;
};

}  // namespace kelpdex::views
