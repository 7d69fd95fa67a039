// Options: every setting of the profile a user changes by hand. The dialog shows the settings
// and stores them only on OK.
#pragma once

#include <QDialog>
#include <vector>

#include "core/session_settings.h"

class QCheckBox;
class QComboBox;
class QFontComboBox;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace kelpdex::views {

class OptionsDialog : public QDialog {
  Q_OBJECT

 public:
  OptionsDialog(SessionSettings& settings, QWidget* parent = nullptr);

  QSpinBox* undoLevel() const { return undoLevel_; }
  QComboBox* autoSave() const { return autoSave_; }
  QComboBox* autoClose() const { return autoClose_; }
  QComboBox* enterAction() const { return enter_; }
  QComboBox* fileFormat() const { return format_; }
  QCheckBox* wrapText() const { return wrap_; }
  QLineEdit* startFolder() const { return folder_; }
  QSpinBox* opacity() const { return opacity_; }

  void accept() override;

 private:
  SessionSettings& settings_;
  QSpinBox* undoLevel_ = nullptr;
  QCheckBox* wrap_ = nullptr;
  QCheckBox* thumbnails_ = nullptr;
  QCheckBox* plainText_ = nullptr;
  QCheckBox* labels_ = nullptr;
  QComboBox* autoSave_ = nullptr;
  QComboBox* autoClose_ = nullptr;
  QComboBox* format_ = nullptr;
  QComboBox* enter_ = nullptr;
  QLineEdit* folder_ = nullptr;
  QPushButton* browse_ = nullptr;
  QSpinBox* opacity_ = nullptr;
  QFontComboBox* font_ = nullptr;
  bool fontChosen_ = false;
};

}  // namespace kelpdex::views
