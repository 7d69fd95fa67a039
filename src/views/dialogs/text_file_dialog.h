// Open Text File and Save Text File: the separator or the fixed widths, the quote, the encoding,
// the conversion (import only) and the field-name line, over the options a text file keeps.
#pragma once

#include <QDialog>

#include "store/text_file_options.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QRadioButton;

namespace kelpdex::views {

class TextFileDialog : public QDialog {
  Q_OBJECT

 public:
  enum class Direction { kImport, kExport };
  TextFileDialog(Direction direction, TextFileOptions& options, QWidget* parent = nullptr);

  QRadioButton* separatorChoice() const { return bySeparator_; }
  QRadioButton* widthsChoice() const { return byWidths_; }
  QComboBox* separatorList() const { return separators_; }
  QLineEdit* otherSeparator() const { return other_; }
  QLineEdit* widthsBox() const { return widths_; }
  QLineEdit* quoteBox() const { return quote_; }
  QComboBox* encodingList() const { return encoding_; }
  QComboBox* conversionList() const { return conversion_; }
  QCheckBox* headerBox() const { return header_; }

  // The choices go into the options only when they all hold; a wrong one is named and gets the
  // focus, and the dialog stays open.
  void accept() override;

 private:
  void UpdateEnabling();

  TextFileOptions& options_;
  QRadioButton* bySeparator_ = nullptr;
  QRadioButton* byWidths_ = nullptr;
  QComboBox* separators_ = nullptr;
  QLineEdit* other_ = nullptr;
  QLineEdit* widths_ = nullptr;
  QLineEdit* quote_ = nullptr;
  QComboBox* encoding_ = nullptr;
  QComboBox* conversion_ = nullptr;  // null for an export
  QCheckBox* header_ = nullptr;
};

}  // namespace kelpdex::views
