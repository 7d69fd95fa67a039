// Format Field: one property sheet with the pages Font, Style, Alignment and Drop-down List over
// a copy of the current field's style. OK hands back the edited copy; the command applies only
// the groups that changed to every selected field.
#pragma once

#include <QDialog>

#include "store/workbook.h"
#include "table/field_format.h"

class QCheckBox;
class QComboBox;
class QFontComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QSpinBox;
class QTabWidget;

namespace kelpdex::views {

class FormatSheet : public QDialog {
  Q_OBJECT

 public:
  enum Page { kFontPage, kStylePage, kAlignmentPage, kDropDownPage };

  // `current` is the cell under the cursor, shown as the Style page's sample; it may be null.
  FormatSheet(Workbook& book, const FieldFormat& format, const CellRecord* current, Page page,
              QWidget* parent = nullptr);

  const FieldFormat& edited() const { return edited_; }

  QTabWidget* pages() const { return pages_; }
  QFontComboBox* fontBox() const { return font_; }
  QSpinBox* sizeBox() const { return size_; }
  QCheckBox* boldBox() const { return bold_; }
  QListWidget* kindList() const { return kinds_; }
  QSpinBox* decimalsBox() const { return decimals_; }
  QCheckBox* fixedDecimalsBox() const { return fixed_; }
  QComboBox* negativeBox() const { return negative_; }
  QLineEdit* symbolBox() const { return symbol_; }
  QListWidget* dateList() const { return dateTypes_; }
  QComboBox* userFormatBox() const { return userFormat_; }
  QLabel* sample() const { return sample_; }
  QComboBox* horizontalBox() const { return horizontal_; }
  QCheckBox* wrapBox() const { return wrap_; }
  QComboBox* listBox() const { return list_; }
  QCheckBox* autoCompleteBox() const { return complete_; }
  QPushButton* editListsButton() const { return editLists_; }

  void accept() override;

 private:
  QWidget* MakeFontPage();
  QWidget* MakeStylePage();
  QWidget* MakeAlignmentPage();
  QWidget* MakeDropDownPage();
  void ShowKindRows();
  void FillListChoices(uint16_t selected);
  // The Style page's controls into a number style, and the sample redrawn from it.
  NumberStyle StyleOfControls() const;
  void UpdateSample();
  void LoadStyleControls(const NumberStyle& numberStyle);

  Workbook& book_;
  FieldFormat edited_;
  const CellRecord* current_;
  bool loading_ = false;
  bool styleTouched_ = false;
  QTabWidget* pages_ = nullptr;
  // Font
  QFontComboBox* font_ = nullptr;
  QSpinBox* size_ = nullptr;
  QCheckBox* bold_ = nullptr;
  QCheckBox* italic_ = nullptr;
  QCheckBox* underline_ = nullptr;
  QCheckBox* strikeout_ = nullptr;
  QComboBox* colour_ = nullptr;
  bool fontChosen_ = false;
  // Style
  QListWidget* kinds_ = nullptr;
  QFormLayout* kindRows_ = nullptr;
  QCheckBox* fixed_ = nullptr;
  QSpinBox* decimals_ = nullptr;
  QCheckBox* leading_ = nullptr;
  QSpinBox* leadingCount_ = nullptr;
  QCheckBox* group_ = nullptr;
  QComboBox* negative_ = nullptr;
  QLineEdit* symbol_ = nullptr;
  QComboBox* position_ = nullptr;
  QListWidget* dateTypes_ = nullptr;
  QComboBox* timeTypes_ = nullptr;
  QCheckBox* dateAfter_ = nullptr;
  QCheckBox* systemOrder_ = nullptr;
  QSpinBox* denominatorDigits_ = nullptr;
  QSpinBox* denominator_ = nullptr;
  QComboBox* exponent_ = nullptr;
  QSpinBox* power_ = nullptr;
  QComboBox* userFormat_ = nullptr;
  QLabel* sample_ = nullptr;
  // Alignment
  QComboBox* horizontal_ = nullptr;
  QComboBox* vertical_ = nullptr;
  QSpinBox* indent_ = nullptr;
  QSpinBox* rotation_ = nullptr;
  QCheckBox* wrap_ = nullptr;
  QCheckBox* fit_ = nullptr;
  // Drop-down List
  QComboBox* list_ = nullptr;
  QCheckBox* sort_ = nullptr;
  QCheckBox* append_ = nullptr;
  QCheckBox* complete_ = nullptr;
  QPushButton* editLists_ = nullptr;
};

}  // namespace kelpdex::views
